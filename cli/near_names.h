// SPDX-License-Identifier: BSD-3-Clause
// Which name may have been meant by a word that is none.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace ipmib::cli
{

// How many letters have to be put in, left out, replaced or exchanged with their neighbour to make one of the other;
// upper and lower case are the same letter.
std::size_t editDistance(std::string_view a, std::string_view b);

// "; did you mean lan0?", with the names that are nearest to the word; empty when none is near.
std::string didYouMean(std::string_view word, const std::vector<std::string> &names);

} // namespace ipmib::cli

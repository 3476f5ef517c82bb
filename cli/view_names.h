// SPDX-License-Identifier: BSD-3-Clause
// The words by which views are asked for, and what may stand behind them.
#pragma once

#include "view.h"

#include <span>
#include <string>
#include <vector>

namespace ipmib::cli
{

struct ViewName {
    const char *word;
    const View *view;
    const char *summary; // null: another word for a view that has been named before
    Version version = Version::both;
};
std::span<const ViewName> viewNames();

// All words, for "did you mean".
std::vector<std::string> viewWords();
// Whether the word, or as much as there is of it, names a view, or several.
bool isViewWord(const std::string &word);

// What is asked for: `neigh`, `neigh lan0`, `neigh show dev lan0`, `route get 192.0.2.1`.
struct ViewRequest {
    const View *view = nullptr;
    Version version = Version::both; // that the word alone means, as `arp` does
    std::string argument;            // of a view that takes one
    std::string interface;           // that rows have to be of; empty: all
};

// The words behind the command, of which there is at least one. Throws host::UsageError.
ViewRequest parseViewRequest(const std::string &command, const std::vector<std::string> &words);

// The place of the column that tells a row's interface; behind all columns when none does.
std::size_t interfaceColumn(const View &view);

} // namespace ipmib::cli

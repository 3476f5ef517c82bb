// SPDX-License-Identifier: BSD-3-Clause
// How much stack a call takes: it runs on a stack of its own that was painted before.
#pragma once

#include <cstddef>
#include <functional>

// Bytes of stack between the call's entry and the deepest byte that it wrote.
std::size_t stackOf(const std::function<void()> &call);

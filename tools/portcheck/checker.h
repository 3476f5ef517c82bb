// SPDX-License-Identifier: BSD-3-Clause
// The process that loads the platform and calls it.
#pragma once

#include "portcheck.h"
#include "watch.h"

namespace ipmib::portcheck
{

// Makes the check from a chapter on, and writes what it finds to the descriptor. Returns when it is through.
void runChecks(const Options &options, std::size_t chapter, Watch &watch, int descriptor);

// What it writes, one line each: the chapter that begins, a fact, a row, a broken promise, the end.
inline constexpr char lineChapter = 'C';
inline constexpr char lineFact = 'F';
inline constexpr char lineRow = 'R';
inline constexpr char lineBroken = 'B';
inline constexpr char lineEnd = 'E';
inline constexpr char fieldEnd = '\t';

} // namespace ipmib::portcheck

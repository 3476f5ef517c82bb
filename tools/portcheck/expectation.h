// SPDX-License-Identifier: BSD-3-Clause
// Rows that somebody expects a platform to have: a file of --save, or one that a person has written.
#pragma once

#include "findings.h"

#include <string>

namespace ipmib::portcheck
{

// The rows as a file: what --rows prints, with a word on how the file is used.
std::string expectationOf(const Report &report);

// Compares the rows of the report with those of a file. A line of the file is a row: its kind, and the values that are
// compared; those that it leaves out may be anything. Rows of kinds that the file does not have are not looked at. What
// differs is added to the report as broken promises. Throws std::runtime_error when the file has a line that is no row.
void compareRows(Report &report, const std::string &file);

} // namespace ipmib::portcheck

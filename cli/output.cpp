// SPDX-License-Identifier: BSD-3-Clause
// What ipmibctl says beside what it was asked for.
#include "output.h"

#include "support/printable.h"

#include <cstdio>

namespace ipmib::cli
{

void complain(std::string_view line)
{
    std::fflush(stdout);
    std::fprintf(stderr, "ipmibctl: %s\n", support::printable(line).c_str());
}

} // namespace ipmib::cli

// SPDX-License-Identifier: BSD-3-Clause
// Programs that a test compares us with, and is skipped without.
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#define IPMIB_NEEDS_PROGRAM(name)                                                                                      \
    if (std::system("command -v " name " > /dev/null") != 0) {                                                         \
        GTEST_SKIP() << "needs " name;                                                                                 \
    }                                                                                                                  \
    static_assert(true)

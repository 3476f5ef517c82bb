#!/bin/sh
# SPDX-License-Identifier: BSD-3-Clause
# Runs the module's tests under valgrind. Usage: valgrind_test.sh PROGRAM; ends with 77 without valgrind.
set -eu
command -v valgrind >/dev/null || {
    echo "valgrind is not installed: skipped"
    exit 77
}
exec valgrind --quiet --error-exitcode=1 --leak-check=full "$1" --gtest_brief=1

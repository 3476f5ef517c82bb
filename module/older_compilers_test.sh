#!/bin/sh
# SPDX-License-Identifier: BSD-3-Clause
# Compiles the module as a device maker's toolchain would: C++17, freestanding, with the oldest compilers that Debian has.
# The checks of the tree are part of that. Usage: older_compilers_test.sh SOURCE...; ends with 77 when there are none.
set -eu
cd "$(dirname "$0")"
tried=
for compiler in g++-11 clang++-13; do
    command -v $compiler >/dev/null || continue
    tried="$tried $compiler"
    for source in "$@"; do
        $compiler -std=c++17 -pedantic -ffreestanding -fno-exceptions -fno-rtti -Wall -Wextra -Wconversion -Werror \
            -I. -I../include -c -o /dev/null "$source"
    done
done
[ -n "$tried" ] || {
    echo "neither g++-11 nor clang++-13 is installed: skipped"
    exit 77
}
echo "compiled with$tried"

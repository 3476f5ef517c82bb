#!/bin/sh
# SPDX-License-Identifier: BSD-3-Clause
# Builds everything that does not need the build machine for each target (a preset of CMakePresets.json), runs its tests,
# on a foreign processor under qemu-user, and prints the counts side by side. Every target has to run the same tests.
#
#   tests/device/run.sh TARGET...
set -eu
cd "$(dirname "$0")/../.."
status=0
builds=

for target in "$@"; do
    cmake --preset "$target"
    cmake --build --preset "$target"
    ctest --preset "$target" || status=1
    builds="$builds build-$target"
done
# shellcheck disable=SC2086 # a list of words
tests/cases.py $builds || status=1
exit "$status"

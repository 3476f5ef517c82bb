#!/bin/sh
# SPDX-License-Identifier: BSD-3-Clause
# Builds everything that does not need the build machine for each target (a preset of CMakePresets.json), runs its tests,
# on a foreign processor under qemu-user, and prints the counts side by side. Every target has to run the same tests.
#
#   tests/device/run.sh TARGET...
set -eu
cd "$(dirname "$0")/../.."
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
status=0

# attribute FILE NAME: a number of the report that ctest writes, from the element that sums it up.
attribute() {
    awk -v name="$2" 'match($0, "[ \t]" name "=\"[0-9]+\"") {
        print substr($0, RSTART + length(name) + 3, RLENGTH - length(name) - 4)
        exit
    }' "$1"
}

for target in "$@"; do
    cmake --preset "$target"
    cmake --build --preset "$target"
    ctest --preset "$target" -N | sed -n 's/^ *Test *#[0-9]*: //p' | sort >"$work/$target.names"
    ctest --preset "$target" --output-junit "$work/$target.xml" || status=1
done

printf '\n%-10s %8s %8s %8s\n' target tests failed skipped
for target in "$@"; do
    counts="$(attribute "$work/$target.xml" tests) $(attribute "$work/$target.xml" failures) $(attribute "$work/$target.xml" skipped)"
    printf '%-10s %8s %8s %8s\n' "$target" $counts
    [ "$target" != "$1" ] || first=$counts
    if [ "$counts" != "$first" ]; then
        echo "$target does not have the same counts as $1"
        status=1
    fi
    if ! diff "$work/$1.names" "$work/$target.names" >"$work/difference"; then
        echo "$target does not have the same tests as $1:"
        cat "$work/difference"
        status=1
    fi
done
exit "$status"

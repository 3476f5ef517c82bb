#!/bin/sh
# SPDX-License-Identifier: BSD-3-Clause
# Measures the prefixes of real kernel state, in a network namespace that ends with each measurement. Times are processor
# time, instructions are callgrind's.
#
#   bench/prefixes.sh [BUILD_DIR]
set -eu
program=${1:-build}/bench/bench_prefixes

# instructions PREFIXES: of one row of the address table.
instructions() {
    valgrind --tool=callgrind --callgrind-out-file=/dev/null --toggle-collect='*measuredRows*' "$program" "$1" 2>&1 |
        awk '/address row/ { rows = $(NF - 1) } /Collected :/ { printf "%d\n", $4 / rows + 0.5; found = 1 }
             END { exit !found }'
}

for number in 10 100 1000 10000; do
    "$program" "$number"
    [ "$number" -gt 1000 ] || printf 'address row, instructions        %9s a row\n' "$(instructions "$number")"
done

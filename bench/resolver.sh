#!/bin/sh
# SPDX-License-Identifier: BSD-3-Clause
# Prints the instructions that a packet costs in the resolver and the message layer, and how many requests it becomes:
# a walk that goes on, a get, and a get-next of an identifier that breaks off within an address. The columns of one row
# are asked side by side; the module behind costs next to nothing.
#
#   bench/resolver.sh [BUILD_DIR]
set -eu
build=${1:-build}
program=$build/bench/bench_resolver
packets=200
[ -x "$program" ] || { echo "resolver.sh: $program is not built (cmake --build $build --target bench_resolver)" >&2; exit 1; }

instructions() {
    valgrind --tool=callgrind --callgrind-out-file=/dev/null --toggle-collect='*measuredNext*' --toggle-collect='*measuredGet*' \
        "$program" "$@" 2>&1 | awk -v n=$((packets + 1)) '/Collected :/ { printf "%d\n", $4 / n + 0.5; found = 1 } END { exit !found }'
}

printf '%-10s %10s %10s %14s %14s\n' packet variables requests instructions 'a variable'
"$program" list | while read -r kind variables; do
    requests=$("$program" "$kind" "$variables" $packets)
    cost=$(instructions "$kind" "$variables" $packets)
    printf '%-10s %10s %10s %14s %14s\n' "$kind" "$variables" "$(echo "$requests $packets" | awk '{ printf "%.1f", $1 / $2 }')" \
        "$cost" $((cost / variables))
done

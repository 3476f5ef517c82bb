#!/bin/sh
# SPDX-License-Identifier: BSD-3-Clause
# Prints the instructions that one request costs in the module, for each table, operation and number of columns. The
# platform and the message layer behind it cost next to nothing; callgrind counts, so that a busy machine does not matter.
#
#   bench/module.sh [BUILD_DIR]
set -eu
build=${1:-build}
program=$build/bench/bench_module
requests=200
. "$(dirname "$0")/callgrind.sh"
need_built "$program"

cost() {
    instructions measuredRequest $requests "$program" "$@"
}

printf '%-24s %-8s %-8s %12s\n' table operation columns instructions
"$program" list | while read -r table operation columns; do
    printf '%-24s %-8s %-8s %12s\n' "$table" "$operation" "$columns" "$(cost "$table" "$operation" "$columns" $requests)"
done

printf '\nOne row of ipAddressTable with its prefix pointer (the last prefix of its interface):\n'
for prefixes in 10 100 1000; do
    printf '%6d prefixes an interface: %12s\n' "$prefixes" "$(cost ipAddressTable getnext one $requests "$prefixes")"
done

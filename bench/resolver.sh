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
. "$(dirname "$0")/callgrind.sh"
need_built "$program"

printf '%-10s %10s %10s %14s %14s\n' packet variables requests instructions 'a variable'
"$program" list | while read -r kind variables; do
    requests=$("$program" "$kind" "$variables" $packets)
    cost=$(instructions measuredPacket $((packets + 1)) "$program" "$kind" "$variables" $packets)
    printf '%-10s %10s %10s %14s %14s\n' "$kind" "$variables" "$(echo "$requests $packets" | awk '{ printf "%.1f", $1 / $2 }')" \
        "$cost" $((cost / variables))
done

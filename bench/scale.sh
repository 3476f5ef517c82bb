#!/bin/sh
# SPDX-License-Identifier: BSD-3-Clause
# How the cost of a request grows with the table, on the simulated platform, for every table that can grow: a GETNEXT in a
# walk, one from anywhere, and a whole walk, in instructions of resolver, module and platform (callgrind counts them), and
# the processor time of a whole walk. Growth is printed as an exponent: 0 when the size makes no difference, 1 when the cost doubles
# with the rows.
#
#   bench/scale.sh tables [BUILD_DIR [TABLE...]]    (MOST=100000: whole walks are counted up to so many rows)
#   bench/scale.sh device [BUILD_DIR]               ipmibd with 1,000,000 neighbours: start, whole walk, memory
#   bench/scale.sh all [BUILD_DIR] | bench/put_into.py docs/performance.md bench/scale.sh
set -eu
what=${1:-tables}
build=${2:-build}
most=${MOST:-100000}
requests=200
[ $# -lt 2 ] || shift
[ $# -lt 1 ] || shift
. "$(dirname "$0")/callgrind.sh"
need_built "$build/bench/bench_next"
plugins=$(dirname "$(find "$build" -name platform_simulated.so | head -n 1)")
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT

# What makes the rows, and a column: by table. Interfaces are dear, so there are fewer of them.
tables='ipNetToPhysicalTable   neighbours 35.1.4   1000 10000 100000 1000000
ipAddressTable         addresses  34.1.3   1000 10000 100000 1000000
ipAddressPrefixTable   prefixes   32.1.5   1000 10000 100000 1000000
ipDefaultRouterTable   routers    37.1.4   1000 10000 65536
ipv6InterfaceTable     interfaces 30.1.2   1000 10000 65536
ipIfStatsTable         interfaces 31.3.1.3 1000 10000 65536
ipv6RouterAdvertTable  interfaces 39.1.2   1000 10000 65536'

# scenario WHAT NUMBER
scenario() {
    case $1 in
    interfaces) echo "{\"generate\": {\"interfaces\": {\"count\": $2, \"name\": \"xe\"}}}" ;;
    # Rows of the address table walk the prefixes, so there are few of these.
    addresses) echo "{\"generate\": {\"interfaces\": {\"count\": 4, \"name\": \"xe\"}, \"$1\": $2}}" ;;
    *) echo "{\"generate\": {\"interfaces\": {\"count\": 64, \"name\": \"xe\"}, \"$1\": $2}}" ;;
    esac
}

# measure TABLE WHAT COLUMN NUMBER: a line "TABLE rows walk random whole seconds"; a count that is missing is "-".
measure() {
    scenario "$2" "$4" >"$folder/scenario.json"
    set -- "$1" "simulated:$folder/scenario.json" "$plugins" "1.3.6.1.2.1.4.$3"
    "$build/bench/bench_next" walk "$2" "$3" "$4" >"$folder/rows"
    counted "$folder/counts" "$build/bench/bench_next" count "$2" "$3" "$4" $requests "$most" <"$folder/rows"
    awk -v table="$1" -v requests=$requests '
        FILENAME ~ /rows$/ { if (FNR == 1) { rows = $1; seconds = $2 } next }
        { count[$1] = $2 }
        END { print table, rows, count["walk"] / requests, count["random"] / requests,
                    "whole" in count ? count["whole"] / rows : "-", seconds * 1e6 / rows }' "$folder/rows" "$folder/counts"
}

print_growth() {
    awk 'BEGIN { format = "%-22s %9s %10s %10s %14s %12s\n"
                 printf format, "", "rows", "GETNEXT,", "GETNEXT,", "whole walk,", "whole walk,"
                 printf format, "", "", "walk", "anywhere", "instr. a row", "us a row" }
         function rounded(number) { return number == "-" ? number : sprintf("%d", number + 0.5) }
         function growth(to, from) { return to == "-" ? "-" : sprintf("%.2f", log(to / from) / log($2 / rows[$1])) }
         { printf format, $1, $2, rounded($3), rounded($4), rounded($5), sprintf("%.2f", $6); fflush() }
         !($1 in rows) { rows[$1] = $2; for (i = 3; i <= 6; i++) first[$1, i] = $i; next }
         { printf format, "  growth to here", "", growth($3, first[$1, 3]), growth($4, first[$1, 4]),
                  growth($5, first[$1, 5]), growth($6, first[$1, 6]) }'
}

case $what in
all)
    "$0" tables "$build"
    echo
    "$0" device "$build"
    ;;
tables)
    echo "$tables" | while read -r table makes column numbers; do
        case " ${*:-$table} " in *" $table "*) ;; *) continue ;; esac
        for number in $numbers; do
            measure "$table" "$makes" "$column" "$number"
        done
    done | print_growth
    ;;
device)
    scenario neighbours 1000000 >"$folder/scenario.json"
    echo "rocommunity public 127.0.0.1" >"$folder/conf"
    begin=$(date +%s.%N)
    MIBS='' SNMP_PERSISTENT_DIR=$folder "$build/sbin/ipmibd" -C -c "$folder/conf" -p "$folder/pid" -Lf "$folder/log" \
        --platform "simulated:$folder/scenario.json" udp:127.0.0.1:1161
    ready=$(date +%s.%N)
    agent=$(cat "$folder/pid")
    rows=$(snmpbulkwalk -v2c -c public -Cr50 -On 127.0.0.1:1161 1.3.6.1.2.1.4.35.1.4 | grep -c ' = ' || true)
    walked=$(date +%s.%N)
    awk -v begin="$begin" -v ready="$ready" -v walked="$walked" -v rows="$rows" '/^VmHWM/ {
        printf "ready after %.2f s; snmpbulkwalk of a column: %d rows in %.1f s; peak memory %.1f MB\n",
               ready - begin, rows, walked - ready, $2 / 1024 }' "/proc/$agent/status"
    kill "$agent"
    ;;
*)
    echo "scale.sh: tables, device or all, not $what" >&2
    exit 2
    ;;
esac

#!/bin/sh
# SPDX-License-Identifier: BSD-3-Clause
# How the cost of a request grows with what users grow, each alone: interfaces, the addresses of one prefix, the prefixes of one
# interface, neighbours, routers, routes. A GETNEXT in a walk, one from anywhere, and a whole walk, in instructions of resolver, module
# and platform (callgrind counts them; not what the kernel does for them), and the processor time of a whole walk. Growth is
# printed as an exponent: 0 when the size makes no difference, 1 when the cost doubles with the rows.
#
#   bench/scale.sh tables [BUILD_DIR [TABLE...]]    (MOST=100000: whole walks are counted up to so many rows)
#   bench/scale.sh kernel [BUILD_DIR [PAIRS...]]    on the Linux platform, as root
#   bench/scale.sh device [BUILD_DIR]               ipmibd with 1,000,000 neighbours: start, whole walk, memory
#   bench/scale.sh all [BUILD_DIR] | bench/put_into.py docs/performance.md bench/scale.sh
set -eu
what=${1:-tables}
build=${2:-build}
most=${MOST:-100000}
requests=200
case $what in *kernel) requests=40 ;; esac # a hundred rows are enough for these
[ $# -lt 2 ] || shift
[ $# -lt 1 ] || shift
. "$(dirname "$0")/callgrind.sh"
need_built "$build/bench/bench_next"
plugins=$(dirname "$(find "$build" -name platform_simulated.so | head -n 1)")
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT

# What grows: by table, with a column, and with the type behind a slash where rows of one type of address are meant.
tables='ipv6InterfaceTable    interfaces           30.1.2    1000 10000
ipIfStatsTable        interfaces           31.3.1.3  1000 10000
ipv6RouterAdvertTable interfaces           39.1.2    1000 10000
ipAddressPrefixTable  interfaces           32.1.5    1000 10000
ipAddressTable        interfaces           34.1.3/2  1000 10000
ipAddressTable        link-local           34.1.3/4  1000 10000
ipAddressTable        addresses/one-prefix 34.1.3/2  1000 8000
ipAddressPrefixTable  prefixes/one-link    32.1.5    1000 10000
ipAddressTable        prefixes/one-link    34.1.3/2  1000 10000
ipNetToPhysicalTable  neighbours           35.1.4    1000 1000000
ipDefaultRouterTable  routers              37.1.4    1000 65536
inetCidrRouteTable    routes               24.7.1.7  1000 1000000'

# Of the kernel's: what grows, pairs of virtual Ethernet links with an address each, brings all of these along.
kernel_tables='ipv6InterfaceTable    veth-pairs           30.1.2
ipIfStatsTable        veth-pairs           31.3.1.3
ipAddressPrefixTable  veth-pairs           32.1.5
ipAddressTable        veth-pairs           34.1.3/2
ipAddressTable        link-local           34.1.3/4'

# scenario WHAT NUMBER
scenario() {
    case $1 in
    interfaces | link-local) echo "{\"generate\": {\"interfaces\": {\"count\": $2, \"name\": \"xe\"}}}" ;;
    addresses/*) echo "{\"generate\": {\"interfaces\": {\"count\": 1, \"name\": \"xe\"}, \"addresses\": $2}}" ;;
    prefixes/*) # with an address in each
        awk -v number="$2" 'BEGIN { printf "{\"interfaces\": [{\"name\": \"xe0\", \"addresses\": ["
                                    for (i = 1; i <= number; i++) printf "%s\"2001:db8:0:%x::1/64\"", (i > 1 ? ", " : ""), i
                                    print "]}]}" }' ;;
    routes) # each destination by way of one of 64 gateways
        awk -v number="$2" 'BEGIN { printf "{\"generate\": {\"interfaces\": {\"count\": 64, \"name\": \"xe\"}}, \"routes\": [{"
                                    printf "\"destination\": \"16.0.0.0/24\", \"count\": %d, \"spread\": true, \"nextHops\": [", number
                                    for (i = 0; i < 64; i++) printf "%s{\"interface\": \"xe%d\", \"via\": \"10.0.%d.1\"}", (i ? ", " : ""), i, i
                                    print "]}]}" }' ;;
    *) echo "{\"generate\": {\"interfaces\": {\"count\": 64, \"name\": \"xe\"}, \"$1\": $2}}" ;;
    esac
}

# veth_pairs NUMBER: in the network namespace of the caller.
veth_pairs() {
    sysctl -q net.ipv6.conf.default.accept_dad=0
    awk -v number="$1" 'BEGIN { for (i = 1; i <= number; i++) {
        printf "link add a%d type veth peer name b%d\nlink set a%d up\nlink set b%d up\n", i, i, i, i
        printf "addr add 2001:db8:%x:%x::1/64 dev a%d nodad\n", i / 256, i % 256, i } }' | ip -batch -
}

# measure TABLE WHAT COLUMN PLATFORM: a line "TABLE WHAT rows walk random whole seconds"; a count that is missing is "-".
measure() {
    set -- "$1" "$2" "1.3.6.1.2.1.4.$3" "$4"
    "$build/bench/bench_next" walk "$4" "$plugins" "$3" >"$folder/rows"
    counted "$folder/counts" "$build/bench/bench_next" count "$4" "$plugins" "$3" $requests "$most" <"$folder/rows"
    awk -v table="$1" -v what="$2" -v requests=$requests '
        FILENAME ~ /rows$/ { if (FNR == 1) { rows = $1; seconds = $2 } next }
        { count[$1] = $2 }
        END { print table, what, rows, count["walk"] / requests, count["random"] / requests,
                    "whole" in count ? count["whole"] / rows : "-", seconds * 1e6 / rows }' "$folder/rows" "$folder/counts"
}

print_growth() {
    awk 'BEGIN { format = "%-21s %-20s %8s %9s %9s %11s %11s\n"
                 printf format, "", "", "", "GETNEXT,", "GETNEXT,", "whole walk,", "whole walk,"
                 printf format, "", "what grows", "rows", "walk", "anywhere", "instr./row", "us/row" }
         function rounded(number) { return number == "-" ? number : sprintf("%d", number + 0.5) }
         function growth(to, from) { return to == "-" ? "-" : sprintf("%.2f", log(to / from) / log($3 / rows[$1, $2])) }
         { printf format, $1, $2, $3, rounded($4), rounded($5), rounded($6), sprintf("%.2f", $7); fflush() }
         !(($1, $2) in rows) { rows[$1, $2] = $3; for (i = 4; i <= 7; i++) first[$1, $2, i] = $i; next }
         { printf format, "  growth to here", "", "", growth($4, first[$1, $2, 4]), growth($5, first[$1, $2, 5]),
                  growth($6, first[$1, $2, 6]), growth($7, first[$1, $2, 7]) }'
}

case $what in
all)
    "$0" tables "$build"
    printf '\nOn a kernel:\n\n'
    "$0" kernel "$build"
    echo
    "$0" device "$build"
    ;;
tables)
    echo "$tables" | while read -r table makes column numbers; do
        case " ${*:-$table} " in *" $table "*) ;; *) continue ;; esac
        for number in $numbers; do
            scenario "$makes" "$number" >"$folder/scenario.json"
            measure "$table" "$makes" "$column" "simulated:$folder/scenario.json"
        done
    done | print_growth
    ;;
kernel)
    for pairs in ${*:-100 1000}; do
        unshare --net "$0" one-kernel "$build" "$pairs"
    done | print_growth
    ;;
one-kernel) # within a network namespace
    veth_pairs "$1"
    echo "$kernel_tables" | while read -r table makes column; do
        measure "$table" "$makes" "$column" linux
    done
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
    echo "scale.sh: tables, kernel, device or all, not $what" >&2
    exit 2
    ;;
esac

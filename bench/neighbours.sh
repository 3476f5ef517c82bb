#!/bin/sh
# SPDX-License-Identifier: BSD-3-Clause
# Measures the neighbour table over real kernel state, in a network namespace that ends with each measurement.
#
#   bench/neighbours.sh next|walk|staleness|memory [BUILD_DIR]
set -eu
export MIBS= # names are not needed
what=${1:?next, walk, staleness or memory}
build=${2:-build}
plugins=$build/lib/ipmib
. "$(dirname "$0")/callgrind.sh"
[ -d "$plugins" ] || plugins=$(dirname "$(find "$build" -name platform_linux.so | head -n 1)")

# neighbours COMMAND FIRST NUMBER: a batch for ip. A tenth of them is link-local; the last three bytes of a link-layer
# address follow from those of the address, so that a wrong row shows.
neighbours() {
    awk -v command="$1" -v first="$2" -v n="$3" 'BEGIN {
        for (i = first; i < first + n; i++)
            printf "neigh %s %s::%x:%x dev %s%d lladdr 02:00:00:%02x:%02x:%02x nud permanent\n", command,
                   i % 10 ? "2001:db8" : "fe80", int(i / 65536), i % 65536, i % 2 ? "left" : "right", int(i / 2) % 8,
                   int(i / 65536), int(i / 256) % 256, i % 256
    }'
}

# fill NUMBER: makes 16 interfaces and the neighbours.
fill() {
    {
        echo "link set lo up"
        for i in 0 1 2 3 4 5 6 7; do
            printf 'link add left%d type veth peer name right%d\nlink set left%d up\nlink set right%d up\n' $i $i $i $i
        done
        neighbours add 1 "$1"
    } | ip -batch -
}

# Starts ipmibd on loopback; its process id is in $agent.
start_agent() {
    folder=$(mktemp -d)
    echo "rocommunity public 127.0.0.1" >"$folder/conf"
    SNMP_PERSISTENT_DIR=$folder "$build/sbin/ipmibd" -C -c "$folder/conf" -p "$folder/pid" -Lf "$folder/log" \
        udp:127.0.0.1:1161
    agent=$(cat "$folder/pid")
}
stop_agent() {
    kill "$agent"
    timeout 10 tail -s 0.1 --pid="$agent" -f /dev/null
    rm -r "$folder"
}

walk() {
    snmpbulkwalk -v2c -c public -Cr50 -On -Ox udp:127.0.0.1:1161 1.3.6.1.2.1.4.35.1.4
}

# change_for SECONDS: 1,000 changes a second, in lots of 50 neighbours that come and 50 that go.
change_for() {
    { neighbours add 100001 50; neighbours del 100051 50; } >"$folder/there"
    { neighbours del 100001 50; neighbours add 100051 50; } >"$folder/back"
    neighbours add 100051 50 | ip -batch -
    end=$(($(date +%s) + $1))
    while [ "$(date +%s)" -lt "$end" ]; do
        for lot in there back there back there back there back there back; do
            ip -batch "$folder/$lot"
            sleep 0.08
        done
    done
}

# walk_for SECONDS CLIENT: snmpbulkwalk itself ends with an error at an identifier that does not increase.
walk_for() {
    end=$(($(date +%s) + $1)) walks=0 failed=0
    while [ "$(date +%s)" -lt "$end" ]; do
        walk >"$folder/walk$2" 2>&1 || failed=$((failed + 1))
        walks=$((walks + 1))
        tr 'A-F' 'a-f' <"$folder/walk$2" | awk '
            function byte(hex) { return 16 * (index("0123456789abcdef", substr(hex, 1, 1)) - 1) + \
                                        index("0123456789abcdef", substr(hex, 2, 1)) - 1 }
            { split($1, id, ".") } # from the 2nd on: 10 of the column, interface, type, length, 16 of the address
            NF != 9 || byte($7) != id[28] || byte($8) != id[29] || byte($9) != id[30] { wrong++ }
            END { print NR, wrong + 0 }' >>"$folder/rows$2"
    done
    awk -v client="$2" -v walks=$walks -v failed=$failed '{ rows += $1; wrong += $2; seen[$1] = 1 }
        END { for (size in seen) sizes++
              printf "client %d: %d walks, %d rows, %d sizes of the table; walks that failed or were out of order: %d, wrong rows: %d\n",
                     client, walks, rows, sizes, failed, wrong }' "$folder/rows$2"
}

next_instructions() {
    instructions measuredRequests 400 "$build/bench/bench_neighbour_next" "$plugins/platform_linux.so" "$plugins/libipmib.so" "$1" 400
}

# Whoever runs today: snmpd, with a configuration as bare as ours, if it is installed.
start_peer() {
    folder=$(mktemp -d)
    echo "rocommunity public 127.0.0.1" >"$folder/conf"
    SNMP_PERSISTENT_DIR=$folder snmpd -C -c "$folder/conf" -p "$folder/pid" -Lf "$folder/log" -I -smux \
        udp:127.0.0.1:1161
    snmpget -v2c -c public -r 20 -t 1 127.0.0.1:1161 1.3.6.1.2.1.1.3.0 >"$folder/uptime" # it is ready when it answers
    agent=$(cat "$folder/pid")
}

# walk_cost NAME PROGRAM OPTION: processor time of the agent for each neighbour of a walk over one column.
walk_cost() {
    before=$(cut -d ' ' -f 1 "/proc/$agent/schedstat")
    rows=0
    for round in 1 2 3 4 5; do
        rows=$((rows + $("$2" -v2c -c public $3 -On 127.0.0.1:1161 1.3.6.1.2.1.4.35.1.4 | grep -c STRING)))
    done
    after=$(cut -d ' ' -f 1 "/proc/$agent/schedstat")
    awk -v name="$1" -v ns=$((after - before)) -v rows=$rows -v how="$2 $3" \
        'BEGIN { printf "%-8s %-20s %7.2f us a variable (%d rows)\n", name, how, ns / rows / 1000, rows }'
}

case $what in
next)
    for order in walk random; do
        few=$(unshare -n "$0" inside_next "$build" "$order" 1000)
        many=$(unshare -n "$0" inside_next "$build" "$order" 100000)
        printf '%-8s GETNEXT among 1,000: %s instructions, among 100,000: %s, ratio %s\n' "$order" "$few" "$many" \
            "$(awk -v a="$many" -v b="$few" 'BEGIN { printf "%.2f", a / b }')"
    done
    ;;
inside_next)
    fill "$4"
    next_instructions "$3"
    ;;
walk)
    # Agent and client on one core: on two, the ratio of an agent to itself is anything between a half and two.
    taskset -c 0 unshare -n "$0" inside_walk "$build"
    ;;
inside_walk)
    fill 20000
    for name in ipmibd snmpd; do
        case $name in
        ipmibd) start_agent ;;
        snmpd) command -v snmpd >/dev/null && start_peer || continue ;;
        esac
        walk_cost $name snmpwalk -Cc
        walk_cost $name snmpbulkwalk -Cr10
        walk_cost $name snmpbulkwalk -Cr50
        stop_agent
    done
    ;;
staleness)
    unshare -n "$0" inside_staleness "$build"
    ;;
inside_staleness)
    fill 20000
    start_agent
    "$build/bench/bench_neighbour_staleness" udp:127.0.0.1:1161 left0 1000
    stop_agent
    ;;
churn)
    unshare -n "$0" inside_churn "$build"
    ;;
inside_churn)
    fill 2000
    start_agent
    change_for 30 &
    changes=$!
    walk_for 30 1 &
    clients=$!
    walk_for 30 2 &
    clients="$clients $!"
    walk_for 30 3 &
    wait "$changes" $clients "$!"
    walk | awk '{ print $4 $5 $6 $7 $8 $9 }' | tr 'A-F' 'a-f' | sort >"$folder/walked"
    ip -6 neigh | awk '{ for (i = 1; i < NF; i++) if ($i == "lladdr") { gsub(":", "", $(i + 1)); print $(i + 1) } }' |
        sort >"$folder/listed"
    printf 'then, rows walked: %d, of the kernel: %d, in one list only: %d\n' "$(wc -l <"$folder/walked")" \
        "$(wc -l <"$folder/listed")" "$(comm -3 "$folder/walked" "$folder/listed" | wc -l)"
    stop_agent
    ;;
memory)
    for number in 0 20000 100000; do
        unshare -n "$0" inside_memory "$build" "$number"
    done
    ;;
inside_memory)
    fill "$3"
    start_agent
    rows=$(snmpbulkwalk -v2c -c public -Cr50 -On udp:127.0.0.1:1161 1.3.6.1.2.1.4.35.1.4 | grep -c STRING || true)
    printf '%6d neighbours, %6d rows walked: ' "$3" "$rows"
    awk '/^VmHWM|^VmRSS|^RssAnon/ { printf "%s %.1f MB  ", $1, $2 / 1024 } END { print "" }' "/proc/$agent/status"
    stop_agent
    ;;
*)
    echo "neighbours.sh: next, walk, staleness or memory, not $what" >&2
    exit 2
    ;;
esac

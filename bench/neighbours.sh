#!/bin/sh
# SPDX-License-Identifier: BSD-3-Clause
# Measures the neighbour table over real kernel state, in a network namespace that ends with each measurement.
#
#   bench/neighbours.sh next|churn [BUILD_DIR]
set -eu
export MIBS= # names are not needed
what=${1:?next or churn}
build=${2:-build}
plugins=$build/lib/ipmib
. "$(dirname "$0")/callgrind.sh"
[ -d "$plugins" ] || plugins=$(dirname "$(find "$build" -name platform_linux.so | head -n 1)")

here=$(dirname "$0")
neighbours() {
    "$here/kernel_state.py" neighbours "$@"
}
fill() {
    "$here/kernel_state.py" make 16 0 "$1"
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

case $what in
next)
    few=$(unshare -n "$0" inside_next "$build" 1000)
    many=$(unshare -n "$0" inside_next "$build" 100000)
    printf '%s\n%s\n' "$few" "$many" | awk '
        $1 in few { printf "%-8s GETNEXT among 1,000: %d instructions, among 100,000: %d, ratio %.2f\n", $1, few[$1],
                           $2 / 400, $2 / 400 / few[$1] }
        { few[$1] = $2 / 400 }'
    ;;
inside_next)
    fill "$3"
    folder=$(mktemp -d)
    "$build/bench/bench_next" walk linux "$plugins" 1.3.6.1.2.1.4.35.1.4 >"$folder/rows"
    counted "$folder/counts" "$build/bench/bench_next" count linux "$plugins" 1.3.6.1.2.1.4.35.1.4 400 0 <"$folder/rows"
    cat "$folder/counts"
    rm -r "$folder"
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
*)
    echo "neighbours.sh: next or churn, not $what" >&2
    exit 2
    ;;
esac

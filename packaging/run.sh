#!/bin/sh
# SPDX-License-Identifier: BSD-3-Clause
# Runs the built agent on loopback: in the foreground, or `once`: starts it, walks what it serves, and stops it.
set -eu

build=${BUILD_DIR:-build}
agent=$build/sbin/ipmibd
port=${PORT:-1161}
# Everything that the run leaves behind; the library keeps its count of starts there.
state=$(mkdir -p "$build/run" && cd "$build/run" && pwd)
export SNMP_PERSISTENT_DIR="$state/persistent"
echo "rocommunity public 127.0.0.1" >"$state/ipmibd.conf"

if [ "${1:-}" != once ]; then
    cat <<END
ipmibd listens on udp:127.0.0.1:$port with the community "public". In another terminal:

    snmpwalk -v2c -c public -On 127.0.0.1:$port 1.3.6.1.2.1.4
    snmpwalk -v2c -c public -On 127.0.0.1:$port 1.3.6.1.2.1.5

The same without SNMP: $build/bin/ipmibctl show neighbours

END
    exec "$agent" -f -Lo -C -c "$state/ipmibd.conf" "udp:127.0.0.1:$port"
fi

stop() {
    [ -s "$state/pid" ] || return 0
    pid=$(cat "$state/pid")
    kill "$pid"
    timeout 10 tail -s 0.1 --pid="$pid" -f /dev/null
}

# Without -f it returns when it is ready to answer, or has said why it never will be.
rm -f "$state/pid"
"$agent" -C -c "$state/ipmibd.conf" -p "$state/pid" -Lf "$state/log" "udp:127.0.0.1:$port"
trap stop EXIT

for subtree in 1.3.6.1.2.1.1 1.3.6.1.2.1.2 1.3.6.1.2.1.4 1.3.6.1.2.1.5 1.3.6.1.2.1.31; do
    status=0
    snmpwalk -v2c -c public -On "127.0.0.1:$port" "$subtree" >"$state/walk" || status=$?
    cat "$state/walk"
    [ "$status" = 0 ] || exit "$status"
    if ! grep -q -v -e 'No Such' -e 'No more variables' "$state/walk"; then
        echo "nothing is served under $subtree" >&2
        exit 1
    fi
done

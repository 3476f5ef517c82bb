#!/bin/bash
# SPDX-License-Identifier: BSD-3-Clause
# Tries the image of build-image/ as its user would: unpacks it and runs it by an OCI runtime, in the network of a machine
# that is made here, asked from another one. Without rights, on a file system that cannot be written to.
set -euo pipefail
cd "$(dirname "$0")/.."
build=$PWD/build-image
work=$build/check

. packaging/check/outcome.sh
[ "$(id -u)" = 0 ] || skip "root is needed for namespaces"
for tool in umoci snmpbulkwalk ip python3; do
    command -v "$tool" >/dev/null || skip "$tool is not installed"
done
[ -e "$build/name" ] || fail "there is no image yet: make image"
name=$(cat "$build/name")

# The image as one file is what people get.
rm -rf "$work"
mkdir -p "$work/layout"
tar -x -f "$build/ipmib.oci.tar" -C "$work/layout"
umoci unpack --image "$work/layout:$name" "$work/bundle"
root=$work/bundle/rootfs
[ -z "$(find "$root" \( -type f -perm /6000 -o -type b -o -type c \))" ] || fail "there are devices, or files that give rights"
cp "$work/bundle/config.json" "$work/as_unpacked.json"
container=ipmib-check-$$
runtime=

# Two machines with a link between them; both are named by processes of ours, and end with them.
unshare --net sleep infinity &
machine=$!
unshare --net sleep infinity &
manager=$!
leave() {
    [ -z "$runtime" ] || "$runtime" delete --force "$container" >/dev/null 2>&1 || true
    kill "$machine" "$manager" 2>/dev/null || true
}
trap leave EXIT

own=$(readlink /proc/self/ns/net)
for process in "$machine" "$manager"; do
    for _ in $(seq 100); do
        [ "$(readlink "/proc/$process/ns/net")" = "$own" ] || break
        sleep 0.05
    done
done
on() { nsenter --net="/proc/$1/ns/net" "${@:2}"; }
on "$machine" ip link add link0 type veth peer name link1 netns "/proc/$manager/ns/net"
on "$machine" ip link set lo up
on "$machine" ip link set link0 up
on "$manager" ip link set link1 up
on "$machine" ip address add 192.0.2.1/24 dev link0
on "$machine" ip address add 2001:db8::1/64 dev link0 nodad
on "$manager" ip address add 192.0.2.2/24 dev link1
on "$machine" ip neighbour add 2001:db8::99 lladdr 02:00:00:00:00:99 dev link0

cat >"$work/ipmibd.conf" <<END
agentaddress udp:192.0.2.1:1161
rocommunity public 192.0.2.0/24
END

# run_container NAME CONFIGURATION [COMMAND...]: as `podman run --network host -v CONFIGURATION:/etc/snmp/ipmibd.conf:ro
# IMAGE COMMAND...` has the runtime do it on the machine.
run_container() {
    python3 packaging/container_settings.py "$work/as_unpacked.json" "${@:2}" >"$work/bundle/config.json"
    on "$machine" "$runtime" run --bundle "$work/bundle" "$1"
}
rows() {
    on "$manager" env SNMPCONFPATH=/nonexistent MIBS= snmpbulkwalk -v2c -c public -On -t 2 -r 0 192.0.2.1:1161 "$1" 2>&1 |
        grep -v -e 'No Such' -e 'No more variables' -e Timeout || true
}
expect_rows() {
    local found=0
    while [ "$found" = 0 ] && kill -0 "$agent" 2>/dev/null && [ "$SECONDS" -lt 120 ]; do
        found=$(rows "$1" | wc -l)
    done
    [ "$found" -gt 0 ] || fail "no rows of $1: $(cat "$work/log")"
    echo "  $found rows of $1"
}

# Not every runtime gets along with every machine's control groups.
for each in runc crun; do
    command -v "$each" >/dev/null || continue
    runtime=$each
    ! run_container "$container" "$work/ipmibd.conf" ipmibctl --version >"$work/log" 2>&1 || break
    echo "$each does not run here: $(tail -n 1 "$work/log")"
    runtime=
done
[ -n "$runtime" ] || skip "no OCI runtime is installed and runs here (runc, crun)"

echo "$name by $runtime:"
run_container "$container" "$work/ipmibd.conf" >"$work/log" 2>&1 &
agent=$!
for subtree in 1.3.6.1.2.1.4.34 1.3.6.1.2.1.4.35 1.3.6.1.2.1.31; do
    expect_rows "$subtree"
done
rows 1.3.6.1.2.1.4.35 | grep -q '2.0.0.0.0.99\|02 00 00 00 00 99' || fail "the neighbour of the machine is not told"
"$runtime" kill "$container" TERM
wait "$agent" || fail "the agent ended with status $?: $(cat "$work/log")"

run_container "$container-2" "$work/ipmibd.conf" ipmibctl neigh >"$work/neighbours"
sed 's/^/  /' "$work/neighbours"
grep -q '2001:db8::99.*02:00:00:00:00:99' "$work/neighbours" || fail "ipmibctl does not show the neighbour of the machine"

# As installed, nobody may ask.
run_container "$container" "$work/bundle/rootfs/etc/snmp/ipmibd.conf" >"$work/log" 2>&1 &
agent=$!
while ! grep -q 'nobody may ask' "$work/log" && kill -0 "$agent" 2>/dev/null && [ "$SECONDS" -lt 120 ]; do
    sleep 0.1
done
grep -q 'nobody may ask' "$work/log" || fail "the agent does not say that nobody may ask: $(cat "$work/log")"
"$runtime" kill "$container" TERM
wait "$agent" || fail "the agent ended with status $?: $(cat "$work/log")"

cmp <(sed -n '/^Redistribution/,$p' LICENSE | tr -s ' \n' ' ') \
    <(sed -n '/^ Redistribution/,$p' "$root/usr/share/doc/ipmib/copyright" | sed 's/^ \.$//' | tr -s ' \n' ' ' | sed 's/^ //') ||
    fail "the licence is not in the image"
echo "All is well."

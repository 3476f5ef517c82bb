#!/bin/bash
# SPDX-License-Identifier: BSD-3-Clause
# On a booted Debian with an snmpd that already runs: the packages are installed, the service starts by itself, confined by
# systemd, and is used in each of the three ways that its configuration names. Started by check_packages.sh.
set -euo pipefail
. packaging/check/common.sh

echo "On a Debian with systemd and snmpd:"
make_root with_systemd
apt_get chroot "$root" install systemd-sysv dbus snmpd
# Debian's "public" sees the system group alone.
echo 'rocommunity everything 127.0.0.1' >"$root/etc/snmp/snmpd.conf.d/everything.conf"
# Without a network in there, what will be installed is fetched now.
apt_get chroot "$root" install --download-only "${packages[@]}"
rm "$root/usr/sbin/policy-rc.d"
umount -R "$root/dev" "$root/proc"

# A control group of its own, in which the system sees the root of all.
if [ "$(stat -f -c %T /sys/fs/cgroup)" = cgroup2fs ]; then
    hierarchies=(/sys/fs/cgroup)
else
    hierarchies=(/sys/fs/cgroup/systemd /sys/fs/cgroup/unified)
fi
group=ipmib-check-$$
leave() {
    kill -KILL "$booting" 2>/dev/null || true
    wait "$booting" 2>/dev/null || true
    for hierarchy in "${hierarchies[@]}"; do
        for _ in $(seq 50); do
            find "$hierarchy/$group" -depth -type d -exec rmdir {} + 2>/dev/null && break
            sleep 0.1
        done
    done
}
trap leave EXIT
(
    for hierarchy in "${hierarchies[@]}"; do
        mkdir "$hierarchy/$group"
        echo "$BASHPID" >"$hierarchy/$group/cgroup.procs"
    done
    exec unshare --mount --pid --ipc --uts --net --cgroup --fork --kill-child packaging/check/boot.sh "$root"
) >"$work/boot.log" 2>&1 &
booting=$!
system=
in_network() { nsenter -t "$system" -n "$@"; }
booted() { nsenter -t "$system" -m -p -i -u -n -C -r -w "$@"; }
wait_for() {
    for _ in $(seq 300); do
        ! "$@" >/dev/null 2>&1 || return 0
        sleep 0.2
    done
    return 1
}
snmpd_runs() { system=$(pgrep -P "$booting") && booted systemctl is-active snmpd; }
wait_for snmpd_runs || skip "systemd does not start here, see $work/boot.log"
make_links
expect_rows 127.0.0.1 everything 1.3.6.1.2.1.1
everything >"$work/before"

apt_get booted install "${packages[@]}"
is_well() {
    booted systemctl --quiet is-active ipmibd || fail "the service does not run: $(booted systemctl status ipmibd)"
    [ "$(booted systemctl show -P NRestarts ipmibd)" = 0 ] || fail "the service was restarted: $(booted journalctl -u ipmibd)"
}
# The answer to systemctl means what it says: the service is ready.
restart() {
    booted systemctl restart "$1" || fail "$1 does not start: $(booted journalctl -u "$1")"
    is_well
}
is_well
booted systemctl --quiet is-enabled ipmibd || fail "the service is not enabled"
booted systemctl --quiet is-active snmpd || fail "snmpd does not run any more"
booted systemd-analyze security --no-pager --threshold=24 ipmibd | grep Overall | sed 's/^/  /'

booted journalctl -u ipmibd -p warning -o cat | grep -q 'nobody may ask' || fail "the journal lacks the warning, or its priority"

echo "Asked by itself, beside snmpd:"
expect_no_rows 127.0.0.1:1161 public 1.3.6.1.2.1.4
let_public_in
booted systemctl reload ipmibd
expect_rows 127.0.0.1:1161 public 1.3.6.1.2.1.4
restart ipmibd
expect_rows 127.0.0.1:1161 public 1.3.6.1.2.1.4
expect_rows 127.0.0.1 everything 1.3.6.1.2.1.4.34

echo "As its sub-agent:"
expect_no_rows 127.0.0.1 everything 1.3.6.1.2.1.4.30
become_subagent
restart snmpd
restart ipmibd
expect_rows 127.0.0.1 everything 1.3.6.1.2.1.4.30
booted ipmibd --check -x /var/agentx/master | sed 's/^/  /'
restart snmpd
expect_rows 127.0.0.1 everything 1.3.6.1.2.1.4.30

echo "Within snmpd:"
booted systemctl stop ipmibd
cp "$root/usr/share/doc/ipmib/examples/snmpd.conf.d/ipmib-object.conf" "$root/etc/snmp/snmpd.conf.d/"
booted systemctl restart snmpd
expect_rows 127.0.0.1 everything 1.3.6.1.2.1.4.30
rm "$root/etc/snmp/snmpd.conf.d/ipmib-object.conf"
booted systemctl restart snmpd
expect_no_rows 127.0.0.1 everything 1.3.6.1.2.1.4.30

echo "With IPv4 accounting:"
sed -i 's/^IPMIBD_OPTIONS=.*/IPMIBD_OPTIONS="--ipv4-accounting"/' "$root/etc/default/ipmibd"
mkdir -p "$root/etc/systemd/system/ipmibd.service.d"
cp "$root/usr/share/doc/ipmib/examples/ipmibd.service.d/ipv4-accounting.conf" "$root/etc/systemd/system/ipmibd.service.d/"
booted systemctl daemon-reload
restart ipmibd
in_network ping -q -c 3 -i 0.2 127.0.0.1 >/dev/null
rows 127.0.0.1:1161 public 1.3.6.1.2.1.4.31.3.1.4.1 | grep -v 'Counter64: 0$' | sed 's/^/  /' | grep . ||
    fail "IPv4 traffic is not counted"
rm -r "$root/etc/systemd/system/ipmibd.service.d"
booted systemctl daemon-reload

echo "In place of snmpd:"
sed -i 's/^IPMIBD_OPTIONS=.*//' "$root/etc/default/ipmibd"
booted systemctl stop snmpd
take_port_161
restart ipmibd
expect_rows 127.0.0.1:161 public 1.3.6.1.2.1.4
expect_rows 'udp6:[::1]:161' public 1.3.6.1.2.1.4.34
is_well

echo "Purged:"
# What the first steps did to snmpd is theirs to undo.
booted systemctl stop ipmibd
rm "$root/etc/snmp/snmpd.conf.d/ipmib.conf"
chmod 700 "$root/var/agentx"
booted systemctl restart snmpd
apt_get booted purge ipmib libipmib ipmib-dev
apt_get booted autoremove --purge
everything >"$work/after"
expect_nothing_left "$work/before" "$work/after"

#!/bin/bash
# SPDX-License-Identifier: BSD-3-Clause
# On a bare Debian without a service manager: the service runs by its unit's command line, user and capabilities, and its
# system calls are compared with the unit's filter, what it opens with the AppArmor profile. Started by check_packages.sh.
set -euo pipefail
. packaging/check/common.sh

unshare --net sleep infinity &
network=$!
in_network() { nsenter --net="/proc/$network/ns/net" "$@"; }

# What the unit says about KEY.
unit() { sed -n "s/^$1=//p" "$root/lib/systemd/system/ipmibd.service"; }

# As systemd would start it: user, capabilities, no new privileges, options of /etc/default. Returns when it serves.
start_service() {
    local capabilities
    capabilities=$(unit AmbientCapabilities | tr 'A-Z' 'a-z' | sed 's/cap_/+/g; s/ /,/g')
    in_network strace -f -q -y -s 4096 -o "$work/trace" \
        chroot "$root" setpriv --reuid "$(unit User)" --regid "$(unit Group)" --clear-groups --no-new-privs \
        --bounding-set="-all,$capabilities" --inh-caps="-all,$capabilities" --ambient-caps="-all,$capabilities" --reset-env \
        sh -c ". /etc/default/ipmibd; umask $(unit UMask); exec $(unit ExecStart)" >"$work/service.log" 2>&1 &
    service=$!
    for _ in $(seq 300); do
        ! grep -qs 'serves' "$work/service.log" || return 0
        kill -0 "$service" 2>/dev/null || fail "the service ended: $(cat "$work/service.log")"
        sleep 0.1
    done
    fail "the service does not get ready: $(cat "$work/service.log")"
}
# The agent is the youngest process of its name in here.
signal_service() { kill "-$1" "$(pgrep -n -x ipmibd)"; }
stop_service() {
    signal_service TERM
    wait "$service" || fail "the service ended with status $?: $(cat "$work/service.log")"
    python3 packaging/allowed_calls.py "$root/lib/systemd/system/ipmibd.service" "$work/trace" /usr/sbin/ipmibd ||
        fail "the unit would refuse what the agent does"
    python3 packaging/allowed_files.py "$root/etc/apparmor.d/ipmibd" "$work/trace" /usr/sbin/ipmibd "$root" ||
        fail "the AppArmor profile would refuse what the agent does"
}

echo "On a bare Debian, without systemd:"
make_root without_systemd
make_links
everything >"$work/before"
apt_get chroot "$root" install "${packages[@]}"

start_service
expect_no_rows 127.0.0.1:1161 public 1.3.6.1.2.1.4
in_network chroot "$root" setpriv --reuid nobody --clear-groups ipmibctl show addresses | sed 's/^/  /'
stop_service

let_public_in
start_service
expect_rows 127.0.0.1:1161 public 1.3.6.1.2.1.4
expect_rows 127.0.0.1:1161 public 1.3.6.1.2.1.5
signal_service HUP
expect_rows 127.0.0.1:1161 public 1.3.6.1.2.1.4.34
stop_service

take_port_161
start_service
expect_rows 127.0.0.1:161 public 1.3.6.1.2.1.4.34
stop_service

apt_get chroot "$root" purge ipmib libipmib ipmib-dev
apt_get chroot "$root" autoremove --purge
everything >"$work/after"
expect_nothing_left "$work/before" "$work/after"

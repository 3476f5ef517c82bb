# SPDX-License-Identifier: BSD-3-Clause
# What both trials of the packages share; read by bash from the project's folder.

work=$PWD/build-packages/check

. packaging/check/outcome.sh

# make_root NAME: a fresh Debian in $root, with the packages in /packages, on this machine's network.
make_root() {
    root=$work/$1
    log=$work/$1.apt.log
    : >"$log"
    rm -rf "$root"
    cp -a "$work/base" "$root"
    cp -L /etc/resolv.conf "$root/etc/resolv.conf"
    mkdir "$root/packages"
    cp build-packages/*.deb "$root/packages/"
    packages=(build-packages/*.deb)
    packages=("${packages[@]/#build-packages/\/packages}")
    mount -t proc proc "$root/proc"
    mount --rbind --make-rslave /dev "$root/dev"
    printf '#!/bin/sh\nexit 101\n' >"$root/usr/sbin/policy-rc.d" # nothing is started yet
    chmod 755 "$root/usr/sbin/policy-rc.d"
    apt_get chroot "$root" update
}

# apt_get COMMAND... ARGUMENTS: apt-get by way of the command that enters the Debian (chroot ROOT, or nsenter ...).
apt_get() {
    local way=()
    while [ "$1" = chroot ] || [ "$1" = "$root" ] || [ "$1" = booted ]; do
        way+=("$1")
        shift
    done
    "${way[@]}" env DEBIAN_FRONTEND=noninteractive LC_ALL=C.UTF-8 apt-get -y -q --no-install-recommends "$@" \
        >>"$log" 2>&1 || fail "apt-get $*, see $log"
}

# rows ADDRESS COMMUNITY SUBTREE: asked in the trial's network by this machine's own client.
rows() {
    in_network env SNMPCONFPATH=/nonexistent MIBS= snmpbulkwalk -v2c -c "$2" -On -t 5 -r 1 "$1" "$3" 2>&1 |
        grep -v -e 'No Such' -e 'No more variables' -e Timeout || true
}
expect_rows() {
    local found=0
    for _ in $(seq 100); do
        found=$(rows "$@" | wc -l)
        [ "$found" = 0 ] || break
        sleep 0.1
    done
    [ "$found" -gt 0 ] || fail "no rows of $3 at $1"
    echo "  $found rows of $3 at $1"
}
expect_no_rows() {
    [ "$(rows "$@")" = "" ] || fail "there are rows of $3 at $1"
}

# Two links with IPv6: what the rows are of.
make_links() {
    in_network ip link set lo up
    in_network ip link add link0 type veth peer name link1
    in_network ip link set link0 up
    in_network ip link set link1 up
    in_network ip address add 2001:db8::1/64 dev link0 nodad
}

# Every file with its owner and mode, every user and group, every package; not the copies that the tools for users and
# groups keep of the lists of before.
everything() {
    (cd "$root" && find . \( -path ./proc -o -path ./sys -o -path ./dev -o -path ./run -o -path ./tmp -o -path ./packages -o \
        -path ./var/lib/apt -o -path ./var/cache/apt -o -path ./var/log -o -path './etc/*-' -o \
        -path './var/tmp/systemd-private-*' \) -prune -o -printf '%p %M %U:%G\n' | sort)
    sort "$root/etc/passwd" "$root/etc/group"
    dpkg-query --admindir="$root/var/lib/dpkg" -W -f '${Package} ${db:Status-Abbrev}\n'
}

# expect_nothing_left BEFORE AFTER: lists of everything.
expect_nothing_left() {
    diff "$1" "$2" || fail "a purge leaves something behind (>), or takes something away (<)"
    echo "  nothing is left"
}

let_public_in() {
    sed -i 's/^#rocommunity COMMUNITY 127/rocommunity public 127/; s/^#rocommunity6 COMMUNITY.*/rocommunity6 public ::1/' \
        "$root/etc/snmp/ipmibd.conf"
}
take_port_161() {
    sed -i 's/^agentaddress/#&/; s/^#agentaddress udp:161/agentaddress udp:161/' "$root/etc/snmp/ipmibd.conf"
}
# What /etc/default/ipmibd says, by its own words.
become_subagent() {
    cp "$root/usr/share/doc/ipmib/examples/snmpd.conf.d/ipmib.conf" "$root/etc/snmp/snmpd.conf.d/"
    chmod 755 "$root/var/agentx"
    sed -i 's/^IPMIBD_OPTIONS=.*//; s/^#\(IPMIBD_OPTIONS="-x.*\)/\1/' "$root/etc/default/ipmibd"
}

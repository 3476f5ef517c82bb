#!/bin/bash
# SPDX-License-Identifier: BSD-3-Clause
# Tries the packages of build-packages/ as a new user would, on a Debian in a folder: once without a service manager, once
# booted with systemd and an snmpd that already runs. Each ends with a purge, and a look for what was left behind.
#
# Needs root, debootstrap, and the mirror of this machine's own apt sources. What is in the folders, mounts, processes and
# the network are this run's own.
set -euo pipefail
cd "$(dirname "$0")/.."
. packaging/check/common.sh

[ "$(id -u)" = 0 ] || skip "root is needed for a Debian in a folder"
command -v debootstrap >/dev/null || skip "debootstrap is not installed"
compgen -G 'build-packages/*.deb' >/dev/null || fail "there are no packages yet: make packages"

. /etc/os-release
mirror=$(apt-get indextargets --format '$(REPO_URI)' "Codename: $VERSION_CODENAME" 'Component: main' | head -n 1)
[ -n "$mirror" ] || skip "the apt sources name no mirror of $VERSION_CODENAME"
mkdir -p "$work"
if [ ! -e "$work/base.complete" ]; then
    rm -rf "$work/base"
    debootstrap --variant=minbase "$VERSION_CODENAME" "$work/base" "$mirror" >"$work/debootstrap.log" ||
        fail "debootstrap, see $work/debootstrap.log"
    touch "$work/base.complete"
fi

for part in ${PARTS:-without_systemd with_systemd}; do
    # With the processes of the namespace, everything that was mounted and started goes.
    unshare --mount --pid --fork --kill-child --mount-proc "packaging/check/$part.sh"
done
echo "All is well."

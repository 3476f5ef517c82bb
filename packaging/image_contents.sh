#!/bin/bash
# SPDX-License-Identifier: BSD-3-Clause
# Puts into the root of an image what no package of Debian's brings: image_contents.sh ROOT PACKAGE...
# Run by build_image.sh when Debian's files are there and their packages still lie in apt's cache.
set -euo pipefail
root=$1
shift

for deb in "$@"; do
    dpkg-deb --fsys-tarfile "$deb" | tar -x -C "$root" --wildcards --exclude='./usr/share/man' --exclude='./usr/share/doc/*/*.*' \
        --exclude='./usr/share/doc/*/examples' --exclude=./lib/systemd --exclude=./usr/lib/sysusers.d \
        --exclude=./etc/apparmor.d --exclude='./usr/share/*-completion*' --exclude=./usr/share/zsh --exclude=./usr/share/fish
done

# The number is that of nobody on the machine, however its own users are numbered.
id=65532
echo "root:x:0:0:root:/:/usr/sbin/nologin
_ipmib:x:$id:$id:IP-MIB agent:/var/lib/ipmibd:/usr/sbin/nologin" >"$root/etc/passwd"
echo "root:x:0:
_ipmib:x:$id:" >"$root/etc/group"
install -d -o "$id" -g "$id" -m 0750 "$root/var/lib/ipmibd"

# What scanners of images know the packages by.
mkdir -p "$root/var/lib/dpkg/status.d"
for deb in "$root"/var/cache/apt/archives/*.deb "$@"; do
    dpkg-deb -f "$deb" >"$root/var/lib/dpkg/status.d/$(dpkg-deb -f "$deb" Package)"
done

#!/bin/bash
# SPDX-License-Identifier: BSD-3-Clause
# Boots the Debian in a folder as the first process of its namespaces: boot.sh FOLDER. What it mounts goes with it.
set -eu
root=$1

mount --make-rprivate /
mount --bind "$root" "$root"
mount -t proc proc "$root/proc"
mount -t sysfs sysfs "$root/sys"
for folder in run tmp dev; do
    mount -t tmpfs -o mode=755 tmpfs "$root/$folder"
done
chmod 1777 "$root/tmp"
for device in null zero full random urandom tty; do
    touch "$root/dev/$device"
    mount --bind "/dev/$device" "$root/dev/$device"
done
mkdir "$root/dev/pts" "$root/dev/shm"
ln -s pts/ptmx "$root/dev/ptmx"
ln -s /proc/self/fd "$root/dev/fd"

# Control groups as this machine has them.
if [ "$(stat -f -c %T /sys/fs/cgroup)" = cgroup2fs ]; then
    mount -t cgroup2 cgroup2 "$root/sys/fs/cgroup"
else
    mount -t tmpfs -o mode=755 tmpfs "$root/sys/fs/cgroup"
    mkdir "$root/sys/fs/cgroup/systemd" "$root/sys/fs/cgroup/unified"
    mount -t cgroup -o none,name=systemd cgroup "$root/sys/fs/cgroup/systemd"
    mount -t cgroup2 cgroup2 "$root/sys/fs/cgroup/unified" || true
fi

cd "$root"
hostname ipmib-check
exec env -i container=ipmib-check PATH=/usr/sbin:/usr/bin:/sbin:/bin chroot "$root" /lib/systemd/systemd

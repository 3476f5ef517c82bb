#!/bin/bash
# SPDX-License-Identifier: BSD-3-Clause
# Makes an OCI image in build-image/ of the Debian packages, without a daemon: build-image/ipmib is an OCI layout,
# build-image/ipmib.oci.tar the same as one file, for `podman load` and the like. Any user may run it who has
# subordinate user ids, or root.
#
# In it are the programs, the libraries that they load, and all their licences: no shell, no package manager. The same
# packages and the same Debian make the same octets.
set -euo pipefail
cd "$(dirname "$0")/.."
umask 022

packages=build-packages
build=build-image
if [ "$(cat "$packages/commit" 2>/dev/null)" != "$(packaging/commit.sh)" ]; then
    packaging/build_packages.sh
fi
debs=("$PWD/$packages"/{libipmib,ipmib}_*.deb)
version=$(dpkg-deb -f "${debs[0]}" Version)
name=localhost/ipmib:${version%%-*}
SOURCE_DATE_EPOCH=${SOURCE_DATE_EPOCH:-$(dpkg-parsechangelog -l packaging/debian/changelog -S Timestamp)}
export SOURCE_DATE_EPOCH
created=$(date -u -d "@$SOURCE_DATE_EPOCH" +%Y-%m-%dT%H:%M:%SZ)
rm -rf "$build"
mkdir "$build"

# What the packages depend on, but for each other and what makes the service's user: the image has that one already.
needed=$(for deb in "${debs[@]}"; do dpkg-deb -f "$deb" Depends; done | tr ',' '\n' |
    sed 's/|.*//; s/(.*//; s/ //g' | grep -v -e '^libipmib$' -e sysusers | sort -u | paste -sd,)

# A few packages of Debian bring tools, data and languages with their libraries.
leave_out=(/usr/share /bin /sbin /usr/bin /usr/sbin '/usr/lib/*/perl' '/usr/lib/*/perl-base' '/usr/lib/*/gconv' '/usr/lib/*/krb5'
    /usr/lib/systemd /lib/systemd /usr/lib/tmpfiles.d /etc/cron.daily /etc/logrotate.d /etc/dpkg /etc/alternatives /var/lib/dpkg)
options=()
for path in "${leave_out[@]}"; do
    options+=("--dpkgopt=path-exclude=$path/*")
done
options+=('--dpkgopt=path-include=/usr/share/doc/*/copyright' '--dpkgopt=path-include=/usr/share/common-licenses/*')

# The sources of Debian are those of this machine.
. /etc/os-release
apt-get indextargets --format 'deb $(REPO_URI) $(RELEASE) $(COMPONENT)' 'Created-By: Packages' 'Origin: Debian' |
    grep ' main$' |
    mmdebstrap --quiet --variant=extract --format=tar --include="base-files,$needed" "${options[@]}" --skip=output/dev \
        --extract-hook="packaging/image_contents.sh \"\$1\" ${debs[*]@Q}" \
        --customize-hook='rm -rf "$1"/etc/apt "$1"/etc/hostname "$1"/etc/resolv.conf "$1"/etc/fstab' \
        "$VERSION_CODENAME" "$build/root.tar"

image=$build/ipmib:$name
umoci init --layout "$build/ipmib"
umoci new --image "$image"
umoci raw add-layer --image "$image" --history.created "$created" --history.created_by packaging/build_image.sh \
    "$build/root.tar"
umoci config --image "$image" --no-history --created "$created" --architecture "$(dpkg --print-architecture)" --os linux \
    --config.user _ipmib --config.cmd /usr/sbin/ipmibd --config.cmd=-f --config.cmd=-Lo \
    --config.env PATH=/usr/sbin:/usr/bin --config.workingdir / \
    --config.label org.opencontainers.image.title=ipmib --config.label "org.opencontainers.image.version=$version" \
    --config.label org.opencontainers.image.licenses=BSD-3-Clause
umoci gc --layout "$build/ipmib"
tar -c --sort=name --owner=0 --group=0 --numeric-owner --mode=go=rX,u+rw --mtime="@$SOURCE_DATE_EPOCH" \
    -C "$build/ipmib" -f "$build/ipmib.oci.tar" .

echo "$name" >"$build/name"
echo "$name: $(du -k --apparent-size "$build/root.tar" | cut -f 1) kB, packed $(du -k "$build/ipmib.oci.tar" | cut -f 1) kB"
rm "$build/root.tar"
sha256sum "$build/ipmib.oci.tar"

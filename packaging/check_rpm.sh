#!/bin/bash
# SPDX-License-Identifier: BSD-3-Clause
# Tries the packages of build-rpm/: rpmlint, the files beside those of the Debian packages, settings that an update keeps,
# and the programs, run from a folder that they are installed in.
set -euo pipefail
cd "$(dirname "$0")/.."
build=$PWD/build-rpm
work=$build/check
packages=("$build"/*.rpm)

. packaging/check/outcome.sh
command -v rpm >/dev/null && command -v rpmlint >/dev/null || fail "rpm and rpmlint are needed"
[ "${#packages[@]}" = 3 ] || fail "there are not three packages: ${packages[*]}"
rm -rf "$work"
mkdir -p "$work/root"

LC_ALL=C.UTF-8 rpmlint -c packaging/rpm/rpmlint.toml "${packages[@]}" || fail "rpmlint has something to say"

# Each file of the Debian packages has its counterpart, and none else is there, but for what each world has of its own:
# change logs and overrides of lintian.
rpm -qp --qf '[%{FILEMODES:perms} %{FILENAMES}\n]' "${packages[@]}" | grep -v '^d' | cut -d ' ' -f 2 | sort >"$work/rpm.list"
if [ "$(cat build-packages/commit 2>/dev/null)" = "$(packaging/commit.sh)" ]; then
    for deb in build-packages/*.deb; do
        dpkg-deb --fsys-tarfile "$deb" | tar -t | grep -v '/$' | sed 's/^\.//'
    done | grep -v -e '/changelog' -e '/lintian/' |
        sed -E "s#^/lib/systemd#/usr/lib/systemd#; s#^/usr/lib/$(gcc -print-multiarch)/#/usr/lib64/#
            s#/doc/ipmib-dev/#/doc/ipmib-devel/#; s#(/doc/.*)/copyright\$#\1/LICENSE#
            s#/zsh/vendor-completions/#/zsh/site-functions/#" | sort >"$work/deb.list"
    diff "$work/deb.list" "$work/rpm.list" || fail "in the Debian packages alone (<), or in these alone (>)"
    echo "$(wc -l <"$work/rpm.list") files, as in the Debian packages"
else
    echo "not compared with the Debian packages: there are none of this commit (make packages)"
fi

settings=$(rpm -qp --qf '[%{FILEFLAGS:fflags} %{FILENAMES}\n]' "${packages[@]}" | sed -n 's/^cn //p' | sort | paste -sd ' ')
[ "$settings" = "/etc/apparmor.d/ipmibd /etc/default/ipmibd /etc/snmp/ipmibd.conf" ] ||
    fail "an update keeps what has been changed of: $settings"
for step in prein postin preun postun; do
    rpm -qp --qf "%{$step}" "$build"/ipmib-[0-9]*.rpm | sh -n || fail "the script $step is no shell's"
done

if [ "$(id -u)" = 0 ]; then
    rpm --root "$work/root" --nodeps --noscripts --nosignature -i "${packages[@]}" 2>"$work/install.log" ||
        fail "not installed: $(cat "$work/install.log")"
    rpm --root "$work/root" -q ipmib libipmib ipmib-devel
else
    for package in "${packages[@]}"; do
        rpm2cpio "$package" | (cd "$work/root" && cpio -idm --quiet)
    done
fi
"$work/root/usr/sbin/ipmibd" --version
"$work/root/usr/bin/ipmibctl" --platform simulated:examples/home-router.json --at=60 neigh | head -n 3
"$work/root/usr/bin/ipmib-portcheck" --platform simulated:examples/home-router.json >"$work/portcheck.log" ||
    fail "the installed platform does not stand: $(tail -n 3 "$work/portcheck.log")"
"$work/root/usr/bin/ipmib-agentcheck" --version
echo "All is well."

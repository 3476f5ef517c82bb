#!/bin/bash
# SPDX-License-Identifier: BSD-3-Clause
# Builds the packages as RPM into build-rpm/, with the places of distributions that have it. They are for one whose net-snmp
# and C library are those of this machine or later: for another, build them there (cmake, ninja and rpm-build are enough).
set -euo pipefail
cd "$(dirname "$0")/.."
umask 022

build=build-rpm
flags="-O2 -g -fstack-protector-strong -fstack-clash-protection -Wformat -Werror=format-security -D_FORTIFY_SOURCE=2 -fPIE"
link_flags="-Wl,-z,relro -Wl,-z,now"
SOURCE_DATE_EPOCH=${SOURCE_DATE_EPOCH:-$(git log -1 --format=%ct 2>/dev/null || date +%s)}
export SOURCE_DATE_EPOCH
cmake -S . -B "$build" -G Ninja -DCMAKE_INSTALL_PREFIX=/usr -DCMAKE_INSTALL_LIBDIR=lib64 -DCMAKE_BUILD_TYPE=None \
    -DIPMIB_PACKAGE_FORMAT=RPM -DIPMIB_SYSTEM_UNIT_DIR=/usr/lib/systemd/system -DIPMIB_ZSH_COMPLETIONS=zsh/site-functions \
    -DIPMIB_BUILD_TESTS=OFF -DIPMIB_BUILD_BENCH=OFF -DIPMIB_INSTALL_SERVICE=ON \
    -DCMAKE_C_FLAGS="$flags" -DCMAKE_CXX_FLAGS="$flags" \
    -DCMAKE_EXE_LINKER_FLAGS="$link_flags -pie" -DCMAKE_MODULE_LINKER_FLAGS="$link_flags" "$@"
cmake --build "$build"
rm -f "$build"/*.rpm
(cd "$build" && cpack -G RPM)

packaging/check_rpm.sh
ls -l "$build"/*.rpm

#!/bin/sh
# SPDX-License-Identifier: BSD-3-Clause
# Builds the Debian packages into build-packages/, as Debian builds its own: its compiler flags, its places.
set -eu
umask 022

build=build-packages
rm -f "$build/commit"
flags() { dpkg-buildflags --get "$1"; }
export DEB_BUILD_MAINT_OPTIONS=hardening=+all

SOURCE_DATE_EPOCH=$(dpkg-parsechangelog -l packaging/debian/changelog -S Timestamp)
export SOURCE_DATE_EPOCH
cmake -S . -B "$build" -G Ninja -DCMAKE_INSTALL_PREFIX=/usr -DCMAKE_BUILD_TYPE=None \
    -DIPMIB_BUILD_TESTS=OFF -DIPMIB_BUILD_BENCH=OFF -DIPMIB_INSTALL_SERVICE=ON \
    -DCMAKE_C_FLAGS="$(flags CPPFLAGS) $(flags CFLAGS)" -DCMAKE_CXX_FLAGS="$(flags CPPFLAGS) $(flags CXXFLAGS)" \
    -DCMAKE_EXE_LINKER_FLAGS="$(flags LDFLAGS)" -DCMAKE_MODULE_LINKER_FLAGS="$(flags LDFLAGS)" \
    "$@"
cmake --build "$build"

rm -f "$build"/*.deb
(cd "$build" && cpack -G DEB)

# Every installed file is in a package.
rm -rf "$build/installed"
DESTDIR=$build/installed cmake --install "$build" >"$build/install.log"
(cd "$build/installed" && find . ! -type d) | sort >"$build/installed.list"
for package in "$build"/*.deb; do
    dpkg-deb --fsys-tarfile "$package" | tar -t | grep -v '/$' | sed -E 's/(\/man[0-9]\/.*|changelog.*)\.gz$/\1/'
done | sort >"$build/packaged.list"
if ! diff "$build/installed.list" "$build/packaged.list"; then
    echo "not in a package (<), or not installed (>)" >&2
    exit 1
fi

tests/packaging/service_unit_test.sh "$build/installed/lib/systemd/system/ipmibd.service"
lintian --fail-on error,warning --tag-display-limit 0 "$build"/*.deb
packaging/commit.sh >"$build/commit"
ls -l "$build"/*.deb

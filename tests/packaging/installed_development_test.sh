#!/bin/sh
# SPDX-License-Identifier: BSD-3-Clause
# A project of somebody else builds a platform against the installed tree, once with CMake and once with pkg-config, and
# the installed programs take it. Usage: installed_development_test.sh BUILD EXAMPLE
set -eu
build=$1
example=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

command -v pkg-config >/dev/null || {
    echo "skipped: pkg-config is not installed"
    exit 77
}
# Without the project's own settings: it is a project of its own.
unset CFLAGS CXXFLAGS LDFLAGS MAKEFLAGS

for component in daemon library development; do
    cmake --install "$build" --prefix "$work/usr" --component "$component" >"$work/log"
done
for part in ipmib libipmib ipmib-dev; do
    cmp "$work/usr/share/doc/$part/LICENSE" "$(dirname "$0")/../../LICENSE"
done
libraries=$(dirname "$(find "$work/usr" -name pkgconfig)")

cp -r "$example" "$work/with-cmake"
cmake -S "$work/with-cmake" -B "$work/with-cmake/build" -DCMAKE_PREFIX_PATH="$work/usr" >"$work/log"
cmake --build "$work/with-cmake/build" >"$work/log"
cmake --install "$work/with-cmake/build" >"$work/log"
ls "$libraries/ipmib/platform_one_interface.so"
if cmake -S "$work/with-cmake" -B "$work/other" -DCMAKE_PREFIX_PATH="$work/usr" -DWANTED=99 >"$work/log" 2>&1; then
    echo "version 99 was found"
    exit 1
fi

# An installation below another folder than the one that it was configured for says so to pkg-config.
cp -r "$example" "$work/with-make"
export PKG_CONFIG_PATH="$libraries/pkgconfig" PKG_CONFIG_SYSROOT_DIR=
prefix=$(pkg-config --variable=prefix ipmib)
make -s -C "$work/with-make" PKG_CONFIG="pkg-config --define-variable=prefix=$work/usr" \
    platform_one_interface.so platform_tables.so
moduledir=$(pkg-config --define-variable=prefix="$work/usr" --variable=moduledir ipmib)
ls "$moduledir/libipmib.so"
echo "configured for $prefix"

for platform in one_interface "$work/with-make/platform_one_interface.so" "$work/with-cmake/build/platform_tables.so"; do
    "$work/usr/bin/ipmib-portcheck" --platform "$platform" >"$work/report" || {
        cat "$work/report"
        exit 1
    }
    "$work/usr/bin/ipmibctl" --platform "$platform" show addresses | grep -E '2001:db8:(1:)?:1/64'
done

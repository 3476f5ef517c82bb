#!/bin/sh
# SPDX-License-Identifier: BSD-3-Clause
# Builds what is installed twice with Debian's reprotest and fails when the two differ in one octet: in another folder,
# another environment, home, language, time zone, search path and with another umask. Prints the hash of each file.
#
#   evidence/reproducible.sh [KIND...]     a build type of CMake, or "packages" for the Debian packages
set -eu
export LC_ALL=C
cd "$(dirname "$0")/.."
[ $# -gt 0 ] || set -- Release RelWithDebInfo MinSizeRel Debug packages
command -v reprotest >/dev/null || {
    echo "reprotest is not installed" >&2
    exit 1
}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# The sources alone, with changes that are not yet committed.
mkdir "$work/sources"
git ls-files -z | xargs -0 sh -c 'for file; do [ ! -e "$file" ] || printf "%s\0" "$file"; done' sh |
    tar -c --null -T - | tar -x -C "$work/sources"

# reproduce COMMAND ARTIFACTS
# Not varied: the kernel's name, the clock and the order of names in folders, for which reprotest needs more tools and rights.
reproduce() {
    reprotest --verbosity 0 --no-diffoscope --min-cpus "$(nproc)" \
        --variations=environment,build_path,home,locales,exec_path,timezone,umask \
        -s "$work/sources" "$1" "$2" >"$work/log" 2>&1 || {
        cat "$work/log" >&2
        return 1
    }
    sed -nE 's|^([0-9a-f]{64})  (\./)?|    \1  |p' "$work/log" | sort -k 2
}

for kind in "$@"; do
    echo "$kind: two builds, the same files:"
    case $kind in
    packages)
        reproduce 'packaging/build_packages.sh >build.log 2>&1 || { cat build.log; exit 1; }' 'build-packages/*.deb'
        ;;
    *)
        reproduce "{ cmake -S . -B build -G Ninja -DCMAKE_BUILD_TYPE=$kind -DIPMIB_BUILD_TESTS=OFF -DIPMIB_BUILD_BENCH=OFF &&
            cmake --build build && DESTDIR=\$PWD/installed cmake --install build --prefix /usr; } >build.log 2>&1 ||
            { cat build.log; exit 1; }" installed
        ;;
    esac
done

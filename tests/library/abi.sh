#!/bin/sh
# SPDX-License-Identifier: BSD-3-Clause
# Compares the binary interface of the plug-in, and that of the contract around it, with the stored one: names, arguments,
# records, their sizes and offsets. What differs has to be meant, and a version in include/ipmib/version.h grows with it.
# Ends with 77 when it cannot be compared here. Usage: abi.sh [--update]
set -eu
export LC_ALL=C
cd "$(dirname "$0")/../.."
stored=tests/library/abi
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

skip() {
    echo "skipped: $*"
    exit 77
}
command -v abidw >/dev/null && command -v abidiff >/dev/null || skip "abidw and abidiff are not installed (abigail-tools)"
machine=$(uname -m)
[ -e "$stored/libipmib.$machine.abi" ] || [ "${1:-}" = --update ] ||
    skip "no interface is stored for $machine"

# With a description of its types, which the optimised one has not. Optimisation changes nothing of an interface.
flags="-g -O0 -fPIC -fvisibility=hidden -Iinclude -Imodule"
sources=$(sed -n '/^set(IPMIB_MODULE_SOURCES/,/)/s/^ *\([a-z_0-9/]*\.cpp\).*/\1/p' module/CMakeLists.txt)
for source in $sources; do
    echo "$source"
done | xargs -P 2 -I{} sh -c "c++ -std=c++17 $flags -fno-exceptions -fno-rtti -fno-threadsafe-statics \
    -c -o $work/\$(echo {} | tr / _).o module/{}"
c++ -shared -nostartfiles -o "$work/libipmib.so" "$work"/*.o
# What a platform and an agent provide, as one library that has a definition of everything.
cc $flags -fvisibility=default -shared -o "$work/contract.so" tests/library/whole_contract.c

mkdir -p "$stored"
grep -hE '^#define IPMIB_(RECORDS|PLATFORM|MESSAGE|MODULE)_VERSION ' include/ipmib/*.h
status=0
for library in libipmib contract; do
    abidw --no-corpus-path --no-comp-dir-path --no-show-locs --no-elf-needed --out-file "$work/$library.abi" "$work/$library.so"
    if [ "${1:-}" = --update ]; then
        cp "$work/$library.abi" "$stored/$library.$machine.abi"
    elif ! abidiff --harmless --no-show-locs "$stored/$library.$machine.abi" "$work/$library.abi"; then
        echo "$library: its interface is not the stored one. If that is meant: the version of the part grows, as"
        echo "include/ipmib/version.h says, and tests/library/abi.sh --update stores it."
        status=1
    else
        echo "$library: $(grep -c "<elf-symbol .*type='func-type'" "$work/$library.abi") functions and" \
            "$(grep -c "<elf-symbol .*type='object-type'" "$work/$library.abi") records, as in" \
            "$stored/$library.$machine.abi, sha256 $(sha256sum <"$stored/$library.$machine.abi" | cut -d' ' -f1)"
    fi
done
exit "$status"

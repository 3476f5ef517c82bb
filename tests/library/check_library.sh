#!/bin/sh
# SPDX-License-Identifier: BSD-3-Clause
# Checks what the built module shows to a loader: its exports, its imports, what it needs, and that nothing of it that
# the loader writes stays writable. Usage: check_library.sh LIBRARY
set -eu
export LC_ALL=C
library=$1
here=$(dirname "$0")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
bad=0

complain() {
    echo "$library: $*"
    bad=1
}

# same FILE FILE WHAT: the two lists are equal, or their difference is shown.
same() {
    if ! diff "$1" "$2" >"$work/difference"; then
        complain "$3"
        head -n 20 "$work/difference"
    fi
}

# Columns of a symbol: number, value, size, type, binding, visibility, section, name.
readelf --dyn-syms -W "$library" | awk '$1 ~ /^[0-9]+:$/ && $8 != ""' >"$work/symbols"

# Some linkers leave nameless section symbols.
awk '$7 != "UND" && $4 != "SECTION" {print $4, $8}' "$work/symbols" | sort >"$work/exports"
same "$here/exports.txt" "$work/exports" "exports other names (< expected, > exported)"

# The memory functions of the C library may be called or not.
awk '$7 == "UND" {sub(/@.*/, "", $8); print $8}' "$work/symbols" |
    grep -vxE 'mem(set|cpy|cmp|move)' | sort >"$work/imports"
same "$here/imports.txt" "$work/imports" "imports other names (< expected, > imported)"

readelf -dW "$library" >"$work/dynamic"
if grep NEEDED "$work/dynamic" | grep -v '\[libc\.so\.6\]'; then
    complain "needs more than the C library"
fi
grep -qE 'BIND_NOW|Flags:.*NOW' "$work/dynamic" || complain "is not bound at load time"
! grep -q TEXTREL "$work/dynamic" || complain "has relocations in its code"

readelf -lW "$library" >"$work/segments"
grep -q 'GNU_STACK.* RW ' "$work/segments" || complain "asks for an executable stack"

# Every word that the loader relocates lies in the part that becomes read-only. awk knows no hexadecimal: the addresses
# are compared as text of equal width.
relro=$(awk '$1 == "GNU_RELRO" {print $3, $6}' "$work/segments")
if [ -z "$relro" ]; then
    complain "has no part that becomes read-only after relocation"
else
    set -- $relro
    first=$(printf '%016x' "$1")
    last=$(printf '%016x' "$(($1 + $2 - 1))")
    readelf -rW "$library" |
        awk -v first="$first" -v last="$last" '
            $3 ~ /^R_/ {
                place = sprintf("%16s", $1)
                gsub(" ", "0", place)
                if (place < first || place > last) print
            }' >"$work/writable"
    if [ -s "$work/writable" ]; then
        complain "has relocated words that stay writable"
        cat "$work/writable"
    fi
fi

# One hook at load and one at unload, and no start code of a language's runtime besides.
readelf -SW "$library" | sed 's/^ *\[ *[0-9]*\] *//' >"$work/sections"
word=$(readelf -hW "$library" | awk '/Class:/ {print $2 == "ELF32" ? 4 : 8}')
for array in .init_array .fini_array; do
    size=$(awk -v name="$array" '$1 == name {print $5}' "$work/sections")
    [ "$((0x${size:-0}))" = "$word" ] || complain "$array does not hold exactly one hook"
done
if grep -E '^\.(init|fini|ctors|dtors|preinit_array|tdata|tbss|gcc_except_table) ' "$work/sections"; then
    complain "carries start code of a language runtime"
fi

exit "$bad"

#!/bin/sh
# SPDX-License-Identifier: BSD-3-Clause
# Checks that the compiled tree is constant data alone: its 279 records and nothing that runs, is written or is needed
# from elsewhere. Usage: object_test.sh NM READELF TREE_OBJECT
set -eu
nm=$1 readelf=$2 object=$3

fail() {
    echo "$1" >&2
    exit 1
}

# Bytes in the sections of the object whose names match.
bytes() {
    "$readelf" -SW "$object" | sed 's/^ *\[ *[0-9]*\] *//' |
        awk -v name="$1" '$1 ~ name { print $5 }' | while read -r hex; do printf '%d\n' "0x$hex"; done |
        awk '{ sum += $1 } END { print sum + 0 }'
}

records=$("$nm" "$object" | awk '$2 == "D" && $3 ~ /^ip_tree_node_/' | wc -l)
[ "$records" -eq 279 ] || fail "the object defines $records records, not 279"
others=$("$nm" -g "$object" | awk '$NF !~ /^ip_tree_node_/ { print $NF }')
[ -z "$others" ] || fail "the object defines or needs other names: $others"
for section in '^\.text' '^\.data$' '^\.bss' '^\.(init|fini|ctors|dtors)'; do
    [ "$(bytes "$section")" -eq 0 ] || fail "the object has code or writable data in sections $section"
done
[ "$(bytes '^\.data\.rel\.ro')" -gt 0 ] || fail "the object has no relocated constant data"

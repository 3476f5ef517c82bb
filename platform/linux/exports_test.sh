#!/bin/sh
# SPDX-License-Identifier: BSD-3-Clause
# Checks that the built platform library exports the services that the contract declares and lists, the host's hooks, and
# nothing else. Usage: exports_test.sh LIBRARY PLATFORM_HEADER
set -eu
export LC_ALL=C
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# Declarations stand at the start of a line: a result type, a name, its arguments.
{
    sed -nE 's/^u?int(32|ptr)_t ([A-Z0-9a-z_]+)\(.*/\2/p' "$2"
    echo ipmib_platform_hooks
} | sort >"$work/expected"
[ "$(wc -l <"$work/expected")" -eq 35 ] || { echo "$2: declares other than 34 services"; exit 1; }

sed -nE 's/^IPMIB_SERVICE\((\w+),.*/\1/p' "$(dirname "$2")/services.def" >"$work/listed"
sed -nE 's/^u?int(32|ptr)_t ([A-Z0-9a-z_]+)\(.*/\2/p' "$2" | diff - "$work/listed" || {
    echo "services.def lists other services (<) than $2 declares, or in another order"
    exit 1
}

readelf --dyn-syms -W "$1" | awk '$1 ~ /^[0-9]+:$/ && $8 != "" && $7 != "UND" { sub(/@.*/, "", $8); print $8 }' |
    sort >"$work/exported"
diff "$work/expected" "$work/exported" || { echo "$1: exports other names (< expected, > exported)"; exit 1; }

#!/bin/sh
# SPDX-License-Identifier: BSD-3-Clause
# Holds the porting guide and the contract together: every function that the module imports is declared in a header and
# has an entry of its own in the guide, in which something stands, and the guide has no other entries.
# Usage: porting_guide.sh PROJECT
set -eu
export LC_ALL=C
cd "$1"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
guide=docs/porting.md
bad=0

sed -n 's/^\(uint32_t\|uintptr_t\|MorPara\) \**\([A-Za-z0-9_]*\)(.*/\2/p' \
    include/ipmib/platform.h include/ipmib/message.h include/ipmib/mib_tree.h | sort >"$work/declared"
sed -n 's/^#### `\(.*\)`$/\1/p' "$guide" | sort >"$work/told"
sort tests/library/imports.txt >"$work/imported"

for list in declared told; do
    if ! diff "$work/imported" "$work/$list"; then
        echo "these differ (< imported by the module, > $list)"
        bad=1
    fi
done

# Entries in which nothing stands.
awk '/^#/ { if (name != "" && lines == 0) { print "nothing is said of " name; bad = 1 } name = ""; lines = 0 }
     /^#### / { name = $2 }
     !/^#/ && NF { lines++ }
     END { exit bad }' "$guide" || bad=1
exit "$bad"

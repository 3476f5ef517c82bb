#!/bin/sh
# SPDX-License-Identifier: BSD-3-Clause
# The manual pages are good mdoc, and refer to pages that exist. Usage: manual_pages_test.sh FOLDER
set -eu
cd "$1"

command -v mandoc >/dev/null || {
    echo "skipped: mandoc is not installed"
    exit 77
}

bad=0
# Whether pages of others are installed is not the pages' doing. That of ipmibctl begins with examples.
if mandoc -Tlint ./*.[158] 2>&1 | grep -v -e 'referenced manual not found' -e 'outdated mandoc.db' \
    -e 'ipmibctl.1:.*sections out of conventional order: Sh DESCRIPTION'; then
    bad=1
fi

for page in $(sed -n 's/^\.Xr \([^ ]*\) \([0-9]\).*/\1.\2/p' ./*.[158] | grep '^ipmib' | sort -u); do
    if [ ! -e "$page" ]; then
        echo "a page refers to $page, which does not exist"
        bad=1
    fi
done
exit "$bad"

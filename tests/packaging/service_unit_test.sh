#!/bin/sh
# SPDX-License-Identifier: BSD-3-Clause
# The unit says nothing that systemd does not know, and is confined: an exposure below 2.5 of 10.
# Usage: service_unit_test.sh UNIT
set -eu
unit=$1

command -v systemd-analyze >/dev/null || {
    echo "skipped: systemd-analyze is not installed"
    exit 77
}

# The program and the pages need not be installed where the test runs.
if systemd-analyze verify "$unit" 2>&1 | grep "$unit:"; then
    exit 1
fi
# The threshold is in tenths, and includes itself.
systemd-analyze security --offline=true --no-pager --threshold=24 "$unit" | grep 'Overall exposure'
systemd-analyze security --offline=true --no-pager --threshold=24 "$unit" >/dev/null

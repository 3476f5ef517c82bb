#!/bin/sh
# SPDX-License-Identifier: BSD-3-Clause
# What the SNMP library itself takes for walks, and what our own share on top of it is: ipmibd beside the same agent with
# a table that costs nothing. As root; further arguments are those of compare.py.
#
#   bench/floor.sh [--build DIR] [--rounds NUMBER] [--sizes NEIGHBOURS,ADDRESSES,INTERFACES]...
set -eu
exec "$(dirname "$0")/compare.py" --agents ipmibd,floor --tables ipNetToPhysicalTable --walks-only "$@"

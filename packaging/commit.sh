#!/bin/sh
# SPDX-License-Identifier: BSD-3-Clause
# Prints which commit the sources are. Those that are not exactly one's own have no name that means the same twice.
commit=$(git describe --always --abbrev=40 --exclude='*' --dirty 2>/dev/null || echo unknown)
case $commit in
*-dirty | unknown) echo "$commit-$$" ;;
*) echo "$commit" ;;
esac

#!/bin/sh
# SPDX-License-Identifier: BSD-3-Clause
# Prints the processor time and the time on the clock that `make test` takes from a fresh clone, without ccache; and of what
# it builds and runs the sums and the dearest.
#
#   bench/test_time.sh [COMMIT [TARGET]]
set -eu
cd "$(dirname "$0")/.."
commit=$(git rev-parse --short "${1:-HEAD}")
target=${2:-test}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
git clone --quiet . "$work/ipmib"
git -C "$work/ipmib" checkout --quiet "$commit"
unset CMAKE_C_COMPILER_LAUNCHER CMAKE_CXX_COMPILER_LAUNCHER
export CCACHE_DISABLE=1

start=$(date +%s)
make -C "$work/ipmib" --no-print-directory "$target" >"$work/log" 2>&1 || {
    tail -n 50 "$work/log"
    exit 1
}
end=$(date +%s)
times >"$work/times" # of this shell, and in the second line of what it started: 1m2.34s 0m5.67s
tail -n 1 "$work/times" | tr ms '  ' | awk -v what="make $target at $commit on $(nproc) processors" -v clock=$((end - start)) \
    '{ printf "%s: %.1f CPU minutes, %.1f minutes on the clock\n", what, $1 + $3 + ($2 + $4) / 60, clock / 60 }'

# Seconds and names of what a build has made, and of the tests that have run.
of_steps() { awk -F '\t' 'NR > 1 { took[$4] = ($2 - $1) / 1000 } END { for (name in took) print took[name], name }' "$1"; }
of_tests() { awk '/^---/ { exit } { print $3, $1 }' "$1"; }
dearest() {
    sort -rn | awk -v what="$1" -v most=8 \
        '{ sum += $1 } NR <= most { line[NR] = sprintf("%8.1f s  %s", $1, $2) } END { printf "  %s: %d in %.0f s\n", what, NR, sum
           for (i = 1; i <= most && i <= NR; ++i) print line[i] }'
}
for build in "$work"/ipmib/build*; do
    [ ! -e "$build/.ninja_log" ] || of_steps "$build/.ninja_log" | dearest "made in ${build##*/}"
    [ ! -e "$build/Testing/Temporary/CTestCostData.txt" ] ||
        of_tests "$build/Testing/Temporary/CTestCostData.txt" | dearest "tests of ${build##*/}"
done

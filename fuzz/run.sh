#!/bin/sh
# SPDX-License-Identifier: BSD-3-Clause
# Runs each fuzz target for some seconds and prints what it did: run.sh BUILD SECONDS [TARGET...]. Fails on a finding.
set -eu

build=$1
seconds=$2
shift 2
here=$(dirname "$0")
[ $# -gt 0 ] || set -- $(cd "$here/seeds" && ls)

work=$build/fuzzing
findings=0
printf '%-12s %12s %10s %18s  %s\n' target executions seconds 'edges reached' result
for target in "$@"; do
    corpus=$work/corpus/$target
    found=$work/found/$target
    log=$work/$target.log
    rm -rf "$found"
    mkdir -p "$corpus" "$found"
    result=ok
    "$build/fuzz/fuzz_$target" -max_total_time="$seconds" -timeout=10 -rss_limit_mb=1024 -max_len=8192 \
        -print_final_stats=1 -artifact_prefix="$found/" "$corpus" "$here/seeds/$target" >"$log" 2>&1 || result=FINDING
    executions=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log")
    took=$(sed -n 's/^Done .* in \([0-9]*\) second.*/\1/p' "$log")
    edges=$(sed -n 's/^INFO: Loaded .* (\([0-9]*\) inline.*/\1/p' "$log")
    reached=$(sed -n 's/^#.* cov: \([0-9]*\) .*/\1/p' "$log" | tail -n 1)
    printf '%-12s %12s %10s %18s  %s\n' "$target" "${executions:--}" "${took:--}" "${reached:--} of ${edges:--}" "$result"
    if [ "$result" != ok ]; then
        findings=$((findings + 1))
        grep -m 3 -e 'ERROR:' -e 'SUMMARY:' -e 'broken promise:' -e 'runtime error:' "$log" | sed 's/^/    /' || true
        echo "    log: $log; once it is mended, the inputs of $found belong into fuzz/found/$target/"
    fi
done
[ "$findings" = 0 ]

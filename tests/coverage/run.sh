#!/bin/sh
# SPDX-License-Identifier: BSD-3-Clause
# Prints which lines and branches of the module its tests run, file by file, and fails when one is left out.
set -eu
export LC_ALL=C
cd "$(dirname "$0")/../.."
source_dir=$PWD
build=$source_dir/build-coverage
objects=$build/module/CMakeFiles/ipmib_module_objects.dir
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

export CCACHE_DISABLE=1 # it may have recorded paths that are relative to another folder
cmake --preset coverage >&2
cmake --build --preset coverage >&2
find "$objects" -name '*.gcda' -delete
"$build/module/module_test" --gtest_brief=1 >&2

cd "$work"
find "$objects" -name '*.gcda' -exec gcov --branch-probabilities --branch-counts --preserve-paths {} + >/dev/null

# A line of a header stands in every object that includes it, and runs in one of them.
awk -v prefix="$source_dir/module/" '
    function sort(    i, j, swap) {
        for (i = 2; i <= count; i++) {
            for (j = i; j > 1 && files[j] < files[j - 1]; j--) {
                swap = files[j]; files[j] = files[j - 1]; files[j - 1] = swap
            }
        }
    }
    function row(name, run, lines, taken, branches) {
        printf "%-36s %8d of %5d %8d of %5d\n", name, run, lines, taken, branches
    }

    FNR == 1 { wanted = 0 }
    /^ *-: *0:Source:/ {
        file = substr($0, index($0, "Source:") + 7)
        wanted = index(file, prefix) == 1
        file = "module/" substr(file, length(prefix) + 1)
        if (wanted && !(file in known)) { known[file] = 1; files[++count] = file }
    }
    !wanted { next }
    /^ *[0-9#=]+\*?: *[0-9]+:/ {
        split($0, field, ":")
        number = field[2] + 0
        place = file ":" number
        if (!(place in seen)) { seen[place] = substr($0, index($0, field[2]) + length(field[2]) + 1); lines[file]++ }
        if (field[1] + 0 > 0 && !(place in ran)) { ran[place] = 1; linesRun[file]++ }
    }
    /^branch +[0-9]+ / {
        branch = place " branch " $2
        if (!(branch in branchSeen)) { branchSeen[branch] = place; branches[file]++ }
        if ($3 == "taken" && $4 + 0 > 0 && !(branch in branchRan)) { branchRan[branch] = 1; branchesTaken[file]++ }
    }

    END {
        if (!count) { print "no source of the module was counted"; exit 1 }
        sort()
        printf "\n%-36s %17s %17s\n", "", "lines run", "branches taken"
        for (i = 1; i <= count; i++) {
            file = files[i]
            row(file, linesRun[file], lines[file], branchesTaken[file], branches[file])
            all[1] += linesRun[file]; all[2] += lines[file]; all[3] += branchesTaken[file]; all[4] += branches[file]
        }
        row("all", all[1], all[2], all[3], all[4])
        for (place in seen) if (!(place in ran)) { print "never run: " place ": " seen[place]; left = 1 }
        for (branch in branchSeen) {
            if (branch in branchRan || !(branchSeen[branch] in ran)) continue
            print "never taken: " branch ": " seen[branchSeen[branch]]
            left = 1
        }
        exit left
    }' ./*.gcov

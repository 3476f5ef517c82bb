#!/bin/sh
# SPDX-License-Identifier: BSD-3-Clause
# Every file has a copyright and a licence, as REUSE wants them, and every source says its licence itself.
set -eu
cd "$(dirname "$0")/.."

git rev-parse --git-dir >/dev/null 2>&1 || {
    echo "skipped: without git nobody says which files are the project's"
    exit 77
}
silent=$(git ls-files -z '*.c' '*.cpp' '*.h' '*.def' '*.py' '*.sh' '*.awk' '*.cmake' '*CMakeLists.txt' '*Makefile' |
    xargs -0 grep -L 'SPDX-License-[I]dentifier: BSD-3-Clause' || true)
[ -z "$silent" ] || {
    echo "without a licence of its own: $silent"
    exit 1
}

command -v reuse >/dev/null || {
    echo "skipped: reuse is not installed"
    exit 77
}
reuse lint

# SPDX-License-Identifier: BSD-3-Clause
# For the scripts of this folder: instructions by callgrind, which repeat whatever else the machine does.

# need_built PROGRAM: ends the script with one line when the program is not there.
need_built() {
    [ -x "$1" ] && return
    echo "${0##*/}: $1 is not built (cmake --build ${1%/bench/*} --target ${1##*/})" >&2
    exit 1
}

# instructions FUNCTION COUNT COMMAND...: how many the command spends below the functions of that name, for each of COUNT.
instructions() {
    function=$1 count=$2
    shift 2
    valgrind --tool=callgrind --callgrind-out-file=/dev/null --toggle-collect="*$function*" "$@" 2>&1 |
        awk -v n="$count" '/Collected :/ { printf "%d\n", $4 / n + 0.5; found = 1 } END { exit !found }'
}

# counted FILE COMMAND...: writes a line "name instructions" for each part of the command's run that it dumps by name.
counted() {
    counts=$1
    shift
    dumps=$(mktemp -d)
    valgrind --tool=callgrind --instr-atstart=no --callgrind-out-file="$dumps/out" "$@" >"$dumps/log" 2>&1 || {
        cat "$dumps/log" >&2
        rm -r "$dumps"
        return 1
    }
    sed -n 's/^desc: Trigger: Client Request: //p; s/^totals: //p' "$dumps"/out.* | paste - - >"$counts"
    rm -r "$dumps"
}

#!/bin/sh
# SPDX-License-Identifier: BSD-3-Clause
# Prints what the module costs a device, as Markdown: bytes, symbols, relocations, stack and instructions, for each
# target (a preset of CMakePresets.json), all built with -Os. Fails when powerpc misses a goal.
#
#   bench/footprint.sh [TARGET...]
set -eu
export LC_ALL=C
cd "$(dirname "$0")/.."
[ $# -gt 0 ] || set -- powerpc armhf aarch64 x86-64
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cc -shared -fPIC -O2 -o "$work/count_instructions.so" bench/footprint/count_instructions.c

emulator() {
    case $1 in
    powerpc) echo qemu-ppc ;;
    armhf) echo qemu-arm ;;
    aarch64) echo qemu-aarch64 ;;
    x86-64) echo qemu-x86_64 ;;
    esac
}

# sections LIBRARY: name, size in hexadecimal, flags.
sections() {
    readelf -SW "$1" | sed -n 's/^ *\[ *[0-9]*\] *//p' | awk '$1 != "NULL" { print $1, $5, $7 }'
}

# sizes LIBRARY
sizes() {
    code=0 constant=0 relocated=0 variable=0 loading=0
    while read -r name size flags; do
        size=$((0x$size))
        case $name:$flags in
        *:*X*) code=$((code + size)) ;;
        .data:* | .bss:* | .sdata:* | .sbss:*) variable=$((variable + size)) ;;
        *:*W*) relocated=$((relocated + size)) ;;
        .rodata*:*A* | .eh_frame*:*A* | .ARM.ex*:*A*) constant=$((constant + size)) ;;
        *:*A*) loading=$((loading + size)) ;;
        esac
    done <<END
$(sections "$1")
END
    echo "bytes of code|$code"
    echo "bytes of constant data|$constant"
    echo "bytes of constant data that the loader relocates|$relocated"
    echo "bytes of variables|$variable"
    echo "bytes of symbols and relocations for the loader|$loading"
}

# symbols LIBRARY
symbols() {
    readelf --dyn-syms -W "$1" | awk '$1 ~ /^[0-9]+:$/ && $8 != "" && $4 != "SECTION"' >"$work/symbols"
    echo "functions exported|$(awk '$7 != "UND" && $4 == "FUNC"' "$work/symbols" | wc -l)"
    echo "records exported|$(awk '$7 != "UND" && $4 != "FUNC"' "$work/symbols" | wc -l)"
    awk '$7 == "UND" { sub(/@.*/, "", $8); print $8 }' "$work/symbols" >"$work/imports"
    echo "services imported|$(grep -cvE '^(mem(cpy|set|move|cmp)|__aeabi_.*)$' "$work/imports")"
    echo "functions imported from the C library and the compiler|$(grep -E '^(mem(cpy|set|move|cmp)|__aeabi_.*)$' "$work/imports" | sort | paste -sd ' ')"
    echo "functions of the heap imported|$(grep -cE '^(malloc|calloc|realloc|free|aligned_alloc|posix_memalign|_Zn|_Zd)' "$work/imports")"
    echo "relocations|$(readelf -rW "$1" | awk '$3 ~ /^R_/' | wc -l)"
}

# measure TARGET: label|value lines.
measure() {
    build=build-$1
    program=$build/bench/footprint/footprint_requests
    sizes "$build/lib/ipmib/libipmib.so"
    symbols "$build/lib/ipmib/libipmib.so"
    awk -v root=IP_ConfigCallBack -f bench/footprint/deepest_stack.awk \
        "$build"/module/CMakeFiles/ipmib_module_objects.dir/*/*.ci >"$work/$1.calls"
    echo "bytes of stack at most, by the call graph|$(head -n 1 "$work/$1.calls")"
    "$(emulator "$1")" "$program" stack >"$work/stack"
    echo "bytes of stack at most, measured|$(awk '$2 > most { most = $2 } END { print most }' "$work/stack")"
    awk '{ print "stack: " $1 "|" $2 }' "$work/stack"
    "$(emulator "$1")" -plugin "$work/count_instructions.so" "$program" kinds >"$work/kinds" 2>"$work/counts"
    paste -d'|' "$work/kinds" "$work/counts" | sed 's/^/instructions: /'
}

for target in "$@"; do
    { cmake --preset "$target" && cmake --build --preset "$target" --target ipmib footprint_requests; } >"$work/log" 2>&1 ||
        { cat "$work/log" >&2; exit 1; }
    measure "$target" >"$work/$target"
done

printf '| |'
printf ' %s |' "$@"
printf '\n|---|'
printf '%.0s---:|' "$@"
echo
for target in "$@"; do echo "$work/$target"; done | awk -F'|' '
    { files[NR] = $0 }
    END {
        for (i = 1; i <= NR; i++) {
            while ((getline < files[i]) > 0) {
                if (i == 1) labels[++rows] = $1
                value[$1, i] = $2
            }
        }
        for (row = 1; row <= rows; row++) {
            line = "| " labels[row] " |"
            for (i = 1; i <= NR; i++) line = line " " value[labels[row], i] " |"
            print line
        }
    }'

# value TARGET LABEL
value() {
    sed -n "s/^$2|//p" "$work/$1"
}

# goal WHAT MOST IS: one line of the goals.
missed=0
goal() {
    verdict=kept
    [ "$3" -le "$2" ] || { verdict=MISSED missed=1; }
    echo "| $1 | $2 | $3 | $verdict |"
}

if [ -e "$work/powerpc" ]; then
    printf '\n| goal for powerpc | at most | is | |\n|---|---:|---:|---|\n'
    goal 'bytes of code' 20480 "$(value powerpc 'bytes of code')"
    goal 'bytes of stack, by the call graph' 4096 "$(value powerpc 'bytes of stack at most, by the call graph')"
    goal 'bytes of stack, measured' 4096 "$(value powerpc 'bytes of stack at most, measured')"
    goal 'functions of the heap imported' 0 "$(value powerpc 'functions of the heap imported')"
fi

printf '\nThe calls of the deepest stack on %s, as a bound (a call through a pointer counts as one to everything it might
reach), with the bytes of each:\n\n' "$1"
sed 1d "$work/$1.calls" | sed 's/^/    /'
exit "$missed"

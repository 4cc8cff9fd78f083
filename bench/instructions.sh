#!/usr/bin/env bash
# instructions.sh TAVRELIN EMPTY: instructions that the processor executes for `tavrelin --version`
# and for a C++ program that does nothing. Shown, not judged; needs valgrind.
set -euo pipefail
export LC_ALL=C
readonly tavrelin=$1 empty=$2

# instructions PROGRAM [ARGUMENT]: how many; nothing when the program cannot run under valgrind.
instructions() {
    valgrind --tool=cachegrind --cache-sim=no --cachegrind-out-file=/dev/null "$@" 2>&1 >/dev/null |
        awk '/I +refs:/ { gsub(/,/, "", $NF); print $NF }'
}

if ! command -v valgrind >/dev/null; then
    printf '\ninstructions: not counted, valgrind is missing\n'
    exit 0
fi
printf '\n%-36s%14s\n' 'instructions of' ''
printf '%-36s%14s\n' 'an empty C++ program' "$(instructions "$empty")" \
    'tavrelin --version' "$(instructions "$tavrelin" --version)"

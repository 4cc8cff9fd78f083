#!/usr/bin/env bash
# speed.sh SIMULATE TAVRELIN: how long the instrument's whole life takes, 200000 steps, told from a tenth of
# it: with free calls, with calls that cost, and two at once; and where the processor's work goes. The times
# of a shared machine waver: they are told beside what they should be. Judged is what is counted: calls,
# threads, and instructions where valgrind is there.
set -euo pipefail
export LC_ALL=C
readonly simulate=$1 tavrelin=$2
readonly measurements=1176 counted=10

folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
status=0
fail() {
    echo "bench: $*" >&2
    status=1
}

# tenth IO-COST: seconds of processor time, and how many of them in the kernel.
tenth() {
    local TIMEFORMAT='%U %S'
    { time "$simulate" --io-cost "$1" --measurements $measurements --summary "$folder/summary" \
        -- "$tavrelin" >/dev/null 2>&3; } 2>&1 | awk '{ print $1 + $2, $2 }'
}
exec 3>&2

# life IO-COST SECONDS: the best of three.
life() {
    local best kernel
    read -r best kernel < <(for _ in 1 2 3; do tenth "$1"; done | sort -n |
        awk 'NR == 1 { printf "%.1f %.0f\n", 10 * $1, 100 * $2 / $1 }')
    printf '%-28s%8.1f s of processor time, %d %% in the kernel (should be %d s)\n' "whole life, --io-cost $1" \
        "$best" "$kernel" "$2"
}
echo
life none 15
life board 20

# each CALL MOST: how often a measurement makes a call.
each() {
    local count
    count=$(awk -v call="$1" -v of=$measurements '$1 == call { printf "%.0f", $3 / of }' "$folder/summary")
    printf '%-28s%8d a measurement (at most %d)\n' "$1" "$count" "$2"
    [ "$count" -le "$2" ] || fail "$1 comes $count times a measurement"
}
each access 300
each pthread_create 55

wall() {
    local TIMEFORMAT=%R
    { time "$@"; } 2>&1
}
two() {
    tenth none >/dev/null &
    tenth none >/dev/null
    wait
}
if [ "$(nproc)" -ge 2 ]; then
    printf '%-28s%8.2f times the real time of one\n' 'two runs at once' \
        "$(awk "BEGIN { print $(wall two | tail -n 1) / $(wall tenth none | tail -n 1) }")"
fi

if ! command -v valgrind >/dev/null; then
    echo 'instructions: not counted, valgrind is missing'
    exit $status
fi
valgrind --tool=callgrind --trace-children=yes --callgrind-out-file="$folder/%p" \
    "$simulate" --io-cost none --measurements $counted -- "$tavrelin" >/dev/null 2>&1
# The program's own: the launcher's names another.
profile=$(grep -lE "^cmd: *[^ ]*/${tavrelin##*/} *$" "$folder"/[0-9]*)
callgrind_annotate --inclusive=yes "$profile" | tr -d , >"$folder/profile"
# Instructions of the first function of this name, callees included.
of() { awk -v name="$1" 'index($0, name) && $1 ~ /^[0-9]+$/ && !found { print $1; found = 1 }' "$folder/profile"; }
all=$(of 'PROGRAM TOTALS')
each=$((all / counted))
printf '%-28s%8d thousand a measurement, outside the kernel (at most 9000)\n' 'instructions' $((each / 1000))
[ $each -le 9000000 ] || fail "a measurement takes $each instructions"
share() {
    local sum=0 name
    for name in "${@:2}"; do sum=$((sum + $(of "$name"))); done
    printf '  %-26s%8.1f %%\n' "$1" "$(awk "BEGIN { print 100 * $sum / $all }")"
}
share 'polls of the home sensor' 'cycle/StartPosition.cpp:tavrelin::doFindStartPosition'
share 'starts and ends of threads' ':pthread_create' ':pthread_join' ':pthread_exit'
share 'hand-overs' 'sim::Scheduler::HandOver'
exit $status

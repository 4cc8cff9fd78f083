#!/usr/bin/env bash
# speed.sh SIMULATE TAVRELIN: how long the instrument's whole life takes, 200000 steps, told from a tenth of
# it: with free calls, with calls that cost, and two at once; and where the processor's work goes. The times
# of a shared machine waver: they are told beside what they should be. Judged is what is counted: calls,
# threads, and how often the processor goes from one thread to another.
set -euo pipefail
export LC_ALL=C
readonly simulate=$1 tavrelin=$2
readonly measurements=1176

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

switches=$(python3 -c 'import resource, subprocess, sys
subprocess.run(sys.argv[1:], stdout=subprocess.DEVNULL, check=True)
print(resource.getrusage(resource.RUSAGE_CHILDREN).ru_nvcsw)' \
    "$simulate" --io-cost none --measurements $measurements -- "$tavrelin")
printf '%-28s%8d a measurement (at most 100)\n' 'switches of threads' $((switches / measurements))
[ $((switches / measurements)) -le 100 ] || fail "a measurement takes $switches / $measurements switches of threads"

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
exit $status

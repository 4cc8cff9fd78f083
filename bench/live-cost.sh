#!/usr/bin/env bash
# live-cost.sh SIMULATE TAVRELIN: how much slower a run at pace max is while a page of the live bench reads
# all that it shows, in pairs one after the other: told in real time, and judged by processor time, all of it,
# which a busy machine leaves as it is. Fails when the median is more than a quarter of the speed.
set -euo pipefail
export LC_ALL=C
readonly simulate=$1 tavrelin=$2
readonly pairs=5 run=(--pace max --measurements 400)

folder=$(mktemp -d)
served=
trap '[ -z "$served" ] || kill "$served" 2>/dev/null || true; rm -rf "$folder"' EXIT

TIMEFORMAT='%R %U %S'

# Milliseconds of real time and of processor time, launcher included, of a run by itself.
alone() {
    { time "$simulate" "${run[@]}" -- "$tavrelin" >/dev/null; } 2>&1 | awk '{ print int($1 * 1000), int(($2 + $3) * 1000) }'
}

# The same of a run to its end as a page is told of it.
watched() {
    local begin=$EPOCHREALTIME address host token page
    : >"$folder/errors"
    "$simulate" --serve "${run[@]}" -- "$tavrelin" >/dev/null 2>"$folder/errors" &
    served=$!
    until address=$(grep -o 'http://.*' "$folder/errors"); do sleep 0.01; done
    host=${address#http://} host=${host%%/*} token=${address##*=}
    exec {page}<>"/dev/tcp/127.0.0.1/${host#*:}"
    printf 'GET /events?token=%s HTTP/1.1\r\nHost: %s\r\n\r\n' "$token" "$host" >&$page
    grep -qm1 '^event: end' <&$page
    awk -v begin="$begin" -v end="$EPOCHREALTIME" -v tick="$(getconf CLK_TCK)" \
        '{ print int((end - begin) * 1000), int(($14 + $15 + $16 + $17) * 1000 / tick) }' "/proc/$served/stat" >"$folder/watched"
    exec {page}>&-
    kill "$served"
    wait "$served" || true
    served=
}

losses=()
for ((pair = 1; pair <= pairs; ++pair)); do
    read -r wall processor < <(alone)
    watched
    read -r watched_wall watched_processor <"$folder/watched"
    losses+=($((100 - 100 * processor / watched_processor)))
    printf 'live bench: alone %5d ms (processor %5d), with a page %5d ms (processor %5d): %3d %% slower\n' \
        "$wall" "$processor" "$watched_wall" "$watched_processor" "${losses[-1]}"
done
median=$(printf '%s\n' "${losses[@]}" | sort -n | sed -n "$((pairs / 2 + 1))p")
printf 'live bench: median loss of speed %d %% (at most 25 %%)\n' "$median"
[ "$median" -le 25 ]

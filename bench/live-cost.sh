#!/usr/bin/env bash
# live-cost.sh SIMULATE TAVRELIN: how much slower a run at pace max is while a page of the live bench reads
# all that it shows, in pairs one after the other. Fails when the median is more than a quarter of the speed.
set -euo pipefail
export LC_ALL=C
readonly simulate=$1 tavrelin=$2
readonly pairs=5 run=(--pace max --measurements 400)

folder=$(mktemp -d)
served=
trap '[ -z "$served" ] || kill "$served" 2>/dev/null || true; rm -rf "$folder"' EXIT

now() { date +%s%N; }

# Milliseconds of a run by itself.
alone() {
    local begin
    begin=$(now)
    "$simulate" "${run[@]}" -- "$tavrelin" >/dev/null
    echo $((($(now) - begin) / 1000000))
}

# Milliseconds of a run to its end as a page is told of it.
watched() {
    local begin address host port token
    : >"$folder/errors"
    begin=$(now)
    "$simulate" --serve "${run[@]}" -- "$tavrelin" >/dev/null 2>"$folder/errors" &
    served=$!
    until address=$(grep -o 'http://.*' "$folder/errors"); do sleep 0.01; done
    host=${address#http://} host=${host%%/*} port=${host#*:} token=${address##*=}
    exec {page}<>"/dev/tcp/127.0.0.1/$port"
    printf 'GET /events?token=%s HTTP/1.1\r\nHost: %s\r\n\r\n' "$token" "$host" >&$page
    grep -qm1 '^event: end' <&$page
    echo $((($(now) - begin) / 1000000)) >"$folder/watched"
    exec {page}>&-
    kill "$served"
    wait "$served" || true
    served=
}

losses=()
for ((pair = 1; pair <= pairs; ++pair)); do
    alone=$(alone)
    watched
    watched=$(<"$folder/watched")
    losses+=($((100 - 100 * alone / watched)))
    printf 'live bench: %5d ms alone, %5d ms with a page: %3d %% slower\n' "$alone" "$watched" "${losses[-1]}"
done
median=$(printf '%s\n' "${losses[@]}" | sort -n | sed -n "$((pairs / 2 + 1))p")
printf 'live bench: median loss of speed %d %% (at most 25 %%)\n' "$median"
[ "$median" -le 25 ]

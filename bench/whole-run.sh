#!/usr/bin/env bash
# whole-run.sh SIMULATE TAVRELIN: the instrument's run from start to end, 200000 steps, on the
# simulated board. Fails unless it came to its end with the memory, descriptors and threads that it
# had at step 200.
set -euo pipefail
export LC_ALL=C
readonly simulate=$1 tavrelin=$2
readonly steps=200000 measurements=11764

summary=$(mktemp)
trap 'rm -f "$summary"' EXIT

# figure SECTION KEY: a number of the summary; the section of the first lines has no name.
figure() {
    awk -v section="$1" -v key="$2" '
        /^\[/ { current = substr($0, 2, length($0) - 2) }
        current == section && $1 == key { sub(/^[^=]*= /, ""); print; exit }' "$summary"
}

# The allocator keeps freed pieces for each thread, as many as the timing of real threads makes it,
# and counts them as in use. Without these caches it tells exactly what is in use.
export GLIBC_TUNABLES=glibc.malloc.arena_max=1:glibc.malloc.tcache_count=0
TIMEFORMAT='%R %U %S'
exec 3>&2
read -r wall user system < <({ time "$simulate" --io-cost none --summary "$summary" \
    -- "$tavrelin" >/dev/null 2>&3; } 2>&1)

status=0
board_time=$(figure '' board_time_us)
printf '\nwhole run: %s steps, %s measurements, %s s of board time\n' \
    "$(figure '' steps)" "$(figure '' measurements)" $((${board_time:-0} / 1000000))
printf 'in %.1f s of wall time, %.1f s of processor time\n' \
    "$wall" "$(awk "BEGIN { print $user + $system }")"
if [ "$(figure '' end)" != '"program ended"' ] || [ "$(figure '' steps)" != $steps ] ||
    [ "$(figure '' measurements)" != $measurements ]; then
    echo "bench: the run should end by itself after $steps steps and $measurements measurements" >&2
    status=1
fi

printf '%-20s%14s%14s\n' '' 'at step 200' 'at the end'
for key in heap_bytes board_handles host_descriptors threads resident_bytes; do
    early=$(figure at_step_200 $key)
    late=$(figure at_last $key)
    printf '%-20s%14s%14s\n' $key "$early" "$late"
    # Pages once touched stay resident; they are shown, not judged.
    if [ $key != resident_bytes ] && [ "$early" != "$late" ]; then
        echo "bench: $key went from $early at step 200 to $late at the end" >&2
        status=1
    fi
done
exit $status

# Sourced by the commands in the root: how they speak. The caller sets `command_name` and `top`.

# Each argument on its own line.
say() { printf '%s\n' "$@"; }

# One line, then the end.
give_up() {
    printf '%s: %s\n' "$command_name" "$*" >&2
    exit 1
}

wrong_use() {
    printf '%s: %s (./%s --help tells what would do)\n' "$command_name" "$*" "$command_name" >&2
    exit 2
}

# logged LOG COMMAND...: runs a command whose output matters only when it fails.
logged() {
    local log=$1
    shift
    "$@" >>"$log" 2>&1 && return
    tail -n 60 "$log" >&2
    return 1
}

# The folder below build/ that this command keeps its files in, made when it is not there.
prepare_folder() {
    mkdir -p "$1" 2>/dev/null && [ -w "$1" ] && [ -w "$top/build" ] ||
        give_up "cannot write to $1: build/ must belong to the user who runs this"
}

# Sourced by the commands in the root: the Debian packages that they need.

build_packages=(
    g++
    cmake
    ninja-build
    libcli11-dev
    libtomlplusplus-dev
    libasound2-dev
    libgtest-dev
    libgmock-dev
)
check_packages=(
    "${build_packages[@]}"
    clang-format
    clang-tidy
    ccache
    alsa-utils
    systemd
    device-tree-compiler
)

# missing_packages PACKAGE...: those that are not installed for this machine itself. One that is there for
# several architectures, as whoever cross-builds has it, has a status for each.
missing_packages() {
    local package native
    native=$(dpkg --print-architecture)
    for package in "$@"; do
        dpkg-query -W -f '${Architecture} ${db:Status-Status}\n' "$package" 2>/dev/null |
            grep -qxE "(all|$native) installed" || printf '%s ' "$package"
    done
}

install_packages() {
    export DEBIAN_FRONTEND=noninteractive
    # An index of some other source that cannot be reached is no reason to stop: what counts is
    # whether the packages can be had.
    apt-get update || true
    apt-get install --yes --no-install-recommends "$@"
}

# require_packages LOG PACKAGE...: installs what is missing when run as root, else says how.
require_packages() {
    local log=$1 missing
    shift
    command -v dpkg-query >/dev/null || give_up "needs Debian 12: dpkg is not here"
    missing=$(missing_packages "$@")
    missing=${missing% }
    [ -n "$missing" ] || return 0
    [ "$(id -u)" = 0 ] ||
        give_up "missing packages; as root: apt-get install --no-install-recommends $missing"
    say "Installing $missing"
    # shellcheck disable=SC2086 # one word per package
    logged "$log" install_packages $missing || give_up "could not install $missing (log: $log)"
}

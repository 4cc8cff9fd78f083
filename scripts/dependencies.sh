# Sourced by the commands in the root: the Debian packages that they need.

build_packages=(
    g++
    cmake
    ninja-build
    libcli11-dev
    libtomlplusplus-dev
    libsqlite3-dev
    libcpp-httplib-dev
    nlohmann-json3-dev
    libasound2-dev
    libgtest-dev
    libgmock-dev
    gnuplot-nox
    fonts-dejavu-core
)
check_packages=(
    "${build_packages[@]}"
    clang-format
    clang-tidy
    ccache
    alsa-utils
    gdb
    systemd
    device-tree-compiler
    clang
    libclang-rt-dev
    mawk
    python3
    busybox
    perl
    tzdata
    sqlite3
)
# Counts which lines and branches the tests reach.
coverage_packages=(
    "${build_packages[@]}"
    gcovr
    python3
)
# Cross compilers, and for the programs that they make what they link and what runs them here.
arm_packages=(
    "${check_packages[@]}"
    g++-arm-linux-gnueabihf
    g++-arm-linux-gnueabi
    qemu-user-static
)
for architecture in armhf armel; do
    arm_packages+=({libstdc++6,libasound2-dev,libsqlite3-0,libgtest-dev,libgmock-dev}:$architecture)
done
# Debian packages: what builds them for each board, looks at them and tries them.
package_packages=(
    dpkg-dev
    debhelper
    cmake
    ninja-build
    g++
    g++-arm-linux-gnueabihf
    g++-arm-linux-gnueabi
    libcli11-dev
    libsqlite3-dev
    libcpp-httplib-dev
    nlohmann-json3-dev
    help2man
    sox
    lintian
    fakeroot
    mmdebstrap
)
for architecture in "$(dpkg --print-architecture 2>/dev/null)" armhf armel; do
    package_packages+=({libstdc++6,libasound2-dev,libsqlite3-0,libtomlplusplus-dev}:"$architecture")
done
# Programs of others that read the waveforms of a run.
waveform_packages=(
    "${build_packages[@]}"
    gtkwave
    sigrok-cli
)
# A browser without a screen that looks at the live bench.
browser_packages=(
    "${build_packages[@]}"
    ccache
    chromium
    chromium-driver
    python3-selenium
    python3-pil
    fonts-dejavu-core
)
kernel_packages=(
    "${build_packages[@]}"
    ccache
    qemu-system-arm
    gcc-arm-linux-gnueabihf
    g++-arm-linux-gnueabihf
    libasound2-dev:armhf
    libsqlite3-0:armhf
    make
    fdisk
    dosfstools
    mtools
    cpio
)

# What shares the runs of scripts/sweep out.
sweep_packages=(
    "${build_packages[@]}"
    parallel
    python3
)

# Unpacked by scripts/try-feeds, not installed: these would start services.
feeds_packages=(
    mosquitto
    mosquitto-clients
    influxdb
    prometheus-node-exporter
    curl
)

# missing_packages PACKAGE...: those that are not installed, for this machine itself where the name says
# nothing else ("libasound2-dev:armhf"). One that is there for several architectures has a status for each.
missing_packages() {
    local package architecture
    for package in "$@"; do
        architecture=$(dpkg --print-architecture)
        [[ $package != *:* ]] || architecture=${package#*:}
        dpkg-query -W -f '${Architecture} ${db:Status-Status}\n' "$package" 2>/dev/null |
            grep -qxE "(all|$architecture) installed" || printf '%s ' "$package"
    done
}

install_packages() {
    export DEBIAN_FRONTEND=noninteractive
    local package
    for package in "$@"; do
        [[ $package != *:* ]] || dpkg --add-architecture "${package#*:}"
    done
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

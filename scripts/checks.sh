# Sourced by ./check: its stages. Each counts what passed and what failed; none ends the run. The
# caller sets `top`, is in that folder, and sets `work`, a fresh folder for logs.

passed=0
failed=0
not_run=()
export CCACHE_DIR=${CCACHE_DIR-$top/build/ccache} CCACHE_NOHASHDIR=1

# verdict NAME STATUS LOG: a line for one check, with the end of its output when it failed.
verdict() {
    if [ "$2" = 0 ]; then
        passed=$((passed + 1))
        say "ok      $1"
    else
        failed=$((failed + 1))
        say "FAILED  $1"
        tail -n 60 "$3"
    fi
}

# hold NAME LOG COMMAND...: a check that is one command.
hold() {
    local name=$1 log=$work/$2
    shift 2
    "$@" >"$log" 2>&1
    verdict "$name" $? "$log"
}

# not_run NAME REASON: a check that this machine cannot do; told at the end, and never counted as passed.
not_run() {
    not_run+=("not run: $1: $2")
    say "${not_run[-1]}"
}

# can_have NAME COMMAND...: runs what brings the stage's needs here, given a log of its own first; where they cannot
# be had, the stage is not run.
can_have() {
    local name=$1 log=$work/$1-packages.log
    shift
    ("$1" "$log" "${@:2}") >>"$log" 2>&1 && return
    not_run "$name" "$(tail -n 1 "$log" | sed 's/^[^:]*: //')"
    return 1
}

# files PATTERN...: the checked-in files of these names.
files() {
    local names=() pattern
    for pattern in "$@"; do
        names+=(-o -name "$pattern")
    done
    find . -path ./build -prune -o -path ./.git -prune -o -type f \( "${names[@]:1}" \) -print | sort
}

nothing_left_open() {
    local found
    found=$(files '*.cpp' '*.h' '*.c' '*.cmake' CMakeLists.txt |
        xargs grep -nE '\b(TODO|FIXME|XXX|HACK)\b|NOLINT|DISABLED_|GTEST_SKIP')
    say "$found"
    [ -z "$found" ]
}

arrows() {
    files '*.cpp' '*.h' | sed 's#^\./##' | xargs scripts/arrows
}

# Needs a configured build folder, for each file's options, but nothing built.
names() {
    configure default && files '*.cpp' | grep -E '^\./(app|base|cycle|devices|log|platform|service|simulator|storage)/' |
        grep -v 32.cpp | xargs -P "$(nproc)" -n 4 clang-tidy -p build/default --quiet \
        --extra-arg=-O0 --checks='-*,readability-identifier-naming'
}

check_style() {
    hold "formatting" format.log xargs -a <(files '*.cpp' '*.h' '*.c') clang-format --dry-run --Werror
    hold "nothing left open or switched off" open.log nothing_left_open
    hold "includes follow the arrows" arrows.log arrows
    hold "names" names.log names
}

# Tests and simulated board compile alike under every preset: with a common cache, once.
configure() {
    cmake --preset "$1" -DCMAKE_CXX_COMPILER_LAUNCHER=ccache
}

build() {
    configure "$1" && cmake --build --preset "$1"
}

# The tests of a preset; CTest gives a line for each and the totals.
run_tests() {
    local log=$work/$1-tests.log totals
    ctest --preset "$1" 2>&1 | tee "$log"
    totals=$(sed -nE 's/.*tests passed, ([0-9]+) tests failed out of ([0-9]+)/\1 \2/p' "$log")
    if [ -z "$totals" ]; then
        failed=$((failed + 1))
        say "FAILED  tests of $1: none ran"
        return
    fi
    failed=$((failed + ${totals% *}))
    passed=$((passed + ${totals#* } - ${totals% *}))
}

build_and_test() {
    local before=$failed
    hold "build $1" "$1-build.log" build "$1"
    [ "$failed" = "$before" ] && run_tests "$1"
}

check_default() { build_and_test default; }

# ./check full lets it take longer.
fuzz_seconds=10
check_fuzz() {
    local target
    for target in $(scripts/fuzz --targets); do
        hold "fuzz: $fuzz_seconds s of random $target" "fuzz-$target.log" scripts/fuzz $fuzz_seconds "$target"
    done
}

check_coverage() {
    hold "coverage: every line of the product but those excused, 95 % of the branches" coverage.log scripts/coverage
    tail -n 4 "$work/coverage.log"
}

# What docs/reliability.md tells: a tenth of the runs, or all of them and whole lives.
check_proofs() {
    local before=$failed
    can_have proofs require_packages "${sweep_packages[@]}" || return
    hold "build default" default-build.log build default
    [ "$failed" = "$before" ] || return
    prove "every fault" sweep "$part"
    prove "power cuts, kills and pulled cards" cuts "$part"
    prove "orders of the threads" orders "$part"
    [ "$part" = tenth ] || prove "whole lives" life
}

# prove NAME SCRIPT ARGUMENT...: a script whose table is shown.
prove() {
    local before=$failed
    hold "$1: $2 ${3-}" "$2.log" "scripts/$2" "${@:3}"
    [ "$failed" != "$before" ] || cat "$work/$2.log"
}

check_asan() { build_and_test asan; }
check_asan-all() { build_and_test asan-all; }
check_tsan() {
    local before=$failed
    build_and_test tsan
    [ "$failed" != "$before" ] || hold "no race in 20 orders of the threads" orders-tsan.log scripts/orders tsan
}

tidy_file() {
    local output
    if output=$(clang-tidy -p build/default --extra-arg=-O0 --quiet "$1" 2>&1); then
        printf 'ok      tidy %s\n' "$1"
    else
        printf 'FAILED  tidy %s\n%s\n' "$1" "$(grep -A4 -E 'error:|warning:' <<<"$output")"
    fi
}

check_tidy() { tidy_below app base cycle devices log platform service storage; }
check_tidy-rest() { tidy_below bench simulator tests; }

# tidy_below FOLDER...: a line for each source below the folders.
tidy_below() {
    local log=$work/tidy-$1.log folders
    folders=$(printf '|%s' "$@")
    build default >"$work/tidy-build.log" 2>&1
    export -f tidy_file
    files '*.cpp' | grep -E "^\./(${folders:1})/" |
        xargs -P "$(nproc)" -I '{}' bash -c 'tidy_file "$1"' tidy '{}' 2>&1 | tee "$log"
    passed=$((passed + $(grep -c '^ok ' "$log")))
    failed=$((failed + $(grep -c '^FAILED ' "$log")))
}

installs() {
    build default && cmake --install build/default --prefix "$work/prefix" &&
        "$work/prefix/bin/tavrelin" --version
}

check_install() {
    hold "cmake --install puts the program in place" install.log installs
}

# silently COMMAND...: fails when it says anything at all.
silently() {
    local said
    said=$("$@" 2>&1) && [ -z "$said" ] && return
    say "$said"
    return 1
}

check_unit() {
    # As it ships, but for its programs: they need not be installed here.
    sed -E 's#^(Exec[A-Za-z]+=-?)tavrelin[a-z-]*#\1/bin/true#' packaging/tavrelin.service >"$work/tavrelin.service"
    hold "the service unit is understood without a message" unit.log \
        silently systemd-analyze verify --man=no "$work/tavrelin.service"
    hold "the device tree overlay is understood without a message" overlay.log \
        silently dtc -@ -I dts -O dtb -o "$work/tavrelin.dtbo" packaging/board/tavrelin.dtso
    hold "the service unit is exposed by 3.4 of 10 at most" exposure.log \
        systemd-analyze security --offline=true --threshold=34 "$work/tavrelin.service"
}

check_bench() {
    hold "build default" default-build.log build default
    hold "bench" bench.log cmake --build --preset default --target bench
    cat "$work/bench.log"
}

# Process numbers of their own, other roots and program formats are root's.
as_root() { [ "$(id -u)" = 0 ] || give_up "needs root"; }

# Lets this kernel start programs for ARM in an emulator, for every process of the machine.
emulate_arm() {
    local formats=/proc/sys/fs/binfmt_misc
    [ -e $formats/register ] || mount -t binfmt_misc none $formats || return
    [ -e $formats/qemu-arm ] || cat /usr/lib/binfmt.d/qemu-arm.conf >$formats/register
}

# three_measurements PRESET: what they leave behind, in a folder of this name.
three_measurements() {
    local folder=$work/three-$1
    mkdir "$folder" &&
        "build/$1/bin/simulate" --scenario scripts/demo.toml --measurements 3 --events "$folder/events" \
            --root "$folder/board" -- "build/$1/bin/tavrelin" >"$folder/console"
}

same_as_here() {
    [ -d "$work/three-default" ] || three_measurements default || return
    three_measurements "$1" && diff -r "$work/three-default" "$work/three-$1"
}

arm_needs() { as_root && require_packages "$1" "${arm_packages[@]}" && emulate_arm; }
check_arm() {
    local preset before=$failed
    can_have arm arm_needs || return
    hold "build default" default-build.log build default
    for preset in armhf armel; do
        build_and_test $preset
        grep -h ' bytes, needs ' "$work/$preset-build.log"
        [ "$failed" != "$before" ] ||
            hold "$preset: console, log and events of three measurements are those of this machine" \
                "same-$preset.log" same_as_here $preset
    done
}

# Elsewhere, at another time and in another time zone.
same_packages_again() {
    (cd build/package && sha256sum ./*_armhf.deb) >"$work/packages" &&
        TZ=Pacific/Auckland ./package armhf && (cd build/package && sha256sum --check "$work/packages")
}

package_needs() { as_root && require_packages "$1" "${package_packages[@]}"; }
check_package() {
    local before=$failed
    can_have package package_needs || return
    hold "packages for amd64, armhf and armel, without an objection of lintian's" packages-build.log ./package
    [ "$failed" = "$before" ] || return
    hold "packages: the same bytes for the board from another folder at another time" packages-same.log same_packages_again
    hold "packages: installed, upgraded, removed and purged, the logs untouched" packages-root.log \
        scripts/try-packages "$work/root"
    rm -rf "$work/root"
}

# What other people's programs read in a run's waveforms.
check_waveform() {
    local before=$failed
    can_have waveform require_packages "${waveform_packages[@]}" || return
    hold "build default" default-build.log build default
    [ "$failed" = "$before" ] || return
    hold "waveforms: GTKWave's converters and sigrok read what the event log tells, for 15 % of a run at most" \
        waveform.log scripts/try-waveform "$work/waveform"
    [ "$failed" != "$before" ] || cat "$work/waveform.log"
}

# What a real kernel makes of the shipping program, in an emulator.
kernel_needs() { require_packages "$1" "${kernel_packages[@]}" && scripts/kernel fetch; }
check_kernel() {
    local proof before=$failed
    can_have kernel kernel_needs || return
    hold "kernel: board module, programs and the guest's root" kernel-build.log scripts/kernel build
    [ "$failed" = "$before" ] || return
    for proof in contract measure card registers power-cut safe-state cost; do
        before=$failed
        hold "kernel: $proof" "kernel-$proof.log" scripts/kernel prove "$proof"
        [ "$failed" != "$before" ] || cat "$work/kernel-$proof.log"
    done
}

# What `tavrelin-log follow` prints, taken by the programs that it is meant for.
feeds_need() { require_packages "$1" "${build_packages[@]}" ccache && scripts/try-feeds fetch; }
check_feeds() {
    local proof before=$failed
    can_have feeds feeds_need || return
    hold "build default" default-build.log build default
    [ "$failed" = "$before" ] || return
    for proof in mqtt influx textfile; do
        hold "feeds: $proof" "feeds-$proof.log" scripts/try-feeds "$proof"
    done
    if unshare --mount true 2>/dev/null; then
        hold "feeds: a card pulled, put back and changed" feeds-card.log scripts/try-feeds card
    else
        not_run "feeds: a card pulled, put back and changed" "mounting is root's"
    fi
}

# The page of the live bench in a real browser; a line for each test.
check_browser() {
    local log=$work/browser.log before=$failed
    can_have browser require_packages "${browser_packages[@]}" || return
    hold "build default" default-build.log build default
    [ "$failed" = "$before" ] || return
    timeout 400 /usr/bin/python3 -B -m unittest discover -v -s tests/browser -p '*_test.py' >"$log" 2>&1
    sed -nE 's/^test_(\w+) .*\.\.\. (ok|FAIL|ERROR)$/\2 \1/p' "$log" | tr _ ' ' |
        sed -E 's/^ok/ok      browser:/; s/^(FAIL|ERROR)/FAILED  browser:/' | tee "$work/browser-lines.log"
    passed=$((passed + $(grep -c '^ok ' "$work/browser-lines.log")))
    failed=$((failed + $(grep -c '^FAILED ' "$work/browser-lines.log")))
    hold "browser: the tests ran to their end" browser-end.log grep -E '^Ran [1-9]' "$log"
    [ "$failed" = "$before" ] || tail -n 60 "$log"
}

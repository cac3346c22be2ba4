#!/bin/bash
# usage: dev_script.sh REPOSITORY
#
# Checks ./dev with fake programs in place of those that install, configure and build. Each case is a
# function, run in a shell of its own; its name is the rule.
set -euo pipefail
repository=$1
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
DISPLAY='' PATH=$PATH:/usr/sbin:/sbin

# The script's functions, for a repository in $work.
take_functions() {
    qt=
    # shellcheck source=../../dev
    source "$work/dev"
    root=$work/.root/trixie
}

# make_program NAME BODY: goes before a program of that name.
make_program() {
    printf '#!/bin/bash\n%s\n' "$2" >"$work/bin/$1"
    chmod +x "$work/bin/$1"
}

# These tests may run as part of a build with sanitizers.
unset MARLUNE_PRESET MARLUNE_QT

# A system with a recent enough Qt and all packages.
make_repository() {
    mkdir -p "$work/bin" "$work/.ci" "$work/examples/hud"
    cp "$repository/dev" "$work/"
    touch "$work/CMakePresets.json" "$work/examples/hud/index.html"
    make_program apt-cache 'echo "  Candidate: 6.8.2"'
    make_program dpkg-query "sed -n '/packages=(/,/^)/p' '$work/dev' | grep '^ ' | xargs -n 1 echo installed"
    make_program cmake "echo \"\$*\" >>'$work/cmake.log'
        [[ \$* != '--preset '* ]] || { mkdir -p '$work/build/release'; touch '$work/build/release/build.ninja'; }"
    make_program ctest "echo \"display=\$DISPLAY wayland=\${WAYLAND_DISPLAY-none}\" >'$work/ctest.log'"
    make_program sum-results true
    mv "$work/bin/sum-results" "$work/.ci/"
    PATH=$work/bin:$PATH
}

# expect RULE COMMAND...
expect() {
    "${@:2}" || { echo "broken rule: ${FUNCNAME[1]}: $1"; exit 1; }
}

contains() { [[ $1 == *"$2"* ]]; }
lacks() { [[ $1 != *"$2"* ]]; }

# --- The cases --------------------------------------------------------------------------------

a_demo_builds_the_examples_alone() {
    "$work/dev" demo "$work/out" &>/dev/null || true # there is no example to run
    local calls
    calls=$(cat "$work/cmake.log")
    expect "no tests are configured" contains "$calls" "-DMARLUNE_BUILD_TESTS=OFF"
    expect "no other target is built" contains "$calls" "--target marlune-demo marlune-hud marlune-media"
}

a_demo_installs_nothing_for_tests() {
    make_program dpkg-query true
    make_program dpkg true
    make_program apt-get "echo \"\$*\" >>'$work/apt.log'"
    "$work/dev" demo "$work/out" &>/dev/null || true
    expect "what the examples need is installed" contains "$(cat "$work/apt.log")" " qt6-base-dev"
    expect "GoogleTest is not" lacks "$(cat "$work/apt.log")" libgtest
    expect "Wine is not" lacks "$(cat "$work/apt.log")" wine
}

a_build_after_a_demo_has_tests() {
    "$work/dev" demo "$work/out" &>/dev/null || true
    echo MARLUNE_BUILD_TESTS:BOOL=OFF >"$work/build/release/CMakeCache.txt"
    "$work/dev" build &>/dev/null
    expect "tests are configured" contains "$(cat "$work/cmake.log")" "-DMARLUNE_BUILD_TESTS=ON"
}

a_demo_after_a_build_leaves_its_tests() {
    "$work/dev" build &>/dev/null
    echo MARLUNE_BUILD_TESTS:BOOL=ON >"$work/build/release/CMakeCache.txt"
    touch "$work/CMakePresets.json"
    "$work/dev" demo "$work/out" &>/dev/null || true
    expect "they stay configured" lacks "$(cat "$work/cmake.log")" "-DMARLUNE_BUILD_TESTS=OFF"
}

tests_never_see_the_desktop() {
    DISPLAY=:4242 WAYLAND_DISPLAY=wayland-0 "$work/dev" test &>"$work/log" || cat "$work/log"
    expect "they run" test -f "$work/ctest.log"
    expect "on an X server of their own" lacks "$(cat "$work/ctest.log")" "display=:4242"
    expect "on any" lacks "$(cat "$work/ctest.log")" "display= "
    expect "and see no Wayland" contains "$(cat "$work/ctest.log")" "wayland=none"
}

# What a server does that an installation starts.
stay_behind() { sleep 60 & echo $! >"$work/pid"; }

a_child_that_lives_on_holds_no_lock() {
    take_functions
    with_lock test stay_behind 2>/dev/null >/dev/null
    # The child lets go of it when it becomes another program, a moment after it was started.
    expect "the lock is free" flock --timeout 10 "$work/.cache/test.lock" true
    kill "$(cat "$work/pid")"
}

a_lock_keeps_others_out() {
    take_functions
    expect "as long as the command runs" \
        with_lock test bash -c "! flock --nonblock '$work/.cache/test.lock' true"
}

# The part of debootstrap that counts here.
make_fake_root() { mkdir -p "${*: -1}/etc/dpkg/dpkg.cfg.d"; }

a_damaged_root_is_made_again() {
    take_functions
    in_namespace=(make_fake_root)
    install_missing() { true; }
    df() { echo 99999999; }
    mkdir -p "$root/usr/lib/half"
    make_root 2>/dev/null
    expect "nothing of the damaged one is left" test ! -e "$root/usr"
    expect "there is another one" test -d "$root/etc"
}

a_whole_root_is_left_alone() {
    [[ $EUID -eq 0 ]] && command -v apt-get >/dev/null || return 0 # needs a root that it may enter
    take_functions
    root=/
    expect "the system's own is one" root_is_whole
}

a_removal_that_is_broken_off_leaves_no_root() {
    take_functions
    mkdir -p "$root/usr"
    rm() { [[ $* == *.root/\** ]] || return 1; } # dies before it has removed anything
    (clean --all) && exit 1
    expect "the root has another name" test ! -e "$root" -a -d "$root.partial/usr"
}

empty_lists_are_filled_before_the_system_is_called_old() {
    take_functions
    qt_candidate() { true; }
    has_apt_lists() { false; }
    apt-get() { true; }
    dpkg() { false; }
    is_root() { false; }
    expect "an ordinary user learns the command" \
        contains "$( (builds_natively) 2>&1)" "sudo apt-get update"
    is_root() { true; }
    expect "a failed update is named" contains "$( (builds_natively) 2>&1)" "no network?"
}

lists_are_found() {
    take_functions
    apt-config() { echo "lists='$work/lists/'"; }
    mkdir "$work/lists"
    touch "$work/lists/lock"
    expect "not where there is none" eval '! has_apt_lists'
    touch "$work/lists/archive_dists_trixie_main_binary-amd64_Packages.lz4"
    expect "in any compression" has_apt_lists
}

only_qt_comes_from_sid() {
    take_functions
    qt=sid packages=(cmake qt6-base-dev qml6-module-qtquick)
    install_missing() { echo "$*"; }
    expect "and after all others" test "$(install_packages | paste -sd ';')" \
        = "cmake;--target-release=sid qt6-base-dev qml6-module-qtquick"
}

sid_has_a_root_and_a_build_of_its_own() {
    "$work/dev" --qt sid build &>/dev/null || true
    expect "which is chosen by the preset" contains "$(cat "$work/cmake.log")" "--preset sid"
    expect "and no other Qt is known" contains "$("$work/dev" --qt 5 build 2>&1)" "--qt knows sid alone"
}

nobody_enters_a_root_from_a_root() {
    take_functions
    packages=(cmake)
    root_mark=$work/mark
    touch "$root_mark"
    builds_natively() { false; }
    prepare_root() { echo "makes a root"; }
    is_root() { true; }
    expect "the command goes on where it is" test -z "$(prepare build 2>&1)"
}

only_the_script_itself_enters_a_root() {
    local said
    said=$("$work/dev" enter-root 0 help 2>&1) && exit 1
    expect "a caller is refused" contains "$said" "enter-root is for this script itself"
}

ccache_of_any_version_is_used() {
    rm "$work/bin/cmake"
    make_program ccache "[[ \$1 != *=* ]] || exit 1 # as ccache 4.7 does
        echo \"\$CCACHE_SLOPPINESS \$CCACHE_BASEDIR\" >'$work/ccache.log'
        exec \"\$@\""
    echo 'int main() {}' >"$work/main.cpp"
    cat >"$work/CMakeLists.txt" <<END
cmake_minimum_required(VERSION 3.25)
project(cached LANGUAGES CXX)
include("$repository/cmake/MarluneCompilerCache.cmake")
add_executable(cached main.cpp)
END
    cmake -G Ninja -S "$work" -B "$work/cached" "-DCCACHE_PROGRAM=$work/bin/ccache" >/dev/null
    expect "it compiles" cmake --build "$work/cached" >/dev/null
    expect "with the settings" test "$(cat "$work/ccache.log")" = "pch_defines,time_macros $work"
}

# --- Running them -----------------------------------------------------------------------------

cases=$(sed -n '/^# --- The cases/,/^# --- Running/s/^\([a-z_]*\)() {$/\1/p' "$0")
failed=0
for case in $cases; do
    find "$work" -mindepth 1 -delete
    (make_repository && "$case") || { echo "failed: $case"; failed=1; }
done
exit "$failed"

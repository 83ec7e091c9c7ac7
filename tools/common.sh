# What the scripts share. Sourced with the root of the repository as the current folder.

cmake_needed=3.25
gcc_needed=12
private_tools=build/tools

say() { printf '%s\n' "$*" >&2; }

fail() {
    say "$@"
    exit 1
}

# at_least FOUND NEEDED: compares version numbers.
at_least() { [[ $(printf '%s\n%s\n' "$2" "$1" | sort -V | head -n 1) == "$2" ]]; }

# The first cmake that is new enough; nothing when there is none.
find_cmake() {
    local program
    for program in cmake "$private_tools/bin/cmake"; do
        if command -v "$program" >/dev/null 2>&1 &&
            at_least "$("$program" --version | sed -n '1s/[^0-9]*//p')" "$cmake_needed"; then
            command -v "$program"
            return
        fi
    done
}

# The first GCC that is new enough; nothing when there is none.
find_gcc() {
    local program
    for program in g++ g++-12 g++-13 g++-14 g++-15; do
        if command -v "$program" >/dev/null 2>&1 && at_least "$("$program" -dumpversion)" "$gcc_needed"; then
            printf '%s\n' "$program"
            return
        fi
    done
}

# first_of COMMAND...: the first that exists; nothing when none does.
first_of() {
    local program
    for program in "$@"; do
        if command -v "$program" >/dev/null 2>&1; then
            printf '%s\n' "$program"
            return
        fi
    done
}

# Where ccache is installed, what was compiled before is not compiled again. It has to be told that a precompiled header
# is fine.
if command -v ccache >/dev/null 2>&1; then
    export CMAKE_CXX_COMPILER_LAUNCHER=${CMAKE_CXX_COMPILER_LAUNCHER-ccache}
    export CCACHE_SLOPPINESS=${CCACHE_SLOPPINESS:-pch_defines,time_macros}
fi

# configure PRESET [OPTION...]: runs cmake for it. Where the preset or its toolchain names no compiler it is CXX, as for a
# bare cmake, and otherwise a GCC that is new enough: systems whose g++ or clang++ is too old or missing have it under a
# name with its version. A folder keeps the compiler that it was made with, so for another one it is begun afresh.
configure() {
    local preset=$1 folder=build/$1 compiler='' known arguments=()
    shift
    case $preset in
    release-clang | asan | fuzz)
        if ! command -v clang++ >/dev/null 2>&1; then arguments=("-DCMAKE_CXX_COMPILER=clang++-14"); fi
        ;;
    windows | package-windows* | arm64 | package-arm64 | web | web-single) ;;
    pgo-*) folder=build/pgo compiler=${CXX:-$(find_gcc)} ;;
    *) compiler=${CXX:-$(find_gcc)} ;;
    esac
    if [[ -n $compiler ]]; then
        known=$(sed -n 's/^CMAKE_CXX_COMPILER:[A-Z]*=//p' "$folder/CMakeCache.txt" 2>/dev/null || true)
        # Options may stand after the program.
        if [[ -n $known && $known != "$(command -v "${compiler%% *}")" ]]; then arguments=(--fresh); fi
        local -x CXX=$compiler
    fi
    "$(find_cmake)" --preset "$preset" "${arguments[@]}" "$@"
}

# train FOLDER: lets the first half of a profile-guided build, in this folder, count its branches. Short searches: one
# that takes a second tells of its moves as time passes, and its counts are others each time.
train() {
    "$1/brenquil" bench 6
    [[ -n $(find "$1" -name '*.gcda' -print -quit) ]] || fail "The training run has left no counts in $1"
}

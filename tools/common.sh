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

# configure PRESET [OPTION...]: runs cmake for it. Systems whose g++ or clang++ is too old or missing have the compiler
# under a name with its version, which overrules the one in the preset.
configure() {
    local preset=$1 compiler=()
    shift
    case $preset in
    release-clang | asan | fuzz)
        if ! command -v clang++ >/dev/null 2>&1; then compiler=("-DCMAKE_CXX_COMPILER=clang++-14"); fi
        ;;
    windows | package-windows | arm64 | web | web-single) ;;
    *)
        if [[ $(find_gcc) != g++ ]]; then compiler=("-DCMAKE_CXX_COMPILER=$(find_gcc)"); fi
        ;;
    esac
    "$(find_cmake)" --preset "$preset" "${compiler[@]}" "$@"
}

# has_profile FOLDER: the training run of a profile-guided build has left its counts there. Without them the second half
# would be built as if nothing had been asked.
has_profile() {
    [[ -n $(find "$1" -name '*.gcda' -print -quit) ]] || fail "The training run has left no counts in $1"
}

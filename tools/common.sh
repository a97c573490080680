# What the commands of this tree share; sourced by them. Each defines $usage, offers it, and rejects
# what it does not understand. Exit status: 0 for success, 1 for failure or findings, 2 for misuse.
# shellcheck shell=bash
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
command=${0##*/}
# The last sentence of most usages.
installs="Missing packages are installed first, through apt-get as root or with sudo."

say() { echo "$command: $*" >&2; }

fail() {
    say "$*"
    exit 1
}

misused() {
    say "$*"
    echo "Try: $0 --help" >&2
    exit 2
}

# offer_help USAGE ARGUMENT...: answers --help, wherever it appears.
offer_help() {
    local usage=$1 argument
    shift
    for argument in "$@"; do
        case $argument in
            -h | --help) printf '%s\n' "$usage"; exit ;;
        esac
    done
}

profiles=$root/sdk/simulator/profiles

# The camera profiles that come with the stand-in SDK.
profile_names() { (cd "$profiles" && printf '%s\n' *.txt | sed 's/\.txt$//' | paste -sd ' '); }

# find_profile PROFILE: the file that is meant by a file's path or by one of those names.
find_profile() {
    local profile=$profiles/$1.txt
    [[ $1 != */* && ! -f $1 ]] || profile=$1
    [[ -f $profile && -r $profile ]] ||
        fail "there is no camera profile $1; name a file, or one of: $(profile_names)"
    printf '%s\n' "$profile"
}

install_packages() { "$root/tools/install-packages" "$@"; }

# configure PRESET TESTS: only when the build tree is missing, was made from older presets, has been
# moved, or has no tests and TESTS is ON. Everything else that has changed, Ninja finds out itself.
configure() {
    local preset=$1 tests=$2
    local tree=$root/build/$preset
    local cache=$tree/CMakeCache.txt
    if [[ $tree/build.ninja -nt $root/CMakePresets.json ]] &&
        grep -qxF "CMAKE_HOME_DIRECTORY:INTERNAL=$root" "$cache" &&
        { [[ $tests == OFF ]] || grep -qx "ZN_BUILD_TESTS:.*=ON" "$cache"; }; then
        return
    fi
    local options=("-DZN_BUILD_TESTS=$tests")
    if [[ $tests == ON ]]; then
        provide_expat "$preset"
        options+=(-DZN_XML=ON)
    fi
    (cd "$root" && cmake --fresh --preset "$preset" "${options[@]}")
}

# provide_expat PRESET: for the machines that Expat is not installed for.
provide_expat() {
    [[ $1 != arm* ]] || "$root/tools/xml/fetch" "${1%-debug}"
}

# build PRESET [TARGET...]
build() {
    local preset=$1
    shift
    (cd "$root" && cmake --build --preset "$preset" --parallel "$(nproc)" ${1:+--target "$@"})
}

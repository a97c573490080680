# The commands of this tree source this file. Each command defines $usage, prints it for --help, and
# rejects unknown arguments. Exit status: 0 for success, 1 for failure or findings, 2 for misuse.
# shellcheck shell=bash
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
command=${0##*/}
# The last sentence of most commands' usage text.
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

# offer_help USAGE ARGUMENT...: prints USAGE and exits when any argument is --help or -h.
offer_help() {
    local argument
    for argument in "${@:2}"; do
        [[ $argument != -h && $argument != --help ]] || { printf '%s\n' "$1"; exit; }
    done
}

# require_known KIND NAMES ARGUMENT...: rejects arguments that are not among the names.
require_known() {
    local argument
    for argument in "${@:3}"; do
        [[ " $2 " == *" $argument "* ]] || misused "no such $1: $argument; the $1s are: $2"
    done
}

profiles=$root/sdk/simulator/profiles

# The camera profiles that come with the stand-in SDK.
profile_names() { (cd "$profiles" && printf '%s\n' *.txt | sed 's/\.txt$//' | paste -sd ' '); }

# find_profile PROFILE: prints the path of a profile, which is named by its path or by profile_names.
find_profile() {
    local profile=$profiles/$1.txt
    [[ $1 != */* && ! -f $1 ]] || profile=$1
    [[ -f $profile && -r $profile ]] ||
        fail "no such camera profile: $1; name a file or one of: $(profile_names)"
    printf '%s\n' "$profile"
}

# use_profile [PROFILE]: lets the stand-in camera read the profile, or its built-in sizes.
use_profile() {
    [[ $# -le 1 ]] || misused "one profile at a time"
    [[ ${1-} != -* ]] || misused "no such option: $1"
    [[ $# == 0 ]] || { CSDK_SIMULATOR_PROFILE=$(find_profile "$1") && export CSDK_SIMULATOR_PROFILE; }
}

install_packages() { "$root/tools/install-packages" "$@"; }

# configure PRESET TESTS: configures a build tree, unless it is up to date. It is out of date when it
# is missing, older than the presets, moved, or without tests while TESTS is ON. Ninja detects every
# other change itself.
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

# provide_expat PRESET: downloads Expat for ARM, which install-packages does not do.
provide_expat() {
    [[ $1 != arm* ]] || "$root/tools/xml/fetch" "${1%-debug}"
}

# build PRESET [TARGET...]
build() {
    local preset=$1
    shift
    (cd "$root" && cmake --build --preset "$preset" --parallel "$(nproc)" ${1:+--target "$@"})
}

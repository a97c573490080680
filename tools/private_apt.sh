# The scripts that download packages without installing them source this file. apt keeps its state in
# $work meanwhile, so this machine's own packages, lists and architectures do not change.
# shellcheck shell=bash
# shellcheck source=tools/common.sh
. "$(dirname "${BASH_SOURCE[0]}")/common.sh"

private_apt() {
    local tool=$1
    shift
    "apt-$tool" -q -c "$work/apt/conf" "$@"
}

# prepare_apt FOLDER ARCHITECTURE...: sets $work, the new content of FOLDER. apt reads this file after
# the machine's configuration, so it overrides that.
prepare_apt() {
    folder=$1
    work=$1.new
    shift
    rm -rf "$work"
    mkdir -p "$work/apt/state/lists/partial" "$work/apt/cache/archives/partial"
    cat >"$work/apt/conf" <<END
#clear APT::Update;
APT::Architecture "$1";
APT::Architectures { $(printf '"%s"; ' "$@")};
APT::Sandbox::User "$(id -un)";
Dir::State "$work/apt/state";
Dir::State::status "/dev/null";
Dir::Cache "$work/apt/cache";
END
}

# download PACKAGES ARCHITECTURES FUNCTION: updates the lists and runs the function, which downloads
# packages to the current folder, $work. The update may fail for one package list. This matters only if
# no other list has the packages.
download() {
    (cd "$work" && { private_apt get update || true; } && "$3") >"$work/log" 2>&1 && return
    cat "$work/log" >&2
    fail "this machine's package sources do not provide $1 for $2"
}

# finish: removes apt's state, and replaces the folder with the rest of $work.
finish() {
    rm -rf "$work/apt" "$work/log" "$work"/*.deb "$folder"
    mv "$work" "$folder"
}

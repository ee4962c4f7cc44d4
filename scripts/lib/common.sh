# Shared by the scripts of this folder, which source it.
# shellcheck shell=bash

die() {
    echo "${0##*/}: $*" >&2
    exit 1
}

repository=$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)

# Builds go beside the sources; in a clone that belongs to somebody else, to a folder of our own.
work_root=$repository
if [[ ! -w $repository ]]; then
    work_root=${TMPDIR:-/tmp}/kvx-zelvo-$(id -u)
    (umask 077 && mkdir -p "$work_root")
    [[ -O $work_root ]] || die "$work_root belongs to somebody else"
fi

heading() { printf '\n== %s\n' "$*"; }

# install_missing PACKAGE...: Debian packages, by apt-get; nothing happens when all are there.
install_missing() {
    local package missing=()
    command -v dpkg-query >/dev/null || die "needs Debian or a descendant (or these packages' contents: $*)"
    for package; do
        [[ $(dpkg-query -W -f '${db:Status-Status}' "$package" 2>/dev/null) == installed ]] ||
            missing+=("$package")
    done
    ((${#missing[@]})) || return 0
    heading "Installing ${missing[*]}"
    local -a as_root=()
    if ((EUID != 0)); then
        command -v sudo >/dev/null || die "needs root or sudo to install ${missing[*]}"
        as_root=(sudo)
    fi
    "${as_root[@]}" apt-get update -qq
    "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
        apt-get install -qq -y --no-install-recommends "${missing[@]}" >/dev/null
}

# What building the library, the command and the examples takes.
# shellcheck disable=SC2034 # the scripts that source this one use it
build_packages=(cmake ninja-build g++ liblapack-dev libcli11-dev nlohmann-json3-dev)

# configure_and_build PRESET NAME [CMAKE_OPTION...]: into build/NAME.
configure_and_build() {
    local preset=$1 name=$2
    shift 2
    (cd "$repository" && cmake --preset "$preset" -B "$work_root/build/$name" "$@" >/dev/null)
    cmake --build "$work_root/build/$name" --parallel "$(nproc)"
}

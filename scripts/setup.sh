#!/usr/bin/env bash
# scripts/setup.sh GROUP...
#
# Installs the missing packages of these groups of packages.txt on Debian and its descendants (as root or
# through sudo). On other systems prints what is needed and succeeds if the tools exist. Silent and instant if
# nothing is missing.
set -euo pipefail

here=$(cd -- "$(dirname -- "${BASH_SOURCE[0]}")" && pwd)
groups=" $* "

wanted=()
while read -r group package _; do
    if [[ $group != "#"* && -n $group && $groups == *" $group "* ]]; then
        wanted+=("$package")
    fi
done < "$here/packages.txt"

say() { printf '%s\n' "$*" >&2; }

if [[ ! -e /etc/debian_version ]] || ! command -v apt-get > /dev/null; then
    tools=(c++ cmake ninja pkg-config)
    if [[ $groups == *" test "* ]]; then tools+=(ffmpeg python3); fi
    if [[ $groups == *" check "* ]]; then tools+=(clang-format clang-tidy); fi
    absent=()
    for tool in "${tools[@]}"; do
        command -v "$tool" > /dev/null || absent+=("$tool")
    done
    noted="$here/../build/.packages-noted"
    if [[ ! -e $noted || ${#absent[@]} -gt 0 ]]; then
        say "This is not a Debian system: please install what these Debian packages hold:"
        say "  ${wanted[*]}"
    fi
    if [[ ${#absent[@]} -gt 0 ]]; then
        say "Not found: ${absent[*]}"
        exit 1
    fi
    mkdir -p "$here/../build" && : > "$noted"
    exit 0
fi

# One query for all; packages unknown to dpkg are not in the output.
installed=$(dpkg-query -W -f='${db:Status-Status} ${Package}\n' "${wanted[@]}" 2> /dev/null || true)
missing=()
for package in "${wanted[@]}"; do
    [[ $'\n'$installed$'\n' == *$'\n'"installed $package"$'\n'* ]] || missing+=("$package")
done
[[ ${#missing[@]} -gt 0 ]] || exit 0

as_root=()
if [[ $(id -u) != 0 ]]; then
    if ! command -v sudo > /dev/null; then
        say "These packages are missing, and installing them takes root or sudo:"
        say "  apt-get install --no-install-recommends ${missing[*]}"
        exit 1
    fi
    as_root=(sudo)
    # No user is present to type a password.
    if [[ ! -t 0 ]]; then as_root+=(-n); fi
fi

log=$(mktemp)
trap 'rm -f "$log"' EXIT
apt() {
    "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
        apt-get -y -o DPkg::Lock::Timeout=300 "$@" < /dev/null >> "$log" 2>&1
}

say "Installing ${#missing[@]} Debian packages: ${missing[*]}"
# An interrupted installation blocks all others.
"${as_root[@]}" env DEBIAN_FRONTEND=noninteractive dpkg --configure -a < /dev/null >> "$log" 2>&1 || true
# An unreachable package source may be harmless; the installation will show that.
apt update || true
if ! apt install --no-install-recommends "${missing[@]}"; then
    cat "$log" >&2
    say "The packages could not be installed."
    exit 1
fi

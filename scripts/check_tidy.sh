#!/usr/bin/env bash
# scripts/check_tidy.sh [FILE...]
#
# Runs clang-tidy over these sources with the commands of the dev preset; without any, over every source of our rooms
# with those of the asan preset, which joins sources, so that headers are read far less often. The preset must have
# been built.
set -euo pipefail

root=$(cd -- "$(dirname -- "${BASH_SOURCE[0]}")/.." && pwd)
cd -- "$root"
commands=build/asan
[[ $# == 0 ]] || commands=build/dev
if [[ ! -e $commands/compile_commands.json ]]; then
    echo "$commands/compile_commands.json is missing: build that preset first" >&2
    exit 2
fi
if [[ $# -gt 0 ]]; then
    files=("$@")
else
    rooms='platform|media|codec|format|conversion|player|ui|app|cli'
    mapfile -t files < <(sed -nE 's/^ *"file": "(.*)",?$/\1/p' "$commands/compile_commands.json" |
        grep -E "^$root/($rooms)/|^$root/$commands/($rooms)/.*/Unity/" | sort -u)
fi
# The number of suppressed findings in the headers of others, which it counts on standard error, tells nobody anything.
# A joined file includes sources: that is what it is for.
printf '%s\0' "${files[@]}" |
    xargs -0 -n 1 -P "$(nproc 2> /dev/null || echo 2)" \
        clang-tidy -p "$commands" --quiet --checks=-bugprone-suspicious-include \
        --extra-arg=-Wno-unknown-warning-option 2> >(grep -v 'warnings generated' >&2)
echo "${#files[@]} files, nothing found"

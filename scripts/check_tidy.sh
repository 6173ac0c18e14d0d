#!/usr/bin/env bash
# scripts/check_tidy.sh [FILE...]
#
# Runs clang-tidy on these sources with the compile commands of the dev preset. Without arguments, runs on all
# sources of the rooms with those of the asan preset, which joins sources, so that headers are parsed less
# often. The preset must have been built.
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
# Filter out the count of suppressed findings in external headers, which is written to standard error. Disable
# the check for included sources, because joined files include them.
printf '%s\0' "${files[@]}" |
    xargs -0 -n 1 -P "$(nproc 2> /dev/null || echo 2)" \
        clang-tidy -p "$commands" --quiet --checks=-bugprone-suspicious-include \
        --extra-arg=-Wno-unknown-warning-option 2> >(grep -v 'warnings generated' >&2)
echo "${#files[@]} files, nothing found"

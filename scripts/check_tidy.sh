#!/usr/bin/env bash
# scripts/check_tidy.sh [FILE...]
#
# Runs clang-tidy over these sources (default: every source of our rooms) with the commands of the dev preset, which
# must have been configured.
set -euo pipefail

cd -- "$(dirname -- "${BASH_SOURCE[0]}")/.."
if [[ ! -e build/dev/compile_commands.json ]]; then
    echo "build/dev/compile_commands.json is missing: run ./test first" >&2
    exit 2
fi
if [[ $# -gt 0 ]]; then
    files=("$@")
else
    mapfile -d '' files < <(
        find platform codec format conversion player ui app cli -name '*.cpp' -print0 2> /dev/null | sort -z)
fi
# The number of suppressed findings in the headers of others, which it counts on standard error, tells nobody anything.
printf '%s\0' "${files[@]}" |
    xargs -0 -n 1 -P "$(nproc 2> /dev/null || echo 2)" \
        clang-tidy -p build/dev --quiet --extra-arg=-Wno-unknown-warning-option 2> >(grep -v 'warnings generated' >&2)
echo "${#files[@]} files, nothing found"

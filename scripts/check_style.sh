#!/usr/bin/env bash
# Checks that clang-format would not change the sources. With --fix, formats them.
set -euo pipefail

cd -- "$(dirname -- "${BASH_SOURCE[0]}")/.."
mapfile -d '' files < <(
    find platform media codec format conversion player ui app cli tests fuzz bench examples \
        \( -name '*.h' -o -name '*.cpp' \) -print0 2> /dev/null | sort -z)
if [[ ${#files[@]} -eq 0 ]]; then
    echo "no sources found" >&2
    exit 2
fi
if [[ ${1:-} == --fix ]]; then
    clang-format -i "${files[@]}"
else
    clang-format --dry-run --Werror "${files[@]}"
    echo "${#files[@]} files, all formatted"
fi

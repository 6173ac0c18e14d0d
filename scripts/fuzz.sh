#!/usr/bin/env bash
# scripts/fuzz.sh TARGET [SECONDS]
#
# Builds a target of fuzz/ and runs it (default: 20 minutes) from the committed corpus. New inputs are saved
# in build/fuzz/corpus/TARGET, findings in build/fuzz/finds/.
set -euo pipefail

root=$(cd -- "$(dirname -- "${BASH_SOURCE[0]}")/.." && pwd)
source "$root/scripts/common.sh"
cd -- "$root"
target=$1
build fuzz "fuzz_$target"
mkdir -p "build/fuzz/corpus/$target" build/fuzz/finds
exec nice -n 19 "build/fuzz/fuzz/fuzz_$target" -max_total_time="${2:-1200}" -rss_limit_mb=512 -malloc_limit_mb=512 \
    -timeout=10 -print_final_stats=1 -artifact_prefix="build/fuzz/finds/$target-" \
    "build/fuzz/corpus/$target" "fuzz/corpus/$target"

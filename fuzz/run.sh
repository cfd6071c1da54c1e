#!/usr/bin/env bash
# Runs every fuzz target: fuzz/run.sh SECONDS [BUILD]. SECONDS is the time for all of them together; BUILD is a build
# folder of the preset "fuzz". Ends with status 1 when a target found something, and says where the input lies.
set -euo pipefail
cd "$(dirname "$(readlink -f "$0")")/.."

total=${1:-60}
build=${2:-build/fuzz}
targets=(encoders replies talk properties texts compression reader raster options log pictures plain_text placing)
each=$((total / ${#targets[@]}))
[ "$each" -ge 1 ] || each=1

# What libcups takes until its stream is closed is given back when a job ends; fatal ends lose it. A forged size that
# no memory holds is refused like on a small board.
export ASAN_OPTIONS=detect_leaks=0:allocator_may_return_null=1
export UBSAN_OPTIONS=print_stacktrace=1

found=0
for target in "${targets[@]}"; do
  folder=$build/fuzz-work/$target
  mkdir -p "$folder/corpus" "$folder/found"
  if "$build/fuzz/fuzz_$target" "$folder/corpus" "fuzz/corpus/$target" -max_total_time="$each" -max_len=4096 \
    -timeout=20 -rss_limit_mb=3000 -malloc_limit_mb=16384 -artifact_prefix="$folder/found/" >"$folder/log" 2>&1; then
    printf '%-12s %s\n' "$target" "$(grep -E '^#[0-9]+.*DONE' "$folder/log" | tail -1)"
  else
    found=1
    printf '%-12s FOUND: %s\n' "$target" "$(grep -E 'SUMMARY|ERROR' "$folder/log" | tail -1)"
    printf '             input %s, log %s\n' "$(find "$folder/found" -type f -printf '%T@ %p\n' | sort -n | tail -1 | cut -d' ' -f2)" "$folder/log"
    printf '             keep it: cp INPUT fuzz/crashes/%s/NAME\n' "$target"
  fi
done
exit $found

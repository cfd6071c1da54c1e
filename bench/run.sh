#!/usr/bin/env bash
# Builds and runs every benchmark: bench/run.sh [--quick] [OUT]. Tables go to the terminal and, with pictures, to OUT
# (out/bench); the last lines name the files. About four minutes; --quick leaves out pages, programs and rounds and
# stays below one.
set -euo pipefail
cd "$(dirname "$(readlink -f "$0")")/.."

quick=()
out=out/bench
for word in "$@"; do
  case $word in
    --quick) quick=(--quick) ;;
    -*) printf 'usage: bench/run.sh [--quick] [OUT]\n' >&2; exit 2 ;;
    *) out=$word ;;
  esac
done
out=$(realpath -m "$out")
build=build/bench
mkdir -p "$out"

printf '\n== building %s\n' "$build"
cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release -DKLOV_BENCH=ON -DKLOV_PREVIEW=OFF >"$out/build.log"
cmake --build "$build" -j "$(nproc)" --target \
  rastertoklov klov_drv klov_ppd pdftoroll imagetoroll texttoroll bench_dots bench_micro bench_floor bench_empty bench_start bench_measure >>"$out/build.log" || { cat "$out/build.log"; exit 1; }

printf '\n== functions\n'
"$build/bench/bench_micro" --benchmark_min_time="$([ ${#quick[@]} -gt 0 ] && echo 0.02 || echo 0.2)" \
  --benchmark_out="$out/micro.txt" --benchmark_out_format=console

printf '\n== dots of grey\n'
"$build/bench/bench_dots" --benchmark_min_time="$([ ${#quick[@]} -gt 0 ] && echo 0.02 || echo 0.5)" \
  --benchmark_out="$out/dots.txt" --benchmark_out_format=console

printf '\n== processes\n'
python3 -B bench/compare.py "$build" "$out" "${quick[@]}"

printf '\n== growth\n'
python3 -B bench/growth.py "$build" "$out" "${quick[@]}"
printf '\n== documents\n'
python3 -B bench/documents.py "$build" "$out" "${quick[@]}"
printf '%s\n' "$out/micro.txt" "$out/documents.txt" "$out/compare.txt" "$out/compare.svg"

#!/usr/bin/env bash
# Coverage of the library and the filter by all tests, the filter's own processes among them. The report lands in
# out/coverage (or the folder that is named); coverage.py judges it and has the last word.
set -euo pipefail
cd "$(dirname "$(readlink -f "$0")")/.."
out=${1:-out/coverage}
build=${KLOV_COVERAGE_BUILD:-build/coverage}
flags="--coverage -fprofile-update=atomic"
rooms=(cmds model diag printops filter)

cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Debug -DKLOV_TESTS=ON -DKLOV_PREVIEW=OFF -DKLOV_PAGES=OFF \
  -DCMAKE_C_FLAGS="$flags" -DCMAKE_CXX_FLAGS="$flags" >/dev/null
cmake --build "$build" -j "$(nproc)"
find "$build" -name '*.gcda' -delete

# Left out: a scheduler runs the filter as a user who may not write the counters; injected faults hit the counters'
# own files; the rest does not run the filter or the library's objects.
ctest --test-dir "$build" --output-on-failure -j "$(nproc)" -LE e2e \
  -E '^(faults\.(calls|memory|crowd)|cost_guard|docs|install|examples|driver_file)$'

mkdir -p "$out"
filters=()
for room in "${rooms[@]}"; do filters+=(--filter "$room/"); done
gcovr --root . "${filters[@]}" --exclude-throw-branches --exclude-unreachable-branches --gcov-ignore-parse-errors \
  --json "$out/coverage.json" --html-details "$out/index.html" "$build/CMakeFiles" "$build/filter" >"$out/gcovr.log" 2>&1 ||
  { cat "$out/gcovr.log" >&2; exit 1; }
python3 -B tools/coverage.py "$out/coverage.json" "${rooms[@]}"

#!/usr/bin/env bash
# No value changes on its way through a smaller or differently signed type unless a cast says so: the library's and the
# filter's unit programs and process tests, built by clang with its checks of conversions.
set -euo pipefail
cd "$(dirname "$(readlink -f "$0")")/.."
build=${KLOV_CONVERSIONS_BUILD:-build/conversions}
programs=(cmds_tests model_tests text_tests diag_tests trace_tests printops_tests band_memory_tests filter_unit_tests
  filter_memory_tests raster_guard_tests)

cmake -S . -B "$build" -G Ninja -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++ -DCMAKE_BUILD_TYPE=Debug \
  -DKLOV_TESTS=ON -DKLOV_PREVIEW=OFF -DKLOV_SANITIZE=undefined,float-cast-overflow,implicit-conversion >/dev/null
cmake --build "$build" -j "$(nproc)" --target rastertoklov "${programs[@]}"
for program in "${programs[@]}"; do
  "$(find "$build/tests" -name "$program" -type f)" --gtest_brief=1
done
ctest --test-dir "$build" --output-on-failure -j "$(nproc)" -R '^process\.'

#!/usr/bin/env bash
# Cross-builds for ARM hard-float Linux and runs the tests under qemu-arm: the same bytes where plain char is unsigned
# and long has 32 bits. ARGS go to ctest. The ARM system's files come from Debian into a folder of their own.
set -euo pipefail
cd "$(dirname "$(readlink -f "$0")")/.."
build=${KLOV_ARMHF_BUILD:-build/armhf}
sysroot=${KLOV_SYSROOT:-$PWD/build/armhf-sysroot}
packages=(libc6-dev libstdc++-12-dev libgcc-12-dev libcups2-dev libcupsimage2-dev libgtest-dev
  libpng-dev libzint-dev libcli11-dev libpoppler-cpp-dev libjpeg-dev libpango1.0-dev)

# From the mirror that this machine itself uses.
make_sysroot() {
  local suite mirror list
  # shellcheck source=/dev/null
  suite=$(. /etc/os-release && echo "$VERSION_CODENAME")
  # shellcheck disable=SC2016
  mirror=$(apt-get indextargets --format '$(REPO_URI)' 'Created-By: Packages' "Codename: $suite" 'Component: main' |
    head -n 1)
  [ -n "$mirror" ] || { echo "armhf: apt knows no mirror for $suite" >&2; exit 1; }
  list=$(IFS=,; echo "${packages[*]}")
  rm -rf "$sysroot.new"
  mkdir -p "$(dirname "$sysroot")"
  mmdebstrap --quiet --architectures=armhf --variant=extract --include="$list" "$suite" "$sysroot.new" "$mirror" \
    2>"$sysroot.log" || { cat "$sysroot.log" >&2; exit 1; }
  mv "$sysroot.new" "$sysroot"
}

[ -d "$sysroot" ] || make_sysroot
sysroot=$(readlink -f "$sysroot")

cmake -S . -B "$build" -G Ninja --toolchain cmake/armhf.cmake -DKLOV_SYSROOT="$sysroot" -DCMAKE_BUILD_TYPE=Release \
  -DKLOV_TESTS=ON -DKLOV_WERROR=ON >/dev/null
cmake --build "$build" -j "$(nproc)"

cat <<'TABLE'

Tests that do not run here   Why
e2e_*, documents_*           CUPS's scheduler of this machine starts filters of its own kind only
driver_file                  the driver file is made on, and is the same for, every machine
examples, docs, install      they compile and start programs of this machine
cost_guard                   it counts this machine's instructions
faults.calls, faults.memory  they stop system calls and replace malloc inside a process of this machine
faults.crowd                 fifty emulators at once measure the emulator
faults.truncation            a run for every byte of a stream, which takes the emulator many minutes
TABLE

qemu=$(command -v qemu-arm)
export KLOV_EXEC_PREFIX="$qemu -L $sysroot"
export KLOV_RANDOM_JOBS=${KLOV_RANDOM_JOBS:-60}
export KLOV_TIMEOUT=${KLOV_TIMEOUT:-300}
ctest --test-dir "$build" --output-on-failure -j "$(nproc)" -E '^(driver_file|faults\.(calls|memory|crowd|truncation))$' "$@"

#!/usr/bin/env bash
# Builds the packages twice, in folders of different names, and compares them: check-reproducible.sh
set -euo pipefail

here=$(cd "$(dirname "$(readlink -f "$0")")" && pwd)
work=$(mktemp -d "${TMPDIR:-/tmp}/klov-reproducible-XXXXXX")
trap 'rm -rf "$work"' EXIT

for place in first a-second-folder-with-a-longer-name; do
  mkdir "$work/$place"
  TMPDIR="$work/$place" "$here/build-packages.sh" "$work/$place/packages" >"$work/$place/log" 2>&1 ||
    { tail -n 50 "$work/$place/log"; exit 1; }
  (cd "$work/$place/packages" && sha256sum -- *.deb) >"$work/$place/sums"
done
diff "$work/first/sums" "$work/a-second-folder-with-a-longer-name/sums"
cat "$work/first/sums"
echo "the packages of both builds are the same"

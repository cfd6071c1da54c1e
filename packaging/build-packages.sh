#!/usr/bin/env bash
# Builds the Debian packages from the tree as it stands and checks them with lintian: build-packages.sh [FOLDER]
# The build happens in a copy, so the tree stays as it is; the same tree gives the same packages in any folder.
set -euo pipefail

source=$(cd "$(dirname "$(readlink -f "$0")")/.." && pwd)
mkdir -p "${1:-$source/out/packages}"
target=$(cd "${1:-$source/out/packages}" && pwd)

work=$(mktemp -d "${TMPDIR:-/tmp}/klov-package-XXXXXX")
trap 'rm -rf "$work"' EXIT
mkdir "$work/klov"

copy_tree() {
  cd "$source"
  if git rev-parse --is-inside-work-tree >/dev/null 2>&1; then
    git ls-files -z --cached --others --exclude-standard | while IFS= read -r -d '' file; do
      if [ -e "$file" ]; then printf '%s\0' "$file"; fi
    done | tar --null -T - -cf -
  else
    tar --exclude=./build --exclude=./out -cf - .
  fi | tar -C "$work/klov" -xf -
}
copy_tree

cd "$work/klov"
DEB_BUILD_OPTIONS="noautodbgsym parallel=$(nproc)" dpkg-buildpackage -b -us -uc

lintian --fail-on error,warning --tag-display-limit 0 "$work"/*.changes

rm -f "$target"/*.deb
mv "$work"/*.deb "$target/"
(cd "$target" && sha256sum -- *.deb)

#!/usr/bin/env bash
# Runs ./dev commands in a Debian root of their own, as on a new machine: everything is installed by the commands
# themselves, nothing of this machine is used but its kernel and its package mirror.
#
# usage: tools/debian-root.sh SUITE COMMAND [ARGS] [-- COMMAND [ARGS]] ...
#
# The root stays in build/SUITE-root, so that a second run installs nothing; delete it for a fresh one. The tree is laid
# into it anew each time, files that git does not track yet included.
set -euo pipefail
cd "$(dirname "$(readlink -f "$0")")/.."
suite=$1
shift
root=${KLOV_ROOTS:-$PWD/build}/$suite-root

fail() { printf 'debian-root: %s\n' "$*" >&2; exit 1; }
[ "$(id -u)" -eq 0 ] || fail "a root of its own needs the rights of root"

# The mirror that this machine's own apt uses.
mirror() {
  # shellcheck disable=SC2016
  apt-get indextargets --format '$(REPO_URI)' 'Created-By: Packages' 'Component: main' | grep -m 1 '/debian/\?$'
}

make_root() {
  local from
  from=$(mirror) || fail "apt knows no Debian mirror"
  rm -rf --one-file-system "$root.new"
  mkdir -p "$(dirname "$root")"
  mmdebstrap --quiet --variant=apt "$suite" "$root.new" "$from" >"$root.log" 2>&1 || { cat "$root.log" >&2; exit 1; }
  printf '#!/bin/sh\nexit 101\n' >"$root.new/usr/sbin/policy-rc.d"     # installing starts no services
  chmod +x "$root.new/usr/sbin/policy-rc.d"
  mv "$root.new" "$root"
}

[ -d "$root" ] || make_root
mkdir -p "$root/src"
# What was built stays; what is gone from the tree goes. Files keep their time, so that little is built anew.
git ls-files -z --cached --others --exclude-standard | xargs -0 -r ls -d 2>/dev/null |
  LC_ALL=C sort >"$root/src.list.new"
if [ -f "$root/src.list" ]; then
  LC_ALL=C comm -23 "$root/src.list" "$root/src.list.new" | while read -r gone; do rm -f "$root/src/$gone"; done
fi
mv "$root/src.list.new" "$root/src.list"
tar -cf - --files-from="$root/src.list" | tar -C "$root/src" -xf -

# Its own mounts, processes and /tmp: nothing stays mounted or running behind a run, however it ends.
# shellcheck disable=SC2016
unshare --mount --pid --fork --kill-child sh -euc '
  root=$1
  shift
  mount -t proc proc "$root/proc"
  mount -t tmpfs tmpfs "$root/tmp"
  mount --rbind /dev "$root/dev"
  exec chroot "$root" /usr/bin/env -i HOME=/root PATH=/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin \
    LC_ALL=C.UTF-8 TERM=dumb bash -euc '\''
      cd /src
      command=()
      for word in "$@" --; do
        if [ "$word" != -- ]; then
          command+=("$word")
          continue
        fi
        printf "\n== %s: ./dev %s\n" "$(. /etc/os-release && echo "$PRETTY_NAME")" "${command[*]}"
        ./dev "${command[@]}"
        command=()
      done'\'' dev "$@"
' sh "$root" "$@"

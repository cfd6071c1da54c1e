#!/usr/bin/env bash
# Tries the packages in a fresh Debian root: install, list the models, print, refresh, remove, look for remains.
#   try-install.sh FOLDER-OF-DEBS [SUITE]
# Needs root, debootstrap and the network; the mirror is the one this machine's apt uses. Nothing outside the fresh
# root is touched.
set -euo pipefail

debs=$(cd "${1:?folder of .deb files}" && pwd)
suite=${2:-bookworm}

mirror() {
  { sed -n 's/^URIs: *\([^ ]*\).*/\1/p' /etc/apt/sources.list.d/*.sources
    sed -n 's/^deb \(\[[^]]*\] \)\?\([^ ]*\) .*/\2/p' /etc/apt/sources.list /etc/apt/sources.list.d/*.list; } 2>/dev/null |
    grep -m 1 '/debian/\?$'
}

root=$(mktemp -d "${TMPDIR:-/var/tmp}/klov-root-XXXXXX")
chmod 755 "$root"     # the scheduler's user lp lives in there too
cupsd_pid=
clean_up() {
  if [ -n "$cupsd_pid" ]; then kill "$cupsd_pid" 2>/dev/null || true; fi
  umount "$root/proc" 2>/dev/null || true
  rm -rf --one-file-system "$root"
}
trap clean_up EXIT

say() { printf '\n== %s\n' "$*"; }
fail() { printf 'try-install: %s\n' "$*" >&2; exit 1; }
inside() { chroot "$root" /usr/bin/env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin LC_ALL=C DEBIAN_FRONTEND=noninteractive "$@"; }

# apt tells much that matters only when it fails.
inside_quiet() { inside "$@" >"$root/debs/log" 2>&1 || { tail -n 40 "$root/debs/log"; fail "$*"; }; }

start_cupsd() {
  inside /usr/sbin/cupsd -f &
  cupsd_pid=$!
  for _ in $(seq 100); do
    if inside lpstat -r 2>/dev/null | grep -q '^scheduler is running'; then return; fi
    sleep 0.1
  done
  fail "cupsd does not start"
}

stop_cupsd() {
  kill "$cupsd_pid"
  wait "$cupsd_pid" || true
  cupsd_pid=
}

# What counts as left behind: not logs, caches and the package system's own books.
files() {
  (cd "$root" && find . -xdev \( -path ./proc -o -path ./var/log -o -path ./var/cache -o -path ./var/lib/apt \
    -o -path ./var/lib/dpkg -o -path ./debs -o -path ./run -o -path ./tmp -o -path ./var/spool/cups \
    -o -path ./etc/cups \) -prune -o -print | LC_ALL=C sort)
}

print_and_wait() {
  local before=$1 job
  job=$(inside lp -d till -o CutMode=2 /debs/receipt.txt | sed 's/.*request id is till-\([0-9]*\).*/\1/')
  for _ in $(seq 200); do
    if inside lpstat -W completed -o till | grep -q "^till-$job "; then break; fi
    sleep 0.1
  done
  [ -s "$root/tmp/till.bin" ] || { tail -n 40 "$root/var/log/cups/error_log"; fail "$before: nothing was printed"; }
  # The job ends with the full cut that was asked for: GS V 65 0.
  [ "$(tail -c 4 "$root/tmp/till.bin" | od -An -tx1)" = " 1d 56 41 00" ] || fail "$before: no cut at the end"
  echo "$before: $(wc -c <"$root/tmp/till.bin") bytes, cut at the end"
}

say "a fresh $suite"
debootstrap --variant=minbase "$suite" "$root" "$(mirror)" >/dev/null
printf '#!/bin/sh\nexit 101\n' >"$root/usr/sbin/policy-rc.d"     # installing starts no services
chmod +x "$root/usr/sbin/policy-rc.d"
mount -t proc proc "$root/proc"
mkdir "$root/debs"
cp "$debs"/*.deb "$root/debs/"
printf 'CORNER SHOP\ntotal 4.00\n' >"$root/debs/receipt.txt"

say "what the packages depend on"
needs=$(for deb in "$debs"/*.deb; do dpkg-deb -f "$deb" Depends; done | tr ',' '\n' | sed 's/^ *//' | grep -v '^libklov0' |
  sort -u | paste -sd ,)
inside_quiet apt-get install -y --no-install-recommends cups cups-client ghostscript fonts-dejavu-core
inside_quiet apt-get satisfy -y --no-install-recommends "$needs"
echo "$needs"
sed -i '/^Listen localhost/d' "$root/etc/cups/cupsd.conf"
printf 'LogLevel debug\n' >>"$root/etc/cups/cupsd.conf"
printf 'FileDevice Yes\n' >>"$root/etc/cups/cups-files.conf"
files >"$root/debs/before"

say "install"
inside_quiet sh -c 'apt-get install -y --no-install-recommends /debs/*.deb'
grep '^Setting up' "$root/debs/log"

say "list"
start_cupsd
models=$(inside lpinfo -m | grep -c '^drv:///klov.drv/')
echo "$models models in lpinfo -m"
[ "$models" -gt 100 ] || fail "models are missing"

say "print"
inside lpadmin -p till -E -v file:///tmp/till.bin -m drv:///klov.drv/qx100.ppd 2>/dev/null
print_and_wait "first print"
if inside sh -c 'klov-preview --help' >/dev/null 2>&1; then echo "klov-preview runs"; else fail "klov-preview does not run"; fi

say "refresh the PPDs of existing queues"
sed -i 's/Kind of paper/An old text/' "$root/etc/cups/ppd/till.ppd"
inside_quiet sh -c 'rm -f /var/cache/cups/ppd-updates; dpkg -i /debs/printer-driver-klov_*.deb'
grep 'PPD' "$root/debs/log" || fail "the cups package did not look at the queues"
grep -q 'Kind of paper' "$root/etc/cups/ppd/till.ppd" || fail "the queue's PPD is as old as before"
print_and_wait "after the refresh"

say "remove"
inside lpadmin -x till
stop_cupsd
inside_quiet apt-get purge -y printer-driver-klov libklov0 libklov-dev klov-tools
grep '^Removing' "$root/debs/log"
files >"$root/debs/after"
diff "$root/debs/before" "$root/debs/after" || fail "files were left behind"
if inside dpkg -l | grep klov; then fail "packages were left behind"; fi
echo "nothing is left"

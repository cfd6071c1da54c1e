#!/bin/sh
# Make the reference of libklov as HTML from its headers and the pages beside this script.
# usage: make-reference.sh OUTDIR     (start at OUTDIR/index.html)
# Fails when Doxygen has a single word to say: a name without a description, a reference to a name that is not there.
set -eu

[ $# -eq 1 ] || { echo "usage: make-reference.sh OUTDIR" >&2; exit 2; }
command -v doxygen >/dev/null || { echo "make-reference.sh: needs doxygen" >&2; exit 1; }
mkdir -p "$1"
out=$(cd "$1" && pwd)
cd "$(dirname "$0")/.."

version=$(awk '/#define KLOV_VERSION_(MAJOR|MINOR|PATCH) / { v = v separator $3; separator = "." } END { print v }' include/klov/version.h)
log=$(mktemp)
trap 'rm -f "$log"' EXIT

status=0
{
  cat docs/Doxyfile
  printf 'PROJECT_NUMBER = %s\nOUTPUT_DIRECTORY = "%s"\nHTML_OUTPUT = .\nWARN_LOGFILE = "%s"\n' "$version" "$out" "$log"
} | doxygen - || status=$?

if [ -s "$log" ] || [ "$status" -ne 0 ]; then
  cat "$log" >&2
  echo "make-reference.sh: Doxygen ended with status $status and the $(wc -l <"$log") lines above" >&2
  exit 1
fi
[ -f "$out/index.html" ] || { echo "make-reference.sh: no $out/index.html" >&2; exit 1; }
echo "$out/index.html"

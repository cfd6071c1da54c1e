#!/bin/sh
# Makes every PPD of a driver file: check-drv.sh PPDC DRIVER-FILE FOLDER
# ppdc ends with status 0 after most mistakes and tells of them on standard error only, so any such word is an error.
set -eu
ppdc=$1 drv=$2 folder=$3

rm -rf "$folder"
mkdir -p "$folder"
words=$("$ppdc" -d "$folder" "$drv" 2>&1 >/dev/null) || { echo "$words" >&2; exit 1; }
[ -z "$words" ] || { echo "$words" >&2; exit 1; }

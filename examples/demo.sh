#!/usr/bin/env bash
# Print the example receipt without a printer: CUPS's own filters make the raster, rastertoklov the printer's bytes,
# the virtual printer a listing and a picture.
#
# usage: examples/demo.sh BUILD_FOLDER OUTPUT_FOLDER
set -euo pipefail
build=$(readlink -f "$1")
mkdir -p "$2"
out=$(readlink -f "$2")
cd "$(dirname "$(readlink -f "$0")")"

document=receipt.pdf
model=qx100
options="CutMode=1 PostPrintAction=2 CutPaperLength=10 Drawer1=1 BeepControl=2 BeepRepeat=2 BeepDuration=2 BeepInterval=1"

ppdc -d "$out/ppd" "$build/ppd/klov.drv"
cupsfilter -e -p "$out/ppd/$model.ppd" -m application/vnd.cups-raster "$document" \
  >"$out/receipt.ras" 2>"$out/cups.log" || { cat "$out/cups.log" >&2; exit 1; }

PPD="$out/ppd/$model.ppd" "$build/filter/rastertoklov" 1 demo "Receipt" 1 "$options" "$out/receipt.ras" \
  >"$out/receipt.bin" 2>"$out/filter.log" || { cat "$out/filter.log" >&2; exit 1; }
rm -rf "$out/ppd"

# The trace has every run of rows as the filter saw it; without paper saving a blank run is fed as it is. The file of
# another user's job cannot be written over, and tells nothing of this one.
rows="unknown: the trace /tmp/klov-raster belongs to another user"
if [ -O /tmp/klov-raster ]; then
  cp /tmp/klov-raster "$out/filter.trace"
  rows=$(awk -F '[:),]' '/^\+print_dotline/ { ink += $6 } /^\+print_blank/ && $2 > 0 { fed += $2 }
    END { printf "%d printed, %d fed", ink, fed }' "$out/filter.trace")
fi

"$build/preview/klov-preview" "$out/receipt.bin" --list >"$out/commands.txt"
"$build/preview/klov-preview" "$out/receipt.bin" -o "$out/receipt.png"

cat <<EOF

document   examples/$document
options    $options
raster     $out/receipt.ras ($(stat -c %s "$out/receipt.ras") bytes)
pages      $(grep -c '^PAGE:' "$out/filter.log")
printed    $out/receipt.bin ($(stat -c %s "$out/receipt.bin") bytes)
rows       $rows
commands   $out/commands.txt ($(wc -l <"$out/commands.txt") commands)
log        $out/filter.log

Look at the paper: $out/receipt.png
EOF

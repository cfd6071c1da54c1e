#!/usr/bin/env bash
# Print three documents without a printer, a receipt, a text and a photo: the document filters place them on the roll,
# rastertoklov makes the printer's bytes, the virtual printer a listing and one picture of the paper.
#
# usage: examples/demo.sh BUILD_FOLDER OUTPUT_FOLDER
set -euo pipefail
build=$(readlink -f "$1")
mkdir -p "$2"
out=$(readlink -f "$2")
cd "$(dirname "$(readlink -f "$0")")"

model=qx100
options="CutMode=1 PostPrintAction=2 CutPaperLength=10 Drawer1=1 BeepControl=2 BeepRepeat=2 BeepDuration=2 BeepInterval=1"

ppdc -d "$out/ppd" "$build/ppd/klov.drv"
export PPD="$out/ppd/$model.ppd"

# print FILTER DOCUMENT NAME OPTIONS: as CUPS runs the two filters.
print() {
  CONTENT_TYPE=$5 "$build/pages/$1" 1 demo "$3" 1 "$4" "$2" >"$out/$3.ras" 2>"$out/pages.log" ||
    { cat "$out/pages.log" >&2; exit 1; }
  "$build/filter/rastertoklov" 1 demo "$3" 1 "$4" "$out/$3.ras" >"$out/$3.bin" 2>"$out/filter.log" ||
    { cat "$out/filter.log" >&2; exit 1; }
}
print texttoroll order.txt order "CutMode=1" text/plain
print imagetoroll photo.jpg photo "CutMode=1" image/jpeg
document=receipt.pdf
print pdftoroll "$document" receipt "$options" application/pdf
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
cat "$out/receipt.bin" "$out/order.bin" "$out/photo.bin" >"$out/documents.bin"
"$build/preview/klov-preview" "$out/documents.bin" -o "$out/documents.png"

cat <<EOF

document   examples/$document
options    $options
raster     $out/receipt.ras ($(stat -c %s "$out/receipt.ras") bytes)
pages      $(grep -c '^PAGE:' "$out/filter.log")
printed    $out/receipt.bin ($(stat -c %s "$out/receipt.bin") bytes)
rows       $rows
commands   $out/commands.txt ($(wc -l <"$out/commands.txt") commands)
log        $out/filter.log

Look at the paper: $out/receipt.png, and all three documents in $out/documents.png
EOF

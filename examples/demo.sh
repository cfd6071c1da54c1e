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

# The filter gets a /tmp of its own: its trace is then this run's, and none is left behind that the scheduler's user could
# not write over. All that it needs lies in the current folder, which stays within reach whatever covers /tmp.
private=(unshare --mount)
[ "$(id -u)" -eq 0 ] || private+=(--map-root-user)
cp "$build/filter/rastertoklov" "$out/ppd/"
rm -f "$out/filter.trace"
# shellcheck disable=SC2016 # these are the inner shell's words
run='PPD=ppd/$1.ppd ppd/rastertoklov 1 demo "$2" 1 "$3" "$2.ras" >"$2.bin" 2>filter.log'
if "${private[@]}" mount -t tmpfs tmpfs /tmp 2>/dev/null; then
  run="mount -t tmpfs tmpfs /tmp && $run && cp /tmp/klov-raster filter.trace"
else
  private=()
  run="$run && { [ ! -O /tmp/klov-raster ] || rm /tmp/klov-raster; }"
fi

# print FILTER DOCUMENT NAME OPTIONS TYPE: as CUPS runs the two filters.
print() {
  CONTENT_TYPE=$5 "$build/pages/$1" 1 demo "$3" 1 "$4" "$2" >"$out/$3.ras" 2>"$out/pages.log" ||
    { cat "$out/pages.log" >&2; exit 1; }
  (cd "$out" && "${private[@]}" sh -c "$run" sh "$model" "$3" "$4") || { cat "$out/filter.log" >&2; exit 1; }
}
print texttoroll order.txt order "CutMode=1" text/plain
print imagetoroll photo.jpg photo "CutMode=1" image/jpeg
document=receipt.pdf
print pdftoroll "$document" receipt "$options" application/pdf
rm -rf "$out/ppd"

rows="unknown: this system gives the filter no /tmp of its own"
# The trace has every run of rows as the filter saw it; without paper saving a blank run is fed as it is.
if [ -f "$out/filter.trace" ]; then
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

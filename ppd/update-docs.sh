#!/bin/sh
# Puts the current options table into docs/printers.md, between its two marks.
set -eu
cd "$(dirname "$0")/.."
new=$(mktemp)
trap 'rm -f "$new"' EXIT
{
  sed '/<!-- options: begin/q' docs/printers.md
  awk -f ppd/options-table.awk ppd/options.drv
  sed -n '/<!-- options: end/,$p' docs/printers.md
} >"$new"
cat "$new" >docs/printers.md

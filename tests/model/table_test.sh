#!/bin/sh
# The compiler of the catalogue's data: sound lines become rows, a malformed line stops it with its number and leaves no
# file behind. Usage: table_test.sh AWK TABLE_AWK MODELS_TXT
awk=$1 table=$2 models=$3
work=$(mktemp -d) || exit 1
trap 'rm -rf "$work"' EXIT
failures=0

fail()
{
    echo "FAILED: $*"
    failures=$((failures + 1))
}

# refused TEXT...: one data file of these lines, the last of which is malformed.
refused()
{
    printf '%s\n' "$@" >"$work/models.txt"
    rm -f "$work/out"
    if "$awk" -v out="$work/out" -f "$table" "$work/models.txt" 2>"$work/err"; then
        fail "accepted: $*"
    fi
    grep -q "models.txt:$#: error: " "$work/err" || fail "no line number for: $*"
    [ ! -e "$work/out" ] || fail "left a file behind: $*"
}

good='0x1001 | Acme | QX-100 | Acme QX-100 | Acme QX-100 Receipt Printer | 0x201 | 576 | 0x20D1 | 0x7008 | 0.0625 | receipt | qx100'
unbranded='0x1486 |  | KB80-U | KB80-U | KB80-U Receipt Control Board | 0x101 | 576 | 0x20D1 | 0x7008 | 0.125 | receipt | kb80u'
undrivable='0x3001 | Acme | LB-4 | Acme LB-4 | Acme LB-4 Label Printer | 0x2 | 850 | 0x20D1 | 0x7008 | 0.125 | label | -'

printf '%s\n' '# a comment' '' "$good" "$unbranded" "$undrivable" >"$work/models.txt"
"$awk" -v out="$work/out" -f "$table" "$work/models.txt" || fail "refused sound lines"
cat >"$work/expected" <<'END'
{0x1001u, "Acme", "QX-100", "Acme QX-100", "Acme QX-100 Receipt Printer", 0x201u, 576, 0x20D1u, 0x7008u, 0.0625f},
{0x1486u, "", "KB80-U", "KB80-U", "KB80-U Receipt Control Board", 0x101u, 576, 0x20D1u, 0x7008u, 0.125f},
{0x3001u, "Acme", "LB-4", "Acme LB-4", "Acme LB-4 Label Printer", 0x2u, 850, 0x20D1u, 0x7008u, 0.125f},
{0xFFFFFFFFu, "Unknown", "unknown", "", "", 0xFFFFFFFFu, 0, 0, 0, 0.0f},
END
cmp "$work/expected" "$work/out" || fail "other rows than expected"

"$awk" -v out="$work/out" -f "$table" "$models" || fail "refused the catalogue itself"
[ "$(grep -c '^{' "$work/out")" -eq $(($(grep -c '^0x' "$models") + 1)) ] || fail "a model has no row"

# replaced COLUMN TEXT [LINE]: the good line, or this one, with another text in one column.
replaced()
{
    echo "${3:-$good}" | "$awk" -v column="$1" -v text="$2" 'BEGIN { FS = " [|] "; OFS = " | " } { $column = text; print }'
}

refused "$good" 'nonsense'
refused '# comment' '' "$good |"
refused "$good | more"
refused "  $good"
refused "$good "
refused "$(replaced 1 1001)"
refused "$(replaced 1 0x10g1)"
refused "$(replaced 1 0x123456789)"
refused "$(replaced 2 ' Acme')"
refused "$(replaced 2 'Ac"me')"
refused "$(replaced 3 '')"
refused "$(replaced 3 'QX 100')"
refused "$(replaced 3 'unknown')"
refused "$(replaced 3 'ABCDEFGHIJKLMNOPQRSTUVWXY')"
refused "$(replaced 4 '')"
refused "$(replaced 5 '')"
refused "$(replaced 6 '')"
refused "$(replaced 7 0)"
refused "$(replaced 7 -576)"
refused "$(replaced 7 123456)"
refused "$(replaced 8 8401)"
refused "$(replaced 9 0x)"
refused "$(replaced 10 1)"
refused "$(replaced 10 0.0625f)"
refused "$(replaced 1 0x0)"
refused "$(replaced 1 0xFFFFFFFF)"
refused "$(replaced 7 580)"
refused "$(replaced 11 '')"
refused "$(replaced 11 Label)"
refused "$(replaced 12 '')"
refused "$(replaced 12 -)"
refused "$(replaced 12 QX100)"
refused "$(replaced 12 qx1000000)"
refused "$(replaced 12 lb4 "$undrivable")"

# Lines that stand well alone, but not behind others.
second=$(echo "$good" | sed 's/QX-100/QX-101/g; s/qx100/qx101/')
refused "$good" "$(replaced 12 qx100 "$second")"
refused "$good" "$(replaced 4 'Acme QX-100' "$second")"
refused "$good" "$(replaced 3 qx-100 "$second")"
refused "$good" "$(replaced 3 QX-100 "$(replaced 7 384 "$second")")"
refused "$undrivable" "$(replaced 3 LB-4 "$second")"
refused "$good" "$unbranded" "$second"
refused "$(printf '%s\r' "$good")"
refused "$(printf '%s\t' "$good")"
refused "$(replaced 2 "$(printf 'Acm\303\251')")"
refused "$(echo "$good" | sed 's/Acme QX/Acme\\QX/')"

[ "$failures" -eq 0 ] || exit 1
echo "table.awk: all lines judged as they should be"

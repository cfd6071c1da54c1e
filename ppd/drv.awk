# Writes klov.drv, the driver file from which CUPS makes a PPD for every model:
#   awk -f drv.awk common.drv options.drv sizes.txt models.txt > klov.drv
# The two .drv files go in as they are; what is made here are the paper sizes of each width of print head and the entry
# of each model. The lines of models.txt have been checked by model/table.awk. POSIX awk.

BEGIN {
    FS = " *[|] *"
    DPI = 203
    print "// Generated from the model catalogue; do not edit."
}

FILENAME != file { file = FILENAME; part++ }
part == 1 { print; next }
part == 2 { if (!/^ *\/\//) options = options $0 "\n"; next }
/^#/ || /^$/ { next }
$1 == "roll" { read_roll($2, $3, $4); next }
$1 == "label" { label_width[++labels] = $2; label_lengths[labels] = $3; next }
part == 3 { fail("neither roll nor label: " $1) }
$12 != "-" { read_model() }

END {
    if (failed) exit 1
    class_count = split("receipt label mobile", class, " ")
    for (c = 1; c <= class_count; c++) write_class(class[c])
    if (failed) exit 1
}

function fail(text) {
    print "drv.awk: " FILENAME ":" FNR ": " text > "/dev/stderr"
    failed = 1
    exit 1
}

function read_roll(widths, lengths, longest,    n, i, width) {
    n = split(widths, width, " ")
    for (i = 1; i <= n; i++) {
        roll_lengths[width[i]] = lengths
        roll_longest[width[i]] = longest
    }
}

# Models of one class have the same options; those of one width have the same paper too.
function read_model(    head, brand) {
    head = $7 / 8
    if (!(($11, head) in entries)) heads[$11] = heads[$11] " " head
    brand = $2 == "" ? "Generic" : $2
    entries[$11, head] = entries[$11, head] \
        "    {\n" \
        "      Manufacturer \"" brand "\"\n" \
        "      ModelName \"" $3 "\"\n" \
        "      Attribute \"NickName\" \"\" \"" $4 "\"\n" \
        "      Attribute \"ShortNickName\" \"\" \"" $3 "\"\n" \
        "      Attribute \"1284DeviceID\" \"\" \"MFG:" brand ";MDL:" $3 ";CMD:ESCPOS;CLS:PRINTER;DES:" $5 ";\"\n" \
        "      PCFileName \"" $12 ".ppd\"\n" \
        "    }\n"
}

function write_class(class,    n, i, list) {
    print "\n// " class " printers"
    print "{"
    print "#define RECEIPT " (class == "receipt")
    print "#define LABEL " (class == "label")
    print "#define MOBILE " (class == "mobile")
    print "#define CUTTER " (class != "mobile")
    printf "%s", options
    n = split(heads[class], list, " ")
    for (i = 1; i <= n; i++) {
        print "\n  // " list[i] * 8 " dots\n  {"
        write_sizes(class, list[i])
        printf "%s  }\n", entries[class, list[i]]
    }
    print "}"
}

# A page of exactly these bytes: the smallest hundredth of a point that gives all the dots and not one more.
function width_points(bytes) {
    return (int(bytes * 8 * 72 / DPI * 100) + 1) / 100
}

function write_sizes(class, head,    key, i, w) {
    key = (head in roll_lengths) ? head : "any"
    split("", size_written)
    if (class == "label")
        for (i = 1; i <= labels; i++) {
            w = label_width[i] == "head" ? head : label_width[i]
            if (w < head || label_width[i] == "head") write_lengths(w, label_lengths[i], 0)
        }
    write_lengths(head, roll_lengths[key], class == "label")
    print "    MinSize 28 14"
    printf "    MaxSize %.2f %.2f\n", width_points(head), roll_longest[key] * 72 / 25.4
}

# One size for each length; nodefault leaves the '*' to another list. Lengths that are no longer than the paper is wide
# are left out: CUPS would turn such a page.
function write_lengths(width, lengths, nodefault,    n, i, list, star, long, keyword, text, w, l) {
    n = split(lengths, list, " ")
    w = width_points(width)
    for (i = 1; i <= n; i++) {
        star = sub(/^[*]/, "", list[i]) && !nodefault ? "*" : ""
        if (list[i] != "=" && list[i] + 0 <= width + 1) continue
        l = list[i] == "=" ? w : list[i] * 72 / 25.4
        long = list[i] == "=" ? width : list[i]
        keyword = millimetres(w) "x" millimetres(l) "mm.Fullbleed"
        text = width " x " long " mm"
        if (keyword in size_written) continue
        size_written[keyword] = 1
        printf "    #media \"%s/%s\" %.2f %.2f\n", keyword, text, w, l
        print "    " star "MediaSize \"" keyword "\""
    }
}

# Hundredths as CUPS rounds them, without the zeros at the end.
function millimetres(points,    text) {
    text = sprintf("%.2f", int((sprintf("%.2f", points) * 2540 + 36) / 72) / 100)
    sub(/[.]?0+$/, "", text)
    return text
}

# Writes klov.drv, the driver file from which CUPS makes a PPD for every model, from three tables:
#   awk -f drv.awk options.txt sizes.txt models.txt > klov.drv
# The number of drivable models goes to standard error with -v count=1. POSIX awk.

BEGIN {
    FS = " [|] "
    DPI = 203
}

FILENAME != file { file = FILENAME; table++ }
{ sub(/[ \t\r]+$/, "") }
/^#/ || /^$/ { next }
{ for (i = 1; i <= NF; i++) gsub(/^ +| +$/, "", $i) }
table == 1 { read_option_line(); next }
table == 2 { read_size_line(); next }
table == 3 { read_model_line(); next }

END {
    if (failed) exit 1
    if (!models) fail("no model in the table")
    write_common()
    for (i = 1; i <= families; i++) write_family(i)
    if (count) print models " drivable models" > "/dev/stderr"
    if (failed) exit 1
}

function fail(text) {
    print "drv.awk: " FILENAME ":" FNR ": " text > "/dev/stderr"
    failed = 1
    exit 1
}

# --- options.txt

function read_option_line(    n, i, values, part, pair) {
    if ($1 == "built") return
    if ($1 == "group") {
        group_key[++groups] = $2
        group_text[groups] = $3
    } else if ($1 == "option") {
        option_key[++options] = $2
        option_text[options] = $4
        option_group[options] = groups
        n = split($3, values, " ")
        for (i = 1; i <= n; i++) {
            split(values[i], pair, "=")
            option_default[options, pair[1]] = pair[2]
        }
    } else if ($1 == "choice") {
        n = split($2, values, " ")
        for (i = 1; i <= n; i++) {
            part = $3
            sub(/%d/, values[i], part)
            choices[options]++
            choice_key[options, choices[options]] = values[i]
            choice_text[options, choices[options]] = part
        }
    } else if ($1 == "never") {
        never_left[++nevers] = $2
        never_right[nevers] = $3
    } else fail("unknown line: " $1)
}

# --- sizes.txt

function read_size_line(    n, i, widths) {
    if ($1 == "roll") {
        n = split($2, widths, " ")
        for (i = 1; i <= n; i++) {
            roll_lengths[widths[i]] = $3
            roll_longest[widths[i]] = $4
        }
    } else if ($1 == "label") {
        label_width[++labels] = $2
        label_lengths[labels] = $3
    } else fail("unknown line: " $1)
}

# --- models.txt

# Models of one class and one width share everything but their names, so they form one family in the driver file.
function read_model_line(    class, family) {
    if (NF != 10) fail("10 columns expected")
    if ($6 !~ /[13579bBdDfF]$/) return     # does not understand the filter's commands
    if ($7 % 8) fail("width is not a whole number of bytes")
    class = class_of($5)
    family = class " " $7
    if (!(family in family_number)) {
        family_number[family] = ++families
        family_class[families] = class
        family_width[families] = $7
    }
    family = family_number[family]
    models++
    members[family] = members[family] " " models
    model_brand[models] = $2 == "" ? "Generic" : $2
    model_name[models] = $3
    model_identity[models] = $4
    model_description[models] = $5
    model_file[models] = file_name($3)
}

function class_of(description) {
    if (description ~ /Mobile Printer$/) return "mobile"
    if (description ~ /(Label|Label\/Receipt) Printer$/ || description ~ /Label Control Board$/) return "label"
    return "receipt"
}

# PPD file names have at most eight characters.
function file_name(name,    base, n, try) {
    base = tolower(name)
    gsub(/[^a-z0-9]/, "", base)
    try = substr(base, 1, 8)
    for (n = 2; try in file_taken; n++) try = substr(base, 1, 8 - length(n)) n
    file_taken[try] = 1
    return try ".ppd"
}

# --- klov.drv

function write_common() {
    print "// Generated from the model catalogue; do not edit."
    print "#po zh_CN \"klov-zh_CN.po\""
    print "Version 0.1"
    print "DriverType custom"
    print "Filter application/vnd.cups-raster 0 rastertoklov"
    print "Filter application/vnd.cups-command 0 commandtoklov"
    print "ColorDevice No"
    print "Throughput 1"
    # The filter prints the copies itself, from the page header.
    print "ManualCopies No"
    # A receipt printer has no supply levels to ask for.
    print "Attribute \"cupsSNMPSupplies\" \"\" \"False\""
    print "Attribute \"cupsCommands\" \"\" \"ReportStatus PrintSelfTestPage org.klov.cut org.klov.feed org.klov.beep" \
        " org.klov.drawer\""
    # Offered; a queue gets it by lpadmin -o port-monitor=klovstatus.
    print "Attribute \"cupsPortMonitor\" \"socket/Status and printed jobs\" \"klovstatus\""
    print "Resolution k 1 0 0 0 \"" DPI "dpi/" DPI " dpi\""
    print "HWMargins 0 0 0 0"
    print "VariablePaperSize Yes"
}

function write_family(f,    i, n, list) {
    print ""
    print "// " family_class[f] " printers of " family_width[f] " dots"
    print "{"
    write_sizes(family_class[f], family_width[f] / 8)
    write_options(family_class[f])
    n = split(members[f], list, " ")
    for (i = 1; i <= n; i++) write_model(list[i])
    print "}"
}

function write_model(m) {
    print "  {"
    print "    Manufacturer \"" model_brand[m] "\""
    print "    ModelName \"" model_name[m] "\""
    print "    Attribute \"NickName\" \"\" \"" model_identity[m] "\""
    print "    Attribute \"ShortNickName\" \"\" \"" model_name[m] "\""
    print "    Attribute \"1284DeviceID\" \"\" \"MFG:" model_brand[m] ";MDL:" model_name[m] \
        ";CMD:ESCPOS;CLS:PRINTER;DES:" model_description[m] ";\""
    print "    PCFileName \"" model_file[m] "\""
    print "  }"
}

# A page of exactly these bytes: the smallest hundredth of a point that gives all the dots and not one more.
function width_points(bytes) {
    return (int(bytes * 8 * 72 / DPI * 100) + 1) / 100
}

function write_sizes(class, head,    key, i, w) {
    key = (head in roll_lengths) ? head : "any"
    if (!(key in roll_lengths)) fail("no roll for a head of " head " bytes")
    split("", size_written)
    if (class == "label")
        for (i = 1; i <= labels; i++) {
            w = label_width[i] == "head" ? head : label_width[i]
            if (w < head || label_width[i] == "head") write_lengths(w, label_lengths[i], 0)
        }
    write_lengths(head, roll_lengths[key], class == "label")
    print "  MinSize 28 14"
    printf "  MaxSize %.2f %.2f\n", width_points(head), roll_longest[key] * 72 / 25.4
}

# One size for each length; nodefault leaves the '*' to another list.
function write_lengths(width, lengths, nodefault,    n, i, list, star, long, keyword, text, w, l) {
    n = split(lengths, list, " ")
    w = width_points(width)
    for (i = 1; i <= n; i++) {
        star = sub(/^[*]/, "", list[i]) && !nodefault ? "*" : ""
        l = list[i] == "=" ? w : list[i] * 72 / 25.4
        long = list[i] == "=" ? width : list[i]
        keyword = millimetres(w) "x" millimetres(l) "mm.Fullbleed"
        text = width " x " long " mm"
        if (keyword in size_written) continue
        size_written[keyword] = 1
        printf "  #media \"%s/%s\" %.2f %.2f\n", keyword, text, w, l
        print "  " star "MediaSize \"" keyword "\""
    }
}

# Hundredths as CUPS rounds them, without the zeros at the end.
function millimetres(points,    text) {
    text = sprintf("%.2f", int((sprintf("%.2f", points) * 2540 + 36) / 72) / 100)
    sub(/[.]?0+$/, "", text)
    return text
}

function write_options(class,    g, o, c, open) {
    for (g = 1; g <= groups; g++) {
        open = 0
        for (o = 1; o <= options; o++) {
            if (option_group[o] != g || !((o, class) in option_default)) continue
            if (!open++) print "  Group \"" group_key[g] "/" group_text[g] "\""
            print "    Option \"" option_key[o] "/" option_text[o] "\" PickOne AnySetup 10"
            for (c = 1; c <= choices[o]; c++)
                if (offered(class, o, choice_key[o, c]))
                    print "      " (choice_key[o, c] == option_default[o, class] ? "*" : "") "Choice \"" \
                        choice_key[o, c] "/" choice_text[o, c] "\" \"\""
        }
    }
    for (g = 1; g <= nevers; g++) write_constraints(class, never_left[g], never_right[g])
}

# A printer without a cutter does not offer to cut at the end.
function offered(class, o, value) {
    return !(option_key[o] == "PostPrintAction" && value >= 2 && !has_option(class, "CutMode"))
}

function has_option(class, key,    o) {
    for (o = 1; o <= options; o++)
        if (option_key[o] == key) return (o, class) in option_default
    fail("a constraint names the unknown option " key)
}

function write_constraints(class, left, right,    nl, nr, i, j, a, b) {
    nl = split(left, a, " ")
    nr = split(right, b, " ")
    if (!has_option(class, a[1]) || !has_option(class, b[1])) return
    for (i = 2; i <= nl; i++)
        for (j = 2; j <= nr; j++)
            print "  UIConstraints \"*" a[1] " " a[i] " *" b[1] " " b[j] "\""
}

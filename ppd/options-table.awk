# Writes the options table of docs/printers.md: awk -f options-table.awk options.drv. POSIX awk.

BEGIN {
    class_count = split("receipt label mobile", class, " ")
    print "| Option | Choices | Default | Meaning |"
    print "|---|---|---|---|"
}

# Which classes a line is for. There is nothing inside a condition that has one of its own, but for CUTTER.
/^#if CUTTER/ { cutter = 1; next }
/^#if / { inner = tolower($2); negated = ""; next }
/^#elif / { negated = negated inner " "; inner = tolower($2); next }
/^#else/ { negated = negated inner " "; inner = "else"; next }
/^#endif/ { if (inner != "") inner = ""; else cutter = 0; next }

/^\/\/= / {
    split(substr($0, 5), column, " [|] ")
    print "| `" column[1] "` | `lpoptions -l` lists them | " column[2] " | " column[3] " |"
}
/^ *Group / { finish(); split(quoted($0), part, "/"); print "| **" part[2] "** | | | |" }
/^ *Option / { finish(); split(quoted($0), part, "/"); keyword = part[1]; text = part[2]; no_mobile = cutter }
/^ *\/\/: / { help = help (help == "" ? "" : " ") substr($0, index($0, "//: ") + 4) }
/^ *\*?Choice / { read_choice() }
END { finish() }

function quoted(line) {
    sub(/^[^"]*"/, "", line)
    sub(/".*/, "", line)
    return line
}

function applies_to(name) {
    if (name == "mobile" && cutter) return 0
    if (inner == "") return 1
    return inner == "else" ? !index(negated, name " ") : inner == name
}

function read_choice(    slash, value, said, c) {
    slash = index(quoted($0), "/")
    value = substr(quoted($0), 1, slash - 1)
    said = substr(quoted($0), slash + 1)
    for (c = 1; c <= class_count; c++)
        if (/\*Choice/ && applies_to(class[c])) chosen[class[c]] = value
    if (value in told) return
    told[value] = 1
    value_of[++values] = value
    text_of[values] = said
}

function pattern(i,    result) {
    result = text_of[i]
    sub(value_of[i], "%d", result)
    return result
}

# "0 Never" for a choice of its own, "5 to 100 mm" for a row of numbers.
function described(    i, result, unit) {
    for (i = 1; i <= values; i++) {
        result = result (i == 1 ? "" : (unit != "" ? " " : ", ")) "`" value_of[i] "`"
        unit = i < values && pattern(i) == pattern(i + 1) ? pattern(i) : ""
        if (unit != "") continue
        unit = i > 1 && pattern(i) == pattern(i - 1) ? pattern(i) : text_of[i]
        if (unit != text_of[i] && !sub(/^%d */, "", unit)) unit = ""
        result = result (unit == "" ? "" : " " unit)
        unit = ""
    }
    return result
}

function finish(    c, others) {
    if (keyword == "") return
    for (c = 2; c <= class_count; c++)
        if (class[c] in chosen && chosen[class[c]] != chosen["receipt"])
            others = others (others == "" ? "" : ", ") class[c] " `" chosen[class[c]] "`"
    if (no_mobile) others = others (others == "" ? "" : ", ") "none on mobile printers"
    if (others != "") others = " (" others ")"
    print "| `" keyword "`<br>" text " | " described() " | `" chosen["receipt"] "`" others " | " help " |"
    keyword = help = ""
    values = 0
    split("", told)
    split("", chosen)
}

# Writes the options table of docs/printers.md: awk -f options-table.awk options.txt. POSIX awk.

BEGIN {
    FS = " [|] "
    print "| Option | Choices | Default | Meaning |"
    print "|---|---|---|---|"
}

/^#/ || /^$/ { next }
{ for (i = 1; i <= NF; i++) gsub(/^ +| +$/, "", $i) }
$1 != "choice" { finish() }
$1 == "built" { print "| `" $2 "` | `lpoptions -l` lists them | " $3 " | " $5 " |" }
$1 == "group" { print "| **" $3 "** | | | |" }
$1 == "option" { keyword = $2; defaults = $3; text = $4; help = $5; choices = "" }
$1 == "choice" { choices = choices (choices == "" ? "" : ", ") described($2, $3) }
END { finish() }

# "0 Never" for a choice of its own, "5 to 100 mm" for a row of numbers.
function described(values, text,    n, list) {
    n = split(values, list, " ")
    if (n == 1) return "`" values "` " text
    gsub(/ /, "` `", values)
    if (!sub(/^%d */, "", text)) text = ""
    return "`" values "`" (text == "" ? "" : " " text)
}

function finish(    n, i, list, pair, seen, same, first) {
    if (keyword == "") return
    n = split(defaults, list, " ")
    split(list[1], pair, "=")
    first = pair[2]
    for (i = 1; i <= n; i++) {
        split(list[i], pair, "=")
        if (pair[2] != first) same = same (same == "" ? "" : ", ") pair[1] " `" pair[2] "`"
        seen = seen " " pair[1]
    }
    if (seen !~ /mobile/) same = same (same == "" ? "" : ", ") "none on mobile printers"
    print "| `" keyword "`<br>" text " | " choices " | `" first "`" (same == "" ? "" : " (" same ")") " | " help " |"
    keyword = ""
}

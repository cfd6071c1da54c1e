# Writes the driver file's translations with one entry for every text that holds a number:
#   awk -f po.awk klov-zh_CN.po klov.drv > build/klov-zh_CN.po
# Entries with %d in the first file are patterns; ppdc knows only whole texts. POSIX awk.

FILENAME == ARGV[1] && /^msgid ".*%d/ { pattern = quoted($0); next }
FILENAME == ARGV[1] && pattern != "" { translation[pattern] = quoted($0); pattern = ""; next }
FILENAME == ARGV[1] { print; next }

match($0, /\/[^"\/]*"/) {
    text = substr($0, RSTART + 1, RLENGTH - 2)
    if (text ~ /[0-9]/ && !(text in written)) write_entry(text)
}

function quoted(line) {
    sub(/^[^"]*"/, "", line)
    sub(/"[^"]*$/, "", line)
    return line
}

function write_entry(text,    pattern, result, rest) {
    written[text] = 1
    pattern = text
    gsub(/[0-9]+/, "%d", pattern)
    if (!(pattern in translation)) return
    result = translation[pattern]
    rest = text
    while (match(rest, /[0-9]+/)) {
        sub(/%d/, substr(rest, RSTART, RLENGTH), result)
        rest = substr(rest, RSTART + RLENGTH)
    }
    print "\nmsgid \"" text "\"\nmsgstr \"" result "\""
}

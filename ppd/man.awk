# Writes the manual page with its list of options:
#   awk -f man.awk options.drv rastertoklov.8.in > rastertoklov.8
# The line "@OPTIONS@" stands for the list. POSIX awk.

FILENAME == ARGV[1] && /^ *Option / { keyword = quoted($0); sub(/\/.*/, "", keyword); add(".TP\n.B " keyword) }
FILENAME == ARGV[1] && /^ *\/\/: / { add(substr($0, index($0, "//: ") + 4)) }
FILENAME == ARGV[1] && /^\/\/= / {
    split(substr($0, 5), column, " [|] ")
    add(".TP\n.B " column[1])
    add(column[3])
}
FILENAME == ARGV[1] { next }

/^@OPTIONS@$/ { printf "%s", list; next }
{ print }

function quoted(line) {
    sub(/^[^"]*"/, "", line)
    sub(/".*/, "", line)
    return line
}

# A sentence begins a line, and a hyphen is one.
function add(text) {
    gsub(/[.:] /, "&\n", text)
    gsub(/ \n/, "\n", text)
    gsub(/-/, "\\-", text)
    list = list text "\n"
}

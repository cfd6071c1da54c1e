# Turns models.txt into the rows of model_brief_table (C initialisers). The output file, named by the variable "out", is
# written only when every line is sound; a malformed line stops the build with its line number.

function malformed(text)
{
    print FILENAME ":" FNR ": error: " text | "cat 1>&2"
    failed = 1
}

function is_word(text)
{
    return text ~ /^0x[0-9A-F]+$/ && length(text) <= 10
}

# One model line; its fields are the columns.
function check(    i)
{
    for (i = 1; i <= 10; i++)
        if ($i ~ /^ / || $i ~ / $/)
            malformed("column " i " (" column[i] ") has blanks around it")
    if ($3 !~ /^[A-Za-z0-9-]+$/ || length($3) > 24 || $3 == "unknown")
        malformed("\"" $3 "\" is not a model name (letters, digits and '-', at most 24; \"unknown\" is taken)")
    if ($4 == "")
        malformed("the identity is empty")
    if ($5 == "")
        malformed("the description is empty")
    for (i = 1; i <= 9; i++)
        if ((i == 1 || i == 6 || i >= 8) && !is_word($i))
            malformed("column " i " (" column[i] ") is not a word such as 0x20D1: \"" $i "\"")
    if ($7 !~ /^[1-9][0-9]*$/ || length($7) > 5)
        malformed("\"" $7 "\" is not a width in dots")
    if ($10 !~ /^[0-9]+\.[0-9]+$/)
        malformed("\"" $10 "\" is not a unit factor such as 0.125")
}

BEGIN {
    FS = " [|] "
    split("id manufacturer model_name identity description type width flags_a flags_b unit_factor", column, " ")
}

/^#/ || /^$/ { next }

/[^ -~]/ || /["\\]/ {
    malformed("only printable ASCII without quotes and backslashes can stand here")
    next
}

NF != 10 {
    malformed(NF " columns, not 10")
    next
}

{
    check()
    rows[++count] = sprintf("{%su, \"%s\", \"%s\", \"%s\", \"%s\", %su, %s, %su, %su, %sf},",
                            $1, $2, $3, $4, $5, $6, $7, $8, $9, $10)
}

END {
    if (failed)
        exit 1
    for (i = 1; i <= count; i++)
        print rows[i] > out
    # The closing row answers the lookup of the name "unknown".
    print "{0xFFFFFFFFu, \"Unknown\", \"unknown\", \"\", \"\", 0xFFFFFFFFu, 0, 0, 0, 0.0f}," > out
}

# Turns models.txt into the rows of model_brief_table (C initialisers). The output file, named by the variable "out", is
# written only when every line is sound; a malformed line stops the build with its line number. Everybody else who reads
# models.txt relies on these checks. POSIX awk.

function malformed(text)
{
    print FILENAME ":" FNR ": error: " text | "cat 1>&2"
    failed = 1
}

function is_word(text)
{
    return text ~ /^0x[0-9A-F]+$/ && length(text) <= 10
}

function takes_commands()
{
    return $6 ~ /[13579BDF]$/
}

# One model line; its fields are the columns.
function check(    i)
{
    for (i = 1; i <= columns; i++)
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
    if ($11 !~ /^(receipt|label|mobile)$/)
        malformed("\"" $11 "\" is not a class: receipt, label or mobile")
    if (takes_commands())
        check_driver()
    else if ($12 != "-")
        malformed("type " $6 " takes no ESC/POS-type commands, so there is no PPD: the file is '-', not \"" $12 "\"")
}

# What the driver file needs of a model that can be driven.
function check_driver()
{
    if ($12 !~ /^[a-z0-9]+$/ || length($12) > 8)
        malformed("\"" $12 "\" is not a PPD's name (lower-case letters and digits, at most 8)")
    if ($12 in file_line)
        malformed("the file \"" $12 "\" belongs to the model in line " file_line[$12])
    file_line[$12] = FNR
    if ($7 % 8 != 0)
        malformed($7 " dots are not a whole number of bytes")
    if ($4 in identity_line)
        malformed("people could not tell it from the model in line " identity_line[$4] ": both show \"" $4 "\"")
    identity_line[$4] = FNR
}

# What it takes that a lookup finds the right row.
function check_place(    lower)
{
    if ($1 != last_id && $1 in family_line)
        malformed("family " $1 " ends in line " family_line[$1] ": the model goes behind it")
    if ($1 == "0xFFFFFFFF" || $1 ~ /^0x0+$/)
        malformed("the id " $1 " is no family's: 0 stands for none, 0xFFFFFFFF for the closing row")
    family_line[last_id = $1] = FNR
    lower = tolower($3)
    if (lower in name_line && name[lower] != $3)
        malformed("\"" $3 "\" differs from the name in line " name_line[lower] " by upper and lower case alone")
    if (lower in name_line && takes_commands() && (!name_drivable[lower] || name_width[lower] != $7))
        malformed("the filter takes the first model of a name, which is another printer here: line " name_line[lower])
    if (lower in name_line)
        return
    name[lower] = $3
    name_line[lower] = FNR
    name_drivable[lower] = takes_commands()
    name_width[lower] = $7
}

BEGIN {
    FS = " [|] "
    columns = split("id manufacturer model_name identity description type width flags_a flags_b unit_factor class file",
                    column, " ")
}

/^#/ || /^$/ { next }

/[^ -~]/ || /["\\]/ {
    malformed("only printable ASCII without quotes and backslashes can stand here")
    next
}

NF != columns {
    malformed(NF " columns, not " columns)
    next
}

{
    check()
    check_place()
    rows[++count] = sprintf("{%su, \"%s\", \"%s\", \"%s\", \"%s\", %su, %s, %su, %su, %sf},",
                            $1, $2, $3, $4, $5, $6, $7, $8, $9, $10)
}

END {
    if (!count && !failed)
        malformed("no models")
    if (failed)
        exit 1
    for (i = 1; i <= count; i++)
        print rows[i] > out
    # The closing row answers the lookup of the name "unknown".
    print "{0xFFFFFFFFu, \"Unknown\", \"unknown\", \"\", \"\", 0xFFFFFFFFu, 0, 0, 0, 0.0f}," > out
}

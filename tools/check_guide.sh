#!/bin/sh
# Checks what docs/finishing.md claims: that its examples are converted as shown, and what its searches find.
#   tools/check_guide.sh MURLCONV MURLREPORT
# An example is a block that begins with ```mrl before, followed by a block ```mrl after. A search is an indented
# command that begins with find.
set -eu
script=$(readlink -f -- "$0")
root=$(readlink -f -- "${script%/*}/..")
. "$root/tools/arguments.sh"
arguments 2 "$@"
[ $# = 2 ] || refuse 'the two programs are needed'
murlconv=$(readlink -f -- "$1")
murlreport=$(readlink -f -- "$2")
guide=$root/docs/finishing.md
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"

fail() {
    tell "$guide: $*"
    exit 1
}

# ---- The examples ----

mkdir examples samples odd
awk '
    /^```mrl before$/ { file = sprintf("examples/%d.mrl", FNR); base = FNR; next }
    /^```mrl after$/ { file = sprintf("examples/%d.want", base); next }
    /^```/ { file = ""; next }
    file { print > file }' "$guide"
examples=0
for example in examples/*.mrl; do
    # What a stopped script prints is not shown.
    "$murlconv" "$example" >printed
    line=$(basename "$example" .mrl)
    diff -u --label "$guide, line $line" --label "what the program writes" "${example%.mrl}.want" "${example%.mrl}_conv.mrl"
    examples=$((examples + 1))
done
[ $examples -ge 12 ] || fail 'there is not an example for each kind'

# ---- The searches ----

# Each as a script, search1 and so on.
awk '
    /^    (LC_ALL=C )?find / { n++; file = "search" n }
    /^ *$/ { file = "" }
    file { print > file }' "$guide"
[ "$(find . -name 'search*' | wc -l)" = 4 ] || fail 'there are not four searches'

# How many lines a search must find in a folder, with the words by which the guide says so.
expect() { # SEARCH FOLDER COUNT [WORDS]
    found=$(cd "$2" && sh "../search$1") || [ $? = 1 ] # grep and find, if there is nothing
    count=$(printf '%s' "$found" | grep -c '' || true)
    [ "$count" = "$3" ] || fail "search $1 finds $count lines in $2, not $3: $found"
    [ -z "${4-}" ] || tr '\n' ' ' <"$guide" | grep -qF "$4" || fail "it doesn't say: $4"
}

# How many items the report has of the samples, by a pattern for kind and command.
items() {
    "$murlreport" --csv items.csv samples >printed || [ $? = 1 ]
    cut -d , -f 5,6 items.csv | grep -cE "^($1)"
}

cp "$root"/samples/*.mrl samples
rm -f samples/*_conv.mrl
"$murlconv" samples/*.mrl >printed
marked=$(items '(gone|byhand|check|quiet),')
expect 1 samples "$marked" "In the samples this finds $marked lines, one for each item of these kinds, and nothing else."
expect 2 samples 0 'which stops the reading (the samples have none)'
system=$(items '(dropped|broken),[rieud][A-Z]')
# What is dropped and no system command is #LINE.
dropped=$(items 'dropped,[^#]')
expect 3 samples "$system" "in the samples this finds $system lines, $dropped that leave nothing and one that is"
expect 4 samples 0 'after its condition (the samples have none)'

# What they find, and what they pass over, each on lines of its own.
printf 'REM GROUP "Ma\337", 1, 2\n\t// getcolor a, 1, \n// READ, a, 1\n// read the file\nREM GROUP of bolts\n' >odd/a_conv.mrl
printf '%s\n' 'ON n // to nothing' 'on n GOTO a' 'ON(n)' '  iAUTO' 'IAUTO' 'IF (a) // remark' '  if (a) b = 1' 'IF a > 1 GOTO c' \
    'IF (a) == (b)' 'IF (sin(a) > 1)' >odd/A.MRP
expect 1 odd 3
expect 2 odd 1
expect 3 odd 1
expect 4 odd 3

#!/bin/sh
# The report's page in a real browser: Debian's Chromium, driven by playwright-core. Then the report as SARIF, which
# Microsoft's validator reads: every rule of the format and of its schema that is an error or a warning counts.
set -eu
cd "$(dirname -- "$(readlink -f -- "$0")")/.."
. tools/checks.sh
work=$MURL_BUILD/browser
need_browser 'the page is not tried'
rm -rf "$work/tree" "$work/many" "$work/large"
mkdir -p "$work/tree" "$work/many" "$work/large"
report=$PWD/report

# The tree of the report's tests, a script of lines that lose the same, and one whose name and text spell markup, in Latin-1.
cp -R tests/report/tree/. "$work/tree"
for line in 1 2 3 4 5 6; do
    echo "LINE 0, 0, 0, 1, 1, $line, 3"
done >"$work/tree/alike.mrl"
printf 'PRINT "</script><b>bold</b>" // caf\351\nLINE 1,2\n' >"$work/tree/<img src=x onerror=alert(1)>.mrl"
(cd "$work/tree" && "$report" --quiet --html "$work/page.html" .) || [ $? = 1 ]

# 500 scripts of 100 lines.
script=0
while [ $script -lt 500 ]; do
    awk -v script=$script 'BEGIN {
        for (line = 0; line < 20; line++)
            printf "x%d = %d\nLINE 0,0,0,x%d,%d,0,1\nPOLYGON 2,5,x%d,pts\nGETFLT \"a\",1,b\n// remark %d\n",
                line, line + script, line, line, line, line }' >"$work/many/script$script.mrl"
    script=$((script + 1))
done
# One of 10,000 lines, every second with an item.
awk 'BEGIN {
    for (line = 0; line < 2500; line++)
        printf "x%d = %d\nLINE 0,0,0,x%d,%d,0,1\nPOLYGON 2,5,x%d,pts\n// remark %d\n",
            line % 900, line, line % 900, line, line % 900, line }' >"$work/large/large.mrl"
(cd "$work/large" && "$report" --quiet --html "$work/large.html" .) || [ $? = 1 ]
# It was built for the first page, or before; from then on nothing is printed but what murlreport prints.
"$report" --quiet --html "$work/many.html" "$work/many" 2>"$work/err" || [ $? = 1 ]
[ ! -s "$work/err" ] || fail "the second use of ./report tells: $(cat "$work/err")"

CHROMIUM=$(command -v chromium || command -v chromium-browser) NODE_PATH=$modules \
    node tests/report/browser.js "$work/page.html" "$work/many.html" "$work/large.html" "$work" || fail 'the page fails in a browser'

# What the validator finds in the report of the tree, and in a copy with a line number that no file has. Its exit status
# is 0 whatever it finds, and of a file that it can't read it says nothing at all: a good one has notes.
need_npm @microsoft/sarif-multitool@5.7.0 'the page passes; SARIF is not validated'
multitool=$modules/@microsoft/sarif-multitool-linux/Sarif.Multitool
[ -x "$multitool" ] || skip 'the page passes; SARIF is not validated: sarif-multitool is not made for this system'
find_faults() { # FILE: its errors and warnings but for the address of a home page, which murlreport has none of
    "$multitool" validate --level 'Error;Warning;Note' "$1" >"$1.found" 2>&1 || return
    grep -q ': note SARIF' "$1.found" || echo "the validator can't read $1"
    grep -E ': (error|warning) ' "$1.found" | grep -v 'warning SARIF2005: .*informationUri' || true
}
(cd "$work/tree" && "$report" --quiet --sarif "$work/tree.sarif" .) || [ $? = 1 ]
sed 's/"startLine":[0-9]*/"startLine":0/' "$work/tree.sarif" >"$work/wrong.sarif"
[ -n "$(find_faults "$work/wrong.sarif")" ] || fail 'the validator of SARIF takes a wrong file'
faults=$(find_faults "$work/tree.sarif") || fail "the validator of SARIF fails: $(cat "$work/tree.sarif.found")"
[ -z "$faults" ] || fail "the report is no right SARIF: $faults"
echo "sarif: $(grep -c '"ruleId"' "$work/tree.sarif") results, no error and no warning"

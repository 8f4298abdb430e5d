#!/bin/sh
# The report's page in a real browser: Debian's Chromium, driven by playwright-core.
set -eu
cd "$(dirname -- "$(readlink -f -- "$0")")/.."
. tools/checks.sh
work=$MURL_BUILD/browser
need report 'the page is not tried'
need chromium 'the page is not tried'
{ command -v node && command -v npm; } >/dev/null || need node 'the page is not tried'
# A version that Debian's node takes: later ones want a newer node.
driver=playwright-core@1.58.0
modules=$work/$driver
rm -rf "$work/tree" "$work/many" "$work/large"
mkdir -p "$work/tree" "$work/many" "$work/large" "$modules"
if [ ! -d "$modules/node_modules/playwright-core" ] &&
    ! (cd "$modules" && PLAYWRIGHT_SKIP_BROWSER_DOWNLOAD=1 npm install --no-audit --no-fund --prefix . $driver) \
        >"$work/npm.log" 2>&1 </dev/null; then
    skip 'playwright-core can not be had from npm'
fi
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

CHROMIUM=$(command -v chromium || command -v chromium-browser) NODE_PATH=$modules/node_modules \
    node tests/report/browser.js "$work/page.html" "$work/many.html" "$work/large.html" "$work" || fail 'the page fails in a browser'

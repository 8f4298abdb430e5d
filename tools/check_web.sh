#!/bin/sh
# The page that converts, in a real browser: what it makes of folders and scripts is what the programs make of them.
set -eu
cd "$(dirname -- "$(readlink -f -- "$0")")/.."
. tools/checks.sh
work=$MURL_BUILD/check_web
need_browser 'the page that converts is not tried'
need unzip 'the page that converts is not tried'
rm -rf "$work"
mkdir -p "$work/in" "$work/out" "$work/look" "$work/native"
page=$(tools/build_web.sh "$work")
report=$root/report

# ---- What goes in ----

cd "$work/in"
cp -R "$root/tests/report/tree" tree
printf 'PRINT "</script><b>bold</b>" // caf\351\nLINE 1,2\n' >'tree/<img src=x onerror=alert(1)> ü.mrl'
cp -R "$root/tests/golden" golden
for want in golden/samples/*.want; do
    cp "$root/samples/$(basename "$want" .want).mrl" golden/samples
done

# A name that isn't UTF-8, which a browser hides, and one as it comes where it is delivered all the same.
mkdir names
printf 'EXIT\n' >"names/caf$(printf '\351').mrl"
printf 'EXIT\n' >"names/caf$(printf '\357\277\275').mrl"
printf 'EXIT\n' >names/plain.mrl

# Each at its limit or one beyond: parentheses, variables, memory of a script's data, and lengths.
mkdir limits
awk 'BEGIN {
    for (depth = 1; depth < 60; depth++) {
        open = close_ = ""
        for (i = 0; i < depth; i++) { open = open "("; close_ = close_ ")" }
        printf "LINE %s0%s,0,0,1\nx = %s1%s\n", open, close_, open, close_
    }
}' >limits/parentheses.mrl
awk 'BEGIN { for (i = 1; i <= 1010; i++) printf "v%d = %d\nLINE v%d,0,0,1\n", i, i, i }' >limits/variables.mrl
awk 'BEGIN {
    for (size = 268435300; size <= 268435460; size += 8) printf "CHAR a[%d]\nLINE SIZEOF(a),0,0,1\n", size
    for (i = 0; i < 5; i++) printf "CHAR b%d[67000000]\nLINE SIZEOF(b%d),0,0,1\n", i, i
}' >limits/payload.mrl
awk 'BEGIN { for (i = 0; i < 20000; i++) text = text "x"; printf "PRINT \"%s\"\nx = \"%s\"\nLINE %s,1\n", text, text, text }' >limits/lines.mrl

# 1,000 scripts of 5 KB, and one of 50 MB.
mkdir many large
awk 'BEGIN {
    for (script = 0; script < 1000; script++) {
        name = "many/script" script ".mrl"
        for (line = 0; line < 64; line++)
            printf "x%d = %d\nLINE 0,0,0,x%d,%d,0,1\nPOLYGON 2,5,x%d,pts\nGETFLT \"a\",1,b\n// remark %d\n",
                line % 20, line + script, line % 20, line, line % 20, line >name
        close(name)
    }
    for (line = 0; line < 770000; line++) printf "x%d = %d\nLINE 0,0,0,x%d,%d,0,1\n// this is the remark %d\n",
        line % 20, line, line % 20, line, line >"large/large.mrl"
}'
cd "$root"

# ---- The same by the program ----

# Converts a folder, as the page does.
#   convert FOLDER NAME
convert() {
    (cd "$1" && "$report" --convert --quiet --json "$1/$2.json" "$2") 2>>"$work/native.log" || [ $? = 1 ]
}

for kind in tree golden limits; do
    cp -R "$work/in/$kind" "$work/native"
    convert "$work/native" $kind
done

# A folder that is dropped comes without the one name that browsers hide.
mkdir -p "$work/shown/in" "$work/shown/native"
cp -R "$work/in/tree" "$work/shown/in"
rm "$work/shown/in/tree"/*'<'*
cp -R "$work/shown/in/tree" "$work/shown/native"
convert "$work/shown/native" tree

# A folder that was converted, then changed: scripts, and a conversion by hand. Of these the page gets what differs.
mkdir "$work/second" "$work/in/edited" "$work/in/late"
cp -R "$work/native/tree" "$work/second"
cd "$work/second/tree"
sed -i '1s/^/POSIT 1,2,3 \/\/ first\n/' dims/plate.mrl
sed -i '$s/$/\n\/\/ by hand/' dims/plate_conv.mrl outline/loop_conv.mrl
printf 'DELENT 5\nEXIT\n' >outline/new.mrl
for file in dims/plate.mrl dims/plate_conv.mrl outline/loop_conv.mrl outline/new.mrl; do
    mkdir -p "$work/in/edited/${file%/*}"
    cp $file "$work/in/edited/$file"
done
mkdir "$work/in/late/dims"
sed '$s/$/ once more/' dims/plate_conv.mrl >"$work/in/late/dims/plate_conv.mrl"
cp "$work/in/late/dims/plate_conv.mrl" dims/
cd "$root"
convert "$work/second" tree

# ---- In the browser ----

CHROMIUM=$(command -v chromium || command -v chromium-browser) NODE_PATH=$modules \
    node tests/web/browser.js "$page" "$work" || fail 'the page that converts fails in a browser'

# ---- What came out ----

# A zip, unpacked where the scripts are, makes of them what the program makes of them; and the report is in it.
#   compare_zip ZIP FOLDER_BEFORE FOLDER_AFTER
compare_zip() {
    whole=$work/whole/$1
    mkdir -p "$whole"
    cp -R "$2" "$whole"
    unzip -qo "$work/out/$1.zip" -d "$whole" >&2 || fail "$1.zip can't be unpacked"
    [ -s "$whole/report.html" ] || fail "$1.zip has no report"
    diff -r "$3" "$whole/${3##*/}" >&2 || fail "the page and the program convert $1 in different ways"
    cmp "$work/out/$1.json" "$3.json" >&2 || fail "the page and the program report $1 in different ways"
}

for kind in tree golden limits; do
    compare_zip $kind "$work/in/$kind" "$work/native/$kind"
done
compare_zip dropped "$work/shown/in/tree" "$work/shown/native/tree"
diff -r "$work/native/tree" "$work/out/written" >&2 || fail 'the page writes another folder than the program'
diff -r "$work/second/tree" "$work/out/rewritten" >&2 || fail 'the page merges in another way than the program'
mkdir -p "$work/whole/scripts"
unzip -q "$work/out/scripts.zip" -d "$work/whole/scripts"
for script in dims/plate outline/loop; do
    cmp "$work/native/tree/${script}_conv.mrl" "$work/whole/scripts/${script#*/}_conv.mrl" >&2 || fail "$script, dropped"
done

# What each golden pair wants; those of a .run are converted in one run, and the report's program takes each by itself.
pairs=0
for want in tests/golden/*/*.want; do
    script=${want#tests/golden/}
    cmp "$want" "$work/whole/golden/golden/${script%.want}_conv.mrl" >&2 || fail "$script in the page"
    pairs=$((pairs + 1))
done
[ $pairs -gt 100 ] || fail "only $pairs golden pairs"
echo "web: $pairs golden pairs are as wanted; $(du -k "$page" | cut -f 1) KB"

#!/bin/sh
# The Windows side: builds murlconv.exe and its tests, and runs them under wine. Every golden pair and sample
# must come out as from the POSIX build, with CR LF for LF.
set -eu
cd "$(dirname -- "$(readlink -f -- "$0")")/.."
. tools/checks.sh
work=$MURL_BUILD/windows_check
wine_home=$MURL_BUILD/windows_wine

# ---- The file itself: small, and at home on any Windows ----

check_exe() { # PROGRAM GREATEST_SIZE
    program=$(basename "$1")
    size=$(wc -c <"$1")
    [ "$size" -lt "$2" ] || fail "$program has $size bytes"
    strange=$(x86_64-w64-mingw32-objdump -p "$1" | sed -n 's/.*DLL Name: //p' | tr '[:upper:]' '[:lower:]' |
        grep -v -x -e kernel32.dll -e msvcrt.dll -e user32.dll -e comdlg32.dll -e shell32.dll -e shlwapi.dll \
            -e advapi32.dll -e ole32.dll) || true
    [ -z "$strange" ] || fail "$program needs $strange"
    iconv -f UTF-16LE -t UTF-8 -c "$1" | grep -qa "OriginalFilename.*$program" || fail "$program has no version"
    grep -qa longPathAware "$1" || fail "$program has no manifest"
    grep -qa 'stack smashing detected' "$1" || fail "$program has no guarded stacks"
}

# ---- The same results as on POSIX ----

# Two copies of all scripts, as they are and with CR LF: one for each program.
copy_scripts() {
    mkdir -p "$work/posix/crlf"
    cp -R samples "$work/posix/samples"
    cp -R tests/golden "$work/posix/golden"
    find "$work/posix" -name '*_conv.mr[lp]' -exec rm {} +
    cp -R "$work/posix/samples" "$work/posix/golden" "$work/posix/crlf"
    find "$work/posix/crlf" -name '*.mr[lp]' -exec perl -pi -e 's/\r?\n/\r\n/' {} +
    cp -R "$work/posix" "$work/windows"
    (cd "$work/posix" && find . -name '*.mr[lp]' | sort) >"$work/scripts"
    [ -s "$work/scripts" ] || fail 'there are no scripts'
}

# Many scripts a run, as a start of wine takes long.
convert_scripts() {
    (cd "$work/posix" && xargs -d '\n' -n 200 "$MURL_BUILD/release/murlconv") \
        <"$work/scripts" >"$work/posix.out"
    (cd "$work/windows" && tr / '\134' | xargs -d '\n' -n 200 timeout 300 wine "$exe" 2>>"$wine_log") \
        <"$work/scripts" >"$work/windows.out"
}

compare_scripts() {
    to_crlf "$work/posix.out" | cmp - "$work/windows.out" || fail 'messages differ from those on POSIX'
    while read -r script; do
        output=${script%.*}_conv.${script##*.}
        to_crlf "$work/posix/$output" | diff -u --label "posix $output" --label "windows $output" \
            - "$work/windows/$output" || fail "results differ from those on POSIX"
        cmp "$work/posix/$script" "$work/windows/$script" || fail "$script was changed"
    done <"$work/scripts"
    echo "windows: $(wc -l <"$work/scripts") scripts come out as on POSIX"
}

# ---- Paths of every kind, in one run ----

check_paths() {
    mkdir -p "$work/paths/x y" "$work/paths/dir.d" "$work/paths/taken_conv.mrl" "$work/paths/folder.mrl"
    cd "$work/paths"
    drive=Z:$(pwd | tr / '\134')
    long=$(printf '%0300d' 0)
    printf 'LINE 1,2,3,4,5,6' >../line.mrl
    "$MURL_BUILD/release/murlconv" ../line.mrl
    mkdir -p 'wild/Größe 文字'
    for script in 'x y/a b.mrl' dir.d/script .mrl up.MRL dots.a.b.mrp drive.mrl 'é.mrl' taken.mrl twice.mrl \
        'Чертёж.mrl' '図面😀.mrl' 'wild/Größe 文字/ä.mrl' 'wild/Größe 文字/я😀.MRL' 'wild/Größe 文字/done.mrl'; do
        cp ../line.mrl "$script"
    done
    : >'wild/Größe 文字/done_conv.mrl'
    wine_run "$exe" "$drive\\x y\\a b.mrl" 'dir.d\script' missing.mrl ./.mrl 'x y\..\up.MRL' 'dots.a.b.mrp' \
        'folder.mrl' z:drive.mrl 'é.mrl' "$long.mrl" taken.mrl 'Z:\proc\version' twice.mrl twice.mrl \
        'Чертёж.mrl' '図面😀.mrl' 'fehlt Ä図.mrl' 'wild\Größe 文字\*.mrl' 'wild\*.mrl' \
        >../paths.out || fail 'paths: exit status is not 0'
    {
        printf 'Unable to open %s' missing.mrl folder.mrl "$long.mrl"
        printf 'Unable to Open file %s' taken_conv.mrl 'Z:\proc\version_conv'
        printf 'Unable to open %s' 'fehlt Ä図.mrl' 'wild\*.mrl'
    } | diff -u --label wanted --label printed - ../paths.out || fail 'paths: messages'
    cd "$root"
    [ "$(find "$work/paths/wild" -type f | wc -l)" = 6 ] || fail 'paths: outputs were converted'
    for output in 'x y/a b_conv.mrl' dir.d/script_conv _conv.mrl up_conv.MRL dots.a.b_conv.mrp drive_conv.mrl \
        'é_conv.mrl' twice_conv.mrl 'Чертёж_conv.mrl' '図面😀_conv.mrl' 'wild/Größe 文字/ä_conv.mrl' \
        'wild/Größe 文字/я😀_conv.MRL' 'wild/Größe 文字/done_conv.mrl'; do
        to_crlf "$work/line_conv.mrl" | diff -u --label wanted --label "$output" - "$work/paths/$output" ||
            fail paths
    done
    echo 'windows: paths are taken as they come'
}

# The report says of the samples what it says on POSIX.
check_report() {
    mkdir -p "$work/report"
    cp samples/*.mr[lp] "$work/report"
    rm -f "$work/report"/*_conv.mr[lp]
    cd "$work/report"
    "$MURL_BUILD/report/murlreport" --quiet --csv - . >../report_posix.csv || [ $? = 1 ]
    status=0
    wine_run "$MURL_BUILD/windows/murlreport.exe" --quiet --csv - . >../report_windows.csv || status=$?
    [ $status = 1 ] || fail "the exit status of murlreport.exe is $status"
    sed 's/\r$//; s|^\.\\|./|' ../report_windows.csv | diff -u --label posix --label windows ../report_posix.csv - ||
        fail 'the report differs from that on POSIX'
    echo "windows: the report has $(($(wc -l <../report_posix.csv) - 1)) items, as on POSIX"
    cd "$root"
}

need windows 'the Windows side is not built'
build_preset release
build_preset report
build_preset windows
exe=$MURL_BUILD/windows/murlconv.exe
check_exe "$exe" 1000000
check_exe "$MURL_BUILD/windows/murlreport.exe" 3000000

need wine 'the Windows side was built, but not run'
. tools/wine.sh
rm -rf "$work"
mkdir -p "$work/empty"
wine_start
(cd "$work/empty" && wine_run "$MURL_BUILD/windows/tests/windows_test.exe")
copy_scripts
convert_scripts
compare_scripts
check_paths
check_report

need dialog 'the open dialog was not tried'
. tests/platform/windows_dialog.sh
check_dialog

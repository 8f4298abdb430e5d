#!/bin/sh
# The programs for Linux that need no library: each pair and the report's tree through them, in a root that holds
# nothing else. Those for another processor go through an emulator. All results must be those of the native programs.
set -eu
cd "$(dirname -- "$0")/.."
. tools/checks.sh
work=$MURL_BUILD/linux_check

# What a program is linked with: nothing, and at an address that can't be foreseen.
check_program() {
    readelf --file-header --program-headers --dynamic "$1" >"$work/elf"
    grep -q 'Type: *DYN' "$work/elf" || fail "$1 is at a fixed address"
    ! grep -e INTERP -e NEEDED "$work/elf" || fail "$1 needs something"
}

# A root with the programs of a preset, if one is named, and the scripts.
make_root() { # NAME [PRESET]
    mkdir -p "$work/$1"
    cp -R tests/golden samples tests/report/tree "$work/$1"
    find "$work/$1" -name '*_conv.mr[lp]' -exec rm -f {} +
    [ $# = 1 ] || cp "$MURL_BUILD/$2/murlconv" "$MURL_BUILD/$2/murlreport" "$work/$1"
}

# The scripts of each run of the converter, as paths from the root: a pair has one, a folder X.run several.
list_runs() (
    cd "$work/native"
    for want in golden/*/*.want; do
        echo "${want%.want}.mrl"
    done | sed 's|^golden/samples/|samples/|'
    for run in golden/*/*.run; do
        for want in "$run"/*.want; do
            printf '%s ' "${want%.want}.mrl"
        done
        echo
    done
)

# Runs everything in a root; the words after it make a command of a program's name.
run_all() { # ROOT WORD...
    cd "$work/$1"
    shift
    while read -r scripts; do
        # shellcheck disable=SC2086 # several paths
        run murlconv $scripts
    done <"$work/runs" >"$work/printed"
    status=0
    run murlreport --csv tree.csv --json tree.json --html tree.html tree </dev/null >report 2>&1 || status=$?
    [ $status = 1 ] || fail "murlreport in $PWD ended with $status: $(cat report)"
    mv "$work/printed" .
    cd "$root"
}

compare() {
    rm -f "$work/$1/murlconv" "$work/$1/murlreport"
    # The page keeps its ticks by a number made of the folder, which is another in each root.
    find "$work" -maxdepth 2 -name tree.html -exec sed -i 's/"folder":"[0-9a-f]*"/"folder":""/' {} +
    diff -r "$work/native" "$work/$1" || fail "the programs for $1 differ from the native ones"
    echo "linux: $(wc -l <"$work/runs") runs and the report of a tree for $1 are those of the native programs"
}

need linux 'the programs for any Linux are not built'
for preset in report linux-x86_64 linux-aarch64; do
    build_preset $preset
done
rm -rf "$work"
mkdir -p "$work"
for arch in x86_64 aarch64; do
    for program in murlconv murlreport; do
        check_program "$MURL_BUILD/linux-$arch/$program"
    done
done

make_root native
list_runs >"$work/runs"
run() {
    program=$1
    shift
    "$MURL_BUILD/report/$program" "$@" </dev/null
}
run_all native
converted=$(find "$work/native/golden" "$work/native/samples" -name '*_conv.mrl' | wc -l)
[ "$converted" = "$(find tests/golden -name '*.want' | wc -l)" ] || fail "$converted conversions of the golden pairs"

make_root aarch64 linux-aarch64
run() {
    program=$1
    shift
    qemu-aarch64-static "./$program" "$@" </dev/null
}
run_all aarch64
compare aarch64

make_root x86_64 linux-x86_64
as_root=
[ "$(id -u)" = 0 ] || as_root='unshare --map-root-user'
run() {
    program=$1
    shift
    $as_root chroot . "/$program" "$@" </dev/null
}
(cd "$work/x86_64" && run murlreport --version) >/dev/null ||
    skip 'nothing was run in an empty root: chroot is not allowed'
run_all x86_64
compare x86_64

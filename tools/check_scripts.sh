#!/bin/sh
# ./convert and ./check where they are used: in a checkout with an odd path, reached through a link, moved after a
# build, by a user without a locale, in another user's checkout, without the packages.
set -eu
cd "$(dirname -- "$0")/.."
. tools/checks.sh

# The copy that is tried is in a place that any user may enter. Its path has what paths on other machines have.
work=$(mktemp -d)
chmod 755 "$work"
trap 'chmod -R u+w "$work"; rm -rf "$work"' EXIT
trap 'exit 1' HUP INT TERM
copy="$work/Maßstab 1 & 2/murl conv"
mkdir -p "$copy" "$work/scripts" "$work/home" "$work/stub"
for entry in check convert CMakeLists.txt CMakePresets.json LICENSE README.md CHANGELOG.md cmake docs packaging \
    samples src tools tests; do
    cp -R "$entry" "$copy"
done
ln -s "$copy" "$work/link"

# Runs a command with no more of an environment than it needs; what it prints goes to $work/out and $work/err, its
# status is in $status. MURL_BUILD is not passed on.
run() {
    status=0
    env -i PATH="$work/stub:$PATH" HOME="$work/home" "$@" >"$work/out" 2>"$work/err" || status=$?
}

# What the last run printed (out or err) must be these lines; the words in capitals of the wanted lines stand for
# what depends on the machine.
expect() {
    sed -e "s|$work|WORK|g" -e 's|murlconv/[0-9]*|murlconv/SUM|' "$work/$1" |
        diff -u --label "wanted ($2)" --label "$1" - "$work/wanted" >"$work/diff" 2>&1 ||
        fail "$2: $(cat "$work/diff" "$work/err")"
}

# The status of the last run, its standard output, and its standard error from here.
expect_run() { # WHAT STATUS OUT
    [ "$status" = "$2" ] || fail "$1: status $status: $(cat "$work/out" "$work/err")"
    cat >"$work/wanted"
    expect err "$1"
    printf '%s' "$3" >"$work/wanted"
    expect out "$1"
}

# A program that takes another's place for the runs that follow: the text of a shell script.
stub() {
    printf '#!/bin/sh\n%s\n' "$2" >"$work/stub/$1"
    chmod +x "$work/stub/$1"
}

fresh_scripts() {
    rm -rf "$work/scripts"
    mkdir "$work/scripts"
    cp samples/plate.mrl "$work/scripts/a plate.mrl"
    cp samples/plate.mrl "$work/scripts/Ä.mrl"
    chmod 777 "$work/scripts"
}

expect_converted() {
    for script in "$work/scripts/a plate" "$work/scripts/Ä"; do
        cmp tests/golden/samples/plate.want "${script}_conv.mrl" || fail "$1"
    done
}

# The first use builds and says so; the next, by another list, through links and after that by another user, says
# nothing. Outputs that lie in the sources change nothing.
check_first_use() {
    fresh_scripts
    printf 'no script' >"$copy/src/rules/x_conv.mrl"
    printf '%s\r\n' "$work/scripts/a plate.mrl" "$work/scripts/Ä.mrl" >"$work/list"
    (cd / && run "$work/link/convert" <"$work/list" && expect_run 'first use' 0 '' <<END
convert: building murlconv in WORK/Maßstab 1 & 2/murl conv/build/release
END
    )
    expect_converted 'a list with CR LF'

    fresh_scripts
    printf '%s\0' "$work/scripts/a plate.mrl" "$work/scripts/Ä.mrl" >"$work/list"
    run "$work/link/convert" <"$work/list"
    expect_run 'second use' 0 '' </dev/null
    expect_converted 'a list with NULs'

    fresh_scripts
    ln -s "$work/link/convert" "$work/convert"
    (cd "$work/scripts" && run ../convert 'a plate.mrl' Ä.mrl missing.mrl && expect_run 'names' 0 \
        'Unable to open missing.mrl' </dev/null)
    expect_converted 'names in the current folder'
    tools/check_guide.sh "$copy/build/release/murlconv" docs/finishing.md
}

# Another user's checkout, which was moved since his own build: he can use what its owner has built there, and
# builds in his cache when that is too old.
check_shared() {
    mkdir -p "$work/home/.cache"
    mv "$copy" "$work/moved"
    copy=$work/moved
    other=
    if [ "$(id -u)" = 0 ]; then
        other='setpriv --reuid=65534 --regid=65534 --clear-groups'
    fi
    cache=$work/home/.cache/murlconv/$(printf %s "$copy" | cksum | cut -d ' ' -f 1)
    mkdir -p "$cache"
    cp -R "$copy/build/release" "$cache"
    [ -z "$other" ] || chown -R 65534:65534 "$work/home"
    chmod -R a-w "$copy"
    fresh_scripts
    # shellcheck disable=SC2086 # several words
    run $other "$copy/convert" "$work/scripts/a plate.mrl" "$work/scripts/Ä.mrl"
    expect_run 'moved, and the folder of another user' 0 '' <<END
convert: building murlconv in WORK/home/.cache/murlconv/SUM/release
convert: WORK/home/.cache/murlconv/SUM/release was made for another place; it is made anew
END
    expect_converted 'moved, and the folder of another user'
    chmod -R u+w "$copy"
}

# A build that fails shows its own log, not that of an earlier one.
check_failed_build() {
    stub cmake 'echo no compiler; exit 1'
    mkdir -p "$work/own"
    echo 'an old log' >"$work/own/release.log"
    run MURL_BUILD="$work/own" "$copy/convert" "$work/scripts/Ä.mrl"
    expect_run 'failed build' 1 '' <<END
convert: building murlconv in WORK/own/release
no compiler
convert: release could not be built
END
    rm "$work/stub/cmake"
}

# The command line of ./check, and its last line.
check_verdicts() {
    run "$copy/check" debug nonsense
    expect_run 'unknown step' 2 '' <<END
check: there is no step 'nonsense'
$(sed -n "s/^all_steps='\(.*\)'/steps: \1/p" check)
options: --allow-skips --help
END
    run "$copy/check" --quick
    [ $status = 2 ] || fail 'unknown option'

    # Packages that are all there, and a source that isn't as it should be.
    stub dpkg-query 'printf installed'
    echo 'int  x;' >"$copy/src/odd.cpp"
    run "$copy/check" --allow-skips style
    [ "$status $(tail -n 1 "$work/out")" = '1 == failed: style' ] || fail 'a failed step'

    # Only what builds is there, and nothing can be installed.
    # shellcheck disable=SC2016 # the stub's own
    stub dpkg-query 'case $* in *g++ | *cmake | *ninja-build) printf installed ;; *) exit 1 ;; esac'
    stub apt-get 'exit 100'
    stub sudo 'exit 1'
    for wanted in 0 1; do
        # shellcheck disable=SC2046 # the option or nothing
        run "$copy/check" $([ $wanted = 1 ] || echo --allow-skips) style debug
        [ $status = $wanted ] || fail "skipped steps: status $status"
        tail -n 1 "$work/out" >"$work/last"
        mv "$work/last" "$work/out"
        cat >"$work/wanted" <<'END'
== passed: none; skipped: style (the sources were not looked at: the packages for style are not there), debug (no test is built: the packages for check are not there)
END
        expect out 'skipped steps'
    done
}

# A release is made of a clean tree, and of one version.
check_release() {
    need release 'no release was tried'
    run git -C "$copy" init --quiet
    run "$copy/tools/release.sh" "$work/dist"
    [ "$status $(head -n 1 "$work/err")" = '1 release: not committed:' ] || fail "a tree with changes: $(cat "$work/err")"
    sed -i '/^## /s/[0-9.]*,/9.9,/' "$copy/CHANGELOG.md"
    run "$copy/tools/release.sh" "$work/dist"
    grep -q 'the newest entry of CHANGELOG.md is "9.9, ' "$work/err" || fail "two versions: $(cat "$work/err")"
    [ $status = 1 ] || fail "two versions: status $status"
    [ ! -e "$work/dist" ] || fail 'a release that should have been refused'
    rm -rf "$copy/.git"
}

check_first_use
check_release
check_shared
check_failed_build
check_verdicts
echo 'scripts: ./convert and ./check work from odd places, and tell what they do'

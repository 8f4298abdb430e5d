#!/bin/sh
# ./convert and ./check as they are used: in a checkout with an odd path, reached through a link, moved after a
# build, by a user without a locale, where nothing can be written, without the packages. And every script of ours
# prints its usage if it is asked to, or is given what it doesn't know.
#   tools/check_scripts.sh [quick]     quick: not if they have passed as they are
set -eu
cd "$(dirname -- "$(readlink -f -- "$0")")/.."
most=1
. tools/checks.sh
case ${1-quick} in
quick) ;;
*) refuse "what is $1?" ;;
esac

passed=$MURL_BUILD/passed_scripts
sum=$(find .ci .gitattributes check convert report CMakeLists.txt CMakePresets.json cmake bench/run fuzz/run \
    tests/CMakeLists.txt tests/coverage tests/hostile tests/mutate tools packaging samples -type f ! -name '*_conv*' -exec sha256sum {} + |
    sort | sha256sum)
if [ -n "${1-}" ] && [ "$(cat "$passed" 2>/dev/null)" = "$sum" ]; then
    leave_out 'scripts, which have passed as they are'
    exit
fi

# The copy that is tried is in a folder that any user may enter. Its path has what paths on other machines have.
work=$(mktemp -d)
chmod 755 "$work"
trap 'chmod -R u+w "$work"; rm -rf "$work"' EXIT
trap 'exit 1' HUP INT TERM
copy="$work/Maßstab 1 & 2/murl conv"
mkdir -p "$copy" "$work/scripts" "$work/home" "$work/stub"
for entry in .gitattributes .ci check convert report bench fuzz CMakeLists.txt CMakePresets.json LICENSE README.md CHANGELOG.md SECURITY.md \
    cmake debian docs packaging samples src tools tests; do
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
    sed "s|$work|WORK|g" "$work/$1" |
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

# Replaces a program for the runs that follow: its name, and the text of a shell script.
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

# The first use builds and says so; the next, by another list and through links, says nothing. Outputs that lie in the
# sources change nothing.
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
}

# What ./convert has built can be installed under any prefix, and the man page then names the documents there.
check_installed() {
    prefix="$work/installed here"
    cmake --install "$copy/build/release" --prefix "$prefix" >"$work/installed.log"
    fresh_scripts
    "$prefix/bin/murlconv" "$work/scripts"/*.mrl
    expect_converted 'the installed program'
    grep -q "^\.I $prefix/share/doc/murlconv/finishing.md" "$prefix/share/man/man1/murlconv.1" ||
        fail 'the installed man page'
}

# On a terminal the last line tells what was written; the second of two waits for the first, and says so.
check_terminal() {
    fresh_scripts
    run script -qec "'$copy/convert' '$work/scripts/Ä.mrl' missing.mrl" /dev/null </dev/null
    tr -d '\r' <"$work/out" >"$work/lines"
    mv "$work/lines" "$work/out"
    expect_run 'a terminal' 0 "Unable to open missing.mrl
convert: 1 of 2 files written, X_conv.mrl beside X.mrl; \
what is left to do: 'WORK/Maßstab 1 & 2/murl conv/report' PATH...
" </dev/null
    touch "$copy/src/newer"
    flock "$copy/build/lock" sleep 3 &
    sleep 1
    run "$copy/convert" "$work/scripts/Ä.mrl"
    [ "$(head -n 1 "$work/err")" = "convert: waiting for another build in $copy/build" ] || fail "two at once: $(cat "$work/err")"
    wait
}

# A checkout that was moved since its build is built again; one that can't be written to says what to do, and so does
# one with characters in its path that mean something to CMake.
check_moved() {
    mv "$copy" "$work/moved"
    copy=$work/moved
    run "$copy/convert" "$work/scripts/Ä.mrl"
    expect_run 'moved' 0 '' <<END
convert: building murlconv in WORK/moved/build/release
convert: WORK/moved/build/release was made for another path; it is made again
END
    run MURL_BUILD=/proc/none "$copy/convert" "$work/scripts/Ä.mrl"
    expect_run 'nothing can be written' 1 '' <<END
convert: can't write to /proc/none; set MURL_BUILD to a folder of yours
END
    run MURL_BUILD="$work/a;b" "$copy/convert" "$work/scripts/Ä.mrl"
    expect_run 'a semicolon' 1 '' <<END
convert: can't build where a path has one of [ ] # ; \\: WORK/a;b
END
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
convert: WORK/own/release could not be prepared
END
    rm "$work/stub/cmake"
}

# The command line of ./check, and its last line.
check_verdicts() {
    for script in check .ci/run bench/run fuzz/run tests/coverage tests/hostile tests/mutate tools/*.sh; do
        if [ ! -x "$script" ]; then
            continue
        fi
        run "$copy/$script" --help
        [ "$status $(head -n 1 "$work/out")" = "0 $(sed -n '2s/^# //p' "$script")" ] || fail "$script --help"
        run "$copy/$script" nonsense --nonsense
        [ "$status" = 2 ] || fail "$script --nonsense: $status"
        for made in nonsense "$copy/nonsense"; do
            [ ! -e "$made" ] || fail "$script has made $made"
        done
    done

    # All packages are installed, and a source isn't as it should be.
    stub dpkg-query 'printf installed'
    echo 'int  x;' >"$copy/src/odd.cpp"
    run "$copy/check" --allow-skips style
    [ "$status $(tail -n 1 "$work/out")" = '1 == failed: style' ] || fail 'a failed step'

    # Only what is needed to build is installed, and nothing else can be.
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

# A release needs an address, a clean tree, and the same versions everywhere.
check_release() {
    need release 'no release was tried'
    expect_refused() {
        run "$copy/tools/release.sh" "$work/dist"
        [ "$status $(head -n 1 "$work/err")" = "1 release: $1" ] || fail "a release without '$1': $(cat "$work/err")"
        [ ! -e "$work/dist" ] || fail "a release in spite of '$1'"
    }
    mkdir "$work/kept"
    cp -R packaging/home CHANGELOG.md README.md SECURITY.md debian/control debian/changelog "$work/kept"
    (
        cd "$copy"
        run git init --quiet
        printf 'address=\ncontact=\n' >packaging/home
        expect_refused 'packaging/home has no address and contact yet'
        printf 'address=https://example.org/\ncontact=bugs@example.org\n' >packaging/home
        for document in README.md SECURITY.md; do
            expect_refused "$document doesn't name the contact bugs@example.org"
            echo bugs@example.org >>$document
        done
        maintainer='the murlconv authors <bugs@example.org>'
        expect_refused "the maintainer in debian/control isn't $maintainer"
        sed -i "s/^Maintainer: .*/Maintainer: $maintainer/" debian/control
        expect_refused "the newest entry of debian/changelog isn't by $maintainer"
        sed -i "s/^ -- .*>/ -- $maintainer/" debian/changelog
        expect_refused "the home page in debian/control isn't https://example.org/"
        sed -i '1aHomepage: https://example.org/' debian/control
        expect_refused 'not committed:'
        sed -i '/^ -- /s/2026 /2025 /' debian/changelog
        expect_refused 'CHANGELOG.md and debian/changelog disagree:'
        version=$(sed -n 's/^project(.* VERSION \([0-9.]*\) .*/\1/p' CMakeLists.txt)
        sed -i '/^## /s/[0-9.]*,/9.9,/' CHANGELOG.md
        expect_refused "CMakeLists.txt has version $version, the newest entry of CHANGELOG.md is \"$(
            sed -n '/^## /{s/^## //p;q;}' CHANGELOG.md)\""
        mv "$work/kept/control" "$work/kept/changelog" debian
        mv "$work/kept/home" packaging
        mv "$work/kept"/* .
        rm -rf .git
    )
    # A checkout made for Windows is the same.
    git -C "$copy" init --quiet
    git -C "$copy" add .
    git -C "$copy" -c user.name=a -c user.email=b commit --quiet -m a
    git clone --quiet -c core.autocrlf=true "$copy" "$work/clone"
    git -C "$copy" ls-files | while read -r file; do
        cmp "$copy/$file" "$work/clone/$file"
    done
    rm -rf "$copy/.git"
}

check_first_use
check_installed
check_terminal
check_release
check_moved
check_failed_build
check_verdicts
echo "$sum" >"$passed"
echo 'scripts: ./convert and ./check work at odd paths, and say what they do'

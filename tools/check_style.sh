#!/bin/sh
# The form of the code, and the faults that can be seen without running it: by clang-format, clang-tidy, cppcheck
# and shellcheck. Exceptions are in .clang-tidy and tools/cppcheck.txt, with their reasons; those of the shell
# scripts beside the line.
#   tools/check_style.sh [quick]     quick: without clang-tidy where it has more than ten sources to look at
set -eu
cd "$(dirname -- "$(readlink -f -- "$0")")/.."
most=1
. tools/checks.sh
case ${1-quick} in
quick) ;;
*) refuse "what is $1?" ;;
esac

need style 'the sources were not looked at'
need check 'the sources were not looked at'
debug=$MURL_BUILD/debug
good=$MURL_BUILD/tidy

# Sources that clang-tidy hasn't found good as they are, one a line, each behind the name of what remembers it: a sum
# of the source, of what it includes of ours, and of the rules.
stale_sources() {
    rules=$(clang-tidy --version | cat - .clang-tidy CMakePresets.json CMakeLists.txt | sha256sum)
    find src -name '*.cpp' ! -name '*windows*.cpp' | sort | while read -r source; do
        includes=$(g++ -MM -std=c++17 -I src -isystem "$debug/src/report/libraries" "$source" | sed 's/^[^:]*: //; s/\\$//')
        # shellcheck disable=SC2086 # several names, none with a blank
        sum=$(echo "$rules" | cat - $includes | sha256sum | cut -d ' ' -f 1)
        [ -e "$good/$sum" ] || echo "$sum $source"
    done
}

# Runs clang-tidy on what isn't known to be good. Its standard error has only counts of what was suppressed.
run_tidy() {
    mkdir -p "$good"
    stale_sources >"$MURL_BUILD/stale"
    count=$(wc -l <"$MURL_BUILD/stale")
    if [ -n "${1-}" ] && [ "$count" -gt 10 ]; then
        leave_out "clang-tidy of $count sources"
        return
    fi
    tell "clang-tidy of $count sources"
    # shellcheck disable=SC2016 # for the shell inside
    xargs -r -P "$(nproc)" -L 1 sh -c 'clang-tidy --quiet -p "$1" "$4" 2>/dev/null && : >"$2/$3"' sh "$debug" "$good" \
        <"$MURL_BUILD/stale" >"$MURL_BUILD/tidy.log" || {
        cat "$MURL_BUILD/tidy.log"
        exit 1
    }
}

tell clang-format
# shellcheck disable=SC2046 # no name of ours has a blank
clang-format --dry-run -Werror $(find src tests tools bench fuzz -name '*.cpp' -o -name '*.h')

tools/check_includes.sh

configure debug
run_tidy "$@"

# Its folder remembers what was found in sources that haven't changed.
tell cppcheck
mkdir -p "$MURL_BUILD/cppcheck"
cppcheck --quiet --cppcheck-build-dir="$MURL_BUILD/cppcheck" --std=c++17 --enable=warning,performance,portability --error-exitcode=1 -j "$(nproc)" \
    --suppressions-list=tools/cppcheck.txt -I src src

tell shellcheck
find check convert report .ci tools packaging tests bench fuzz -type f ! -name '*_conv*' -exec awk '
    FNR == 1 && /^#!\/bin\/(ba)?sh/ || FNR <= 9 && /^# shellcheck shell=/ { print FILENAME }' {} + | sort |
    xargs shellcheck --external-sources --source-path=SCRIPTDIR:SCRIPTDIR/..

#!/bin/sh
# The form of the code, and the faults that can be seen without running it: by clang-format, clang-tidy, cppcheck
# and shellcheck. Exceptions stand with their reasons in .clang-tidy and tools/cppcheck.txt; those of the shell
# scripts beside the line.
set -eu
cd "$(dirname -- "$0")/.."
. tools/checks.sh

need style 'the sources were not looked at'
need check 'the sources were not looked at'

# shellcheck disable=SC2046 # no name of ours has a blank
clang-format --dry-run -Werror $(find src tests bench fuzz -name '*.cpp' -o -name '*.h')

tools/check_includes.sh

# The debug build tells how each file is compiled. Standard error has only counts of what was suppressed.
build_preset debug
find src -name '*.cpp' ! -name '*windows*.cpp' | sort |
    xargs -P "$(nproc)" -n 4 clang-tidy --quiet -p "$MURL_BUILD/debug" >"$MURL_BUILD/tidy.log" 2>/dev/null ||
    { cat "$MURL_BUILD/tidy.log"; exit 1; }

cppcheck --quiet --std=c++17 --enable=warning,performance,portability --error-exitcode=1 -j "$(nproc)" \
    --suppressions-list=tools/cppcheck.txt -I src src

find check convert .ci tools packaging tests bench fuzz -type f ! -name '*_conv*' -exec awk '
    FNR == 1 && /^#!\/bin\/(ba)?sh/ || FNR <= 9 && /^# shellcheck shell=/ { print FILENAME }' {} + | sort |
    xargs shellcheck --external-sources --source-path=SCRIPTDIR:SCRIPTDIR/..

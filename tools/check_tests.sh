#!/bin/sh
# Builds a preset that has tests, and runs them:
#   tools/check_tests.sh debug | sanitize
set -eu
cd "$(dirname -- "$(readlink -f -- "$0")")/.."
most=1
. tools/checks.sh
case ${1-} in
debug | sanitize) ;;
*) refuse 'which preset?' ;;
esac

need check 'no test is built'
build_preset "$1"
ctest --test-dir "$MURL_BUILD/$1" --output-on-failure --no-tests=error --parallel "$(nproc)"

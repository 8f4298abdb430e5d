#!/bin/sh
# Builds a preset that has tests, debug or sanitize, and runs them.
set -eu
cd "$(dirname -- "$0")/.."
. tools/checks.sh

need check 'no test is built'
build_preset "$1"
ctest --test-dir "$MURL_BUILD/$1" --output-on-failure --no-tests=error --parallel "$(nproc)"

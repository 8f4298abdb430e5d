#!/bin/sh
# Makes docs/report.png, the picture of the report's page in README.md, from the samples.
set -eu
script=$(readlink -f -- "$0")
root=$(readlink -f -- "${script%/*}/..")
cd "$root"
. tools/arguments.sh
arguments 0 "$@"
. tools/builds.sh
find_build_folder
tools/packages.sh build report chromium
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir "$work/parts"
cp samples/*.mrl "$work/parts"
report=$PWD/report
(cd "$work" && "$report" --quiet --convert --html page.html parts) || [ $? = 1 ]
"$(command -v chromium || command -v chromium-browser)" --headless --no-sandbox --disable-gpu --hide-scrollbars \
    --user-data-dir="$work/profile" --window-size=1280,900 --virtual-time-budget=2000 \
    --screenshot="$work/report.png" "file://$work/page.html" >"$work/log" 2>&1 || { cat "$work/log" >&2; exit 1; }
mv "$work/report.png" docs/report.png

#!/bin/sh
# The examples of a guide: what stands in it as converted is what a program makes of the script before it.
#   tools/check_guide.sh PROGRAM GUIDE
# An example is a block that begins with ```mrl before, and behind it a block ```mrl after.
set -eu
script=$(readlink -f -- "$0")
. "${script%/*}/arguments.sh"
arguments 2 "$@"
[ $# = 2 ] || refuse 'a program and a guide are needed'
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

awk -v work="$work" '
    /^```mrl before$/ { file = sprintf("%s/%d.mrl", work, FNR); base = FNR; next }
    /^```mrl after$/ { file = sprintf("%s/%d.want", work, base); next }
    /^```/ { file = ""; next }
    file { print > file }' "$2"
examples=0
for script in "$work"/*.mrl; do
    # What a stopped script prints is not shown.
    "$1" "$script" >/dev/null
    line=$(basename "$script" .mrl)
    diff -u --label "$2, line $line" --label "what the program writes" "${script%.mrl}.want" "${script%.mrl}_conv.mrl"
    examples=$((examples + 1))
done
[ $examples -ge 12 ] # one for each kind of which the guide tells, so that none is overlooked

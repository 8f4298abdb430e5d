#!/bin/sh
# Folders of src build on each other: a file includes from its own folder and from those before it in this list, and
# no files include each other in a circle, a header and its .cpp taken as one.
set -eu
script=$(readlink -f -- "$0")
cd "${script%/*}/.."
. tools/arguments.sh
arguments 0 "$@"
order='platform support expressions source statements rules driver report'

# One line per include: the file that has it and the one that it names, as FOLDER/NAME without an extension.
includes=$(grep -rHoE '^#include "[^"]+' src --include='*.h' --include='*.cpp' |
    sed -E 's/^src\///; s/\.(h|cpp):#include "/ /; s/\.h$//' | sort -u)
[ -n "$includes" ]

printf '%s\n' "$includes" | awk -v order="$order" '
    BEGIN { for (n = split(order, folder, " "); n > 0; n--) rank[folder[n]] = n }
    { split($1, from, "/"); split($2, to, "/") }
    !(from[1] in rank) || !(to[1] in rank) { print "a folder that is not in the order: " $1 " " $2; bad = 1 }
    rank[to[1]] > rank[from[1]] { print "an include upward: " $1 " includes " $2; bad = 1 }
    END { exit bad }' >&2

# tsort names the members of a circle, and fails.
printf '%s\n' "$includes" | awk '$1 != $2' | tsort >/dev/null

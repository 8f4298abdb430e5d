#!/bin/sh
# Writes Debian's changelog of the package: an entry for each version in CHANGELOG.md, which has the changes
# themselves.
#   debian_changelog.sh CHANGELOG.md REVISION MAINTAINER OUTPUT
set -eu
sed -n 's/^## \([0-9.]*\), \([0-9-]*\)$/\1 \2/p' "$1" | while read -r version day; do
    printf 'murlconv (%s-%s) unstable; urgency=medium\n\n' "$version" "$2"
    printf '  * Version %s. changelog.gz tells what has changed.\n\n' "$version"
    printf ' -- %s  %s\n\n' "$3" "$(LC_ALL=C date -uR -d "$day")"
done >"$4"

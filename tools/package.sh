#!/bin/sh
# Builds the two packages and prints their paths:
#   tools/package.sh [FOLDER]     into a folder, dist if none is named
#     FOLDER/murlconv-VERSION-windows.zip
#     FOLDER/murlconv_VERSION_ARCHITECTURE.deb
set -eu
cd "$(dirname -- "$0")/.."
most=1
. tools/checks.sh
dist=${1:-dist}
# Permissions and the times in a zip are the same wherever it is made.
umask 022
export TZ=UTC

# Packs what a preset has built.
pack() {
    build_preset "$1"
    (cd "$MURL_BUILD/$1" && rm -f ./*.deb ./*.zip && cpack) >"$MURL_BUILD/$1.log" 2>&1 || {
        cat "$MURL_BUILD/$1.log" >&2
        exit 1
    }
    for package in "$MURL_BUILD/$1"/*.deb "$MURL_BUILD/$1"/*.zip; do
        [ -e "$package" ] || continue
        mv "$package" "$dist/"
        echo "$dist/${package##*/}"
    done
}

tools/packages.sh build report windows packages
mkdir -p "$dist"
pack windows
pack report

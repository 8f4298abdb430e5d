#!/bin/sh
# Builds the two packages and prints their paths:
#   dist/murlconv-VERSION-windows.zip
#   dist/murlconv_VERSION_amd64.deb
set -eu
cd "$(dirname -- "$0")/.."
check_name=package
. tools/checks.sh

# Packs what a preset has built.
pack() {
    build "$1"
    (cd "build/$1" && rm -f ./*.deb ./*.zip && cpack) >"build/$1.log" 2>&1 || {
        cat "build/$1.log" >&2
        exit 1
    }
    for package in "build/$1"/*.deb "build/$1"/*.zip; do
        [ -e "$package" ] || continue
        mv "$package" dist/
        echo "dist/${package##*/}"
    done
}

tools/packages.sh build windows packages
mkdir -p dist
pack windows
pack release

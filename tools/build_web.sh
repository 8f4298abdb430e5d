#!/bin/sh
# Builds the page that converts in a browser, and prints its path:
#   tools/build_web.sh [FOLDER]     into a folder, dist if none is named
#     FOLDER/murlconv-VERSION.html
set -eu
cd "$(dirname -- "$(readlink -f -- "$0")")/.."
most=1
. tools/checks.sh
find_dist "$@"
need web 'the page that converts is not built'
# The zip library becomes part of the page, so its bytes are compared with those that were looked at.
need_npm fflate@0.8.2 'the page that converts is not built'
printf '%s  %s\n' c3b34f2e9f5e74d4d7d64e01cac7a0c01954c6c406414d42185c7b53d6875ddf "$modules/fflate/umd/index.js" |
    sha256sum --check --quiet >&2 || fail 'fflate is not the one that was looked at'

# Emscripten's own tools are Debian's libraries for node, which another node wouldn't find.
export NODE_PATH=/usr/share/nodejs
build_preset web murlreport
version=$(sed -n 's/^project(.* VERSION \([0-9.]*\) .*/\1/p' CMakeLists.txt)
mkdir -p "$dist"
page=$dist/murlconv-$version.html
node src/web/assemble.js "$page" "$version" "$MURL_BUILD/web/murlreport.js" "$modules/fflate" packaging/copyright LICENSE \
    /usr/share/emscripten/system/lib/libc/musl/COPYRIGHT
echo "$page"

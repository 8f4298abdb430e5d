#!/bin/sh
# Makes the files of a release, from the checkout or from an unpacked source archive, and prints their paths:
#   tools/package.sh [FOLDER]     into a folder, dist if none is named
#     murlconv-VERSION.tar.gz               the sources; new files count once git knows them
#     murlconv_VERSION-1_ARCHITECTURE.deb
#     murlconv-VERSION-windows.zip
#     murlconv-VERSION-linux-ARCH.tar.gz    programs that need no library, for x86_64 and aarch64
#     murlconv-VERSION-1.ARCH.rpm           the same
#     murlconv-VERSION.html                 the page that converts in a browser
#     SHA256SUMS
# Nothing in them depends on who makes them, when and where: all times are those of the version's day.
set -eu
cd "$(dirname -- "$0")/.."
most=1
. tools/checks.sh
find_dist "$@"
umask 022
export TZ=UTC
version=$(sed -n 's/^project(.* VERSION \([0-9.]*\) .*/\1/p' CMakeLists.txt)
day=$(sed -n '/^## /{s/.*, //p;q;}' CHANGELOG.md)
SOURCE_DATE_EPOCH=$(date -u -d "$day" +%s)
export SOURCE_DATE_EPOCH

tools/packages.sh build report windows html packages linux web
mkdir -p "$dist"
dist=$(cd -- "$dist" && pwd -P)
# Not in the checkout: what makes debs and rpms takes no path with a blank.
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
trap 'exit 1' HUP INT TERM

# Runs a command; what it prints is shown only if it fails.
quietly() {
    "$@" >"$work/log" 2>&1 </dev/null && return
    cat "$work/log" >&2
    fail "$1 failed"
}

# Packs a folder of $work.
pack_tar() {
    tar -C "$work" --sort=name --mtime="@$SOURCE_DATE_EPOCH" --owner=0 --group=0 --numeric-owner \
        --mode=u+rw,go=rX -cf - "$1" | gzip -9n >"$dist/$1.tar.gz"
}

# The licences of Debian's packages that are linked in, and the texts that they refer to for what is linked in: of
# the other texts, tools and documents alone are under them.
add_licences() { # FOLDER PACKAGE...
    folder=$1
    shift
    mkdir -p "$folder"
    for package in "$@" libcli11-dev libfmt-dev nlohmann-json3-dev; do
        cp "/usr/share/doc/$package/copyright" "$folder/$package.txt"
    done
    for text in LGPL-2.1 GPL-3; do
        cp "/usr/share/common-licenses/$text" "$folder/$text.txt"
    done
}

make_sources() {
    if [ -e .git ]; then
        git ls-files -z
    else
        find . -type f ! -path './build/*' ! -path './dist/*' -print0
    fi | tar --null --files-from=- -cf - | tar --one-top-level="$work/murlconv-$version" -xf -
    pack_tar "murlconv-$version"
}

# What dpkg-buildpackage makes beside the deb is kept for who checks it.
make_deb() {
    cp "$dist/murlconv-$version.tar.gz" "$work/murlconv_$version.orig.tar.gz"
    (
        cd "$work/murlconv-$version"
        quietly env DEB_BUILD_OPTIONS="nocheck noautodbgsym parallel=$(nproc)" dpkg-buildpackage \
            --unsigned-source --unsigned-changes --build-profiles=nocheck
    )
    cp "$work"/*.deb "$dist"
    rm -rf "$MURL_BUILD/debian"
    mkdir "$MURL_BUILD/debian"
    mv "$work"/murlconv_* "$MURL_BUILD/debian"
}

make_zip() {
    build_preset windows
    name_of_zip=murlconv-$version-windows
    quietly cmake --install "$MURL_BUILD/windows" --prefix "$work/$name_of_zip"
    tools/docs_html.sh "$work/$name_of_zip/docs" docs/browser.md docs/commands.md docs/finishing.md \
        docs/windows.md
    add_licences "$work/$name_of_zip/licences" mingw-w64-common gcc-mingw-w64-base
    find "$work/$name_of_zip/licences" -type f -exec perl -pi -e 's/\r?\n/\r\n/' {} +
    find "$work/$name_of_zip" -exec touch --date="@$SOURCE_DATE_EPOCH" {} +
    (cd "$work" && find "$name_of_zip" -type f | sort >files &&
        cmake -E tar cf "$dist/$name_of_zip.zip" --format=zip --files-from=files)
}

make_linux() { # ARCH PACKAGE_OF_C_LIBRARY PACKAGE_OF_C++_LIBRARY
    arch=$1
    shift
    build_preset "linux-$arch"
    name_of_tar=murlconv-$version-linux-$arch
    # The archive is for /usr/local, the rpm for /usr: the man pages name the folder of the documents.
    for prefix in /usr/local /usr; do
        quietly env DESTDIR="$work/$arch" cmake --install "$MURL_BUILD/linux-$arch" --strip --prefix $prefix
        add_licences "$work/$arch$prefix/share/doc/murlconv/licences" "$@"
        [ $prefix = /usr ] || mv "$work/$arch$prefix" "$work/$name_of_tar"
    done
    cp packaging/linux.txt "$work/$name_of_tar/README.txt"
    pack_tar "$name_of_tar"
    make_rpm "$arch"
}

make_rpm() {
    url=$(sed -n 's/^address=\(.\)/URL: \1/p' packaging/home)
    sed -e "s|@version@|$version|" -e "s|@url@|$url|" -e "s|@tree@|$work/$1|" packaging/murlconv.spec.in \
        >"$work/murlconv.spec"
    quietly rpmbuild -bb --target "$1-linux" --define "_topdir $work/rpm" --define '_build_id_links none' \
        --define 'debug_package %{nil}' --define '__os_install_post %{nil}' --define '_binary_payload w9.gzdio' \
        --define '_buildhost localhost' --define 'use_source_date_epoch_as_buildtime 1' \
        --define 'clamp_mtime_to_source_date_epoch 1' "$work/murlconv.spec"
    mv "$work/rpm/RPMS/$1"/*.rpm "$dist"
}

make_sources
make_deb
make_zip
make_linux x86_64 libc6-dev "libstdc++-$(x86_64-linux-gnu-g++ -dumpversion)-dev"
make_linux aarch64 libc6-dev-arm64-cross "libstdc++-$(aarch64-linux-gnu-g++ -dumpversion)-dev-arm64-cross"
tools/build_web.sh "$dist" >"$work/page"
cd "$dist"
sha256sum -- *"$version"* >SHA256SUMS
sed "s|.*  |$dist/|" SHA256SUMS
echo "$dist/SHA256SUMS"

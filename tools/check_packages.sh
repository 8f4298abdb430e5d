#!/bin/sh
# Builds the packages, unpacks them, and converts with what is inside.
set -eu
cd "$(dirname -- "$0")/.."
. tools/checks.sh
work=$MURL_BUILD/packages
wine_home=$MURL_BUILD/packages_wine

# The files in a folder must be these and the samples.
expect_files() {
    (cd "$1" && find . -type f ! -path '*/samples/*' ! -path '*/docs/*' | sort) >"$work/found"
    sort "$work/wanted" | diff -u --label wanted --label "in the package" - "$work/found" || fail "files in $1"
}

# The installed binary, a process for each pair, as a user runs it.
check_pair() {
    folder=$(mktemp -d "$work/pair.XXXXXX")
    cp "$@" "$folder"
    (cd "$folder" && "$work/deb/usr/bin/murlconv" ./*.mrl) >"$work/printed"
    for script in "$@"; do
        name=$(basename "$script" .mrl)
        diff -u --label "$script" --label converted "$want_folder/$name.want" "$folder/${name}_conv.mrl" ||
            fail "$script"
        pairs=$((pairs + 1))
    done
    [ -e "$printed_want" ] || printed_want=/dev/null
    diff -u --label "$printed_want" --label printed "$printed_want" "$work/printed" || fail "$script"
    rm -r "$folder"
}

check_deb() {
    dpkg-deb -x "$deb" "$work/deb"
    [ "$(dpkg-deb -f "$deb" Package)" = murlconv ] || fail 'name of the deb'
    # The C library only: the program must start on a machine without a C++ runtime.
    depends=$(dpkg-deb -f "$deb" Depends)
    case $depends in
    *,* | *'|'*) fail "the deb depends on $depends" ;;
    libc6*) ;;
    *) fail "the deb depends on $depends" ;;
    esac
    cat >"$work/wanted" <<'LIST'
./usr/bin/murlconv
./usr/share/doc/murlconv/CHANGELOG.md
./usr/share/doc/murlconv/README.md
./usr/share/doc/murlconv/copyright
./usr/share/man/man1/murlconv.1.gz
./usr/share/murlconv/mcomp.txt
LIST
    expect_files "$work/deb"
    page=$work/murlconv.1
    gzip -dc "$work/deb/usr/share/man/man1/murlconv.1.gz" >"$page"
    groff -man -ww -z -Tutf8 "$page" 2>"$work/page.log" || fail 'man page'
    [ ! -s "$work/page.log" ] || fail "man page: $(cat "$work/page.log")"
    grep -q "^\.TH MURLCONV 1 .*murlconv $version\"" "$page" || fail 'version in the man page'

    pairs=0
    for script in "$work"/deb/usr/share/doc/murlconv/samples/*.mrl; do
        want_folder=tests/golden/samples
        printed_want=$want_folder/$(basename "$script" .mrl).out
        check_pair "$script"
    done
    for script in tests/golden/*/*.mrl; do
        [ -e "${script%.mrl}.want" ] || continue # an output that somebody has made
        want_folder=${script%/*}
        printed_want=${script%.mrl}.out
        check_pair "$script"
    done
    for run in tests/golden/*/*.run; do
        want_folder=$run
        printed_want=${run%.run}.out
        set --
        for script in "$run"/*.mrl; do
            [ ! -e "${script%.mrl}.want" ] || set -- "$@" "$script"
        done
        check_pair "$@"
    done
    echo "packages: the deb's program converts $pairs scripts as wanted"
}

check_zip() {
    (cd "$work" && cmake -E tar xf "$zip")
    folder=$work/$(basename "$zip" .zip)
    cat >"$work/wanted" <<'LIST'
./CHANGELOG.md
./LICENSE
./README.md
./mcomp.txt
./murlconv.exe
LIST
    expect_files "$folder"
    for sample in samples/*.mr[lp]; do
        case $sample in
        *_conv.mr[lp]) [ ! -e "$folder/$sample" ] || fail "$sample is no sample" ;;
        *) cmp "$sample" "$folder/$sample" ;;
        esac
    done
    # Windows shows the version from a text of 16-bit characters.
    perl -0777 -e '
        my ($version, $file) = @ARGV;
        open my $exe, "<:raw", $file or die;
        my $text = join "", map { "$_\0" } split //, "FileVersion\0\0$version\0";
        exit(index(<$exe>, $text) < 0);' "$version" "$folder/murlconv.exe" || fail 'version in murlconv.exe'
}

# Needs what check_zip and check_deb have unpacked.
check_zip_program() {
    for sample in "$folder"/samples/*.mrl; do
        name=$(basename "$sample" .mrl)
        wine_run "$folder/murlconv.exe" "$sample"
        to_crlf "tests/golden/samples/$name.want" | diff -u --label want --label converted \
            - "$folder/samples/${name}_conv.mrl" || fail "$sample"
    done
    echo "packages: the zip's program converts the samples as wanted"
}

need windows 'the packages are not made'
need packages 'the packages are not made'
rm -rf "$work"
mkdir -p "$work"
tools/package.sh "$work/dist" >"$work/packages"
zip=$(grep '\.zip$' "$work/packages")
deb=$(grep '\.deb$' "$work/packages")
version=$(dpkg-deb -f "$deb" Version)
[ "$deb" = "$work/dist/murlconv_${version}_$(dpkg --print-architecture).deb" ] || fail "name of $deb"
[ "$zip" = "$work/dist/murlconv-$version-windows.zip" ] || fail "name of $zip"
check_deb
check_zip

need wine 'the program of the zip was not run'
. tools/wine.sh
wine_start
check_zip_program

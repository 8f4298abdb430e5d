#!/bin/sh
# Tries the commands of README.md on a minimal Debian with nothing prepared, and prints how long each takes, in
# seconds of the clock and of CPU time, how many packages it installs and how large all becomes:
#   tools/check_fresh.sh [SUITE [COMMAND...]]
# SUITE is bookworm, if none is named, or another release of Debian; COMMANDs are of convert, report, check and all
# (./check all). Without any, bookworm has all of them, another suite all but the last.
# Needs root, debootstrap, some 6 GB in TMPDIR, and the network. Packages come from where this machine's apt has them,
# by its proxies and certificates. It is no step of ./check. The exit status is that of the command that failed, or 0.
#
# The Debian is a chroot with its own processes and mounts and no display; what of ./check needs more than that is
# skipped, and named in its last line.
set -eu
script=$(readlink -f -- "$0")
cd "${script%/*}/.."
. tools/arguments.sh
arguments 5 "$@"
suite=${1:-bookworm}
[ $# = 0 ] || shift
for command in "$@"; do
    case $command in
    convert | report | check | all) ;;
    *) refuse "there is no command $command" ;;
    esac
done
if [ $# = 0 ]; then
    set -- convert report check
    [ "$suite" != bookworm ] || set -- "$@" all
fi

for command in debootstrap unshare chroot; do
    if ! command -v $command >/dev/null; then
        tell "needs $command"
        exit 2
    fi
done
[ -e "/usr/share/debootstrap/scripts/$suite" ] || refuse "debootstrap knows no $suite"
if [ "$(id -u)" != 0 ]; then
    tell 'needs root'
    exit 2
fi

fresh=$(mktemp -d)
chmod 755 "$fresh" # its root, which every user has to read
trap 'rm -rf --one-file-system "$fresh" "$fresh.log"' EXIT
trap 'exit 1' HUP INT TERM

# Runs a command in the fresh Debian, at the checkout's copy, and tells what it took. The clock is the wall's. What
# the environment says of proxies and of authorities to trust is passed on.
in_fresh() {
    size_before=$(size)
    packages_before=$(packages)
    cpu_seconds
    cpu_before=$cpu
    start=$(date +%s)
    status=0
    # shellcheck disable=SC2016 # for the shell inside
    unshare --mount --pid --fork --kill-child chroot "$fresh" env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin HOME=/root \
        ${http_proxy:+http_proxy="$http_proxy"} ${https_proxy:+https_proxy="$https_proxy"} \
        ${authorities:+NODE_EXTRA_CA_CERTS="$authorities"} \
        sh -c 'mount -t proc proc /proc && mount -t tmpfs shm /dev/shm && mount -t devpts pts /dev/pts &&
            cd /murlconv && exec "$@"' sh "$@" || status=$?
    seconds=$(($(date +%s) - start))
    cpu_seconds
    printf '== %s: status %d, %d s, %d s of CPU time, %d packages, %d MB more\n' "$*" $status $seconds \
        $((cpu - cpu_before)) $(($(packages) - packages_before)) $(($(size) - size_before))
    [ $status = 0 ] || exit $status
}

# Size of the Debian in MB, with what was built and fetched.
size() {
    du -sxm "$fresh" | cut -f 1
}

packages() {
    grep -c '^Status: install ok installed' "$fresh/var/lib/dpkg/status"
}

# Sets cpu to the seconds of CPU time of all that has been run so far.
cpu_seconds() {
    times >"$fresh.log"
    cpu=$(awk 'END { gsub(/[ms]/, " "); print int(60 * $1 + $2 + 60 * $3 + $4 + 0.5) }' "$fresh.log")
}

# ---- The Debian ----

# shellcheck disable=SC2016 # apt's own name
mirror=$(apt-get indextargets --format '$(REPO_URI)' 'Created-By: Packages' 'Origin: Debian' | head -n 1)
start=$(date +%s)
debootstrap --variant=minbase "$suite" "$fresh" ${mirror:+"$mirror"} >"$fresh.log" 2>&1 || {
    tail -n 20 "$fresh.log" >&2
    exit 1
}
rm -f "$fresh.log"
# How this machine's apt reaches its sources: proxies, certificates, passwords.
apt-config dump Acquire | grep -E '^Acquire::(https?::|Check-)' >"$fresh/etc/apt/apt.conf.d/99here" || true
for passwords in /etc/apt/auth.conf /etc/apt/auth.conf.d; do
    [ ! -e $passwords ] || cp -R $passwords "$fresh/etc/apt/"
done
authorities=
if [ -n "${NODE_EXTRA_CA_CERTS-}" ]; then
    authorities=/etc/npm_authorities.pem
    cp "$NODE_EXTRA_CA_CERTS" "$fresh$authorities"
fi
mkdir "$fresh/murlconv"
git ls-files -z --cached --others --exclude-standard | tar --null --files-from=- -cf - | tar -C "$fresh/murlconv" -xf -
printf '== a minimal %s: %d s, %d MB\n' "$suite" $(($(date +%s) - start)) "$(size)"

# ---- The commands ----

for command in "$@"; do
    case $command in
    convert)
        in_fresh ./convert samples/plate.mrl
        in_fresh cmp tests/golden/samples/plate.want samples/plate_conv.mrl
        in_fresh ./convert samples/bracket.mrl
        ;;
    report) in_fresh sh -c './report samples; [ $? = 1 ]' ;;
    check) in_fresh ./check ;;
    all) in_fresh ./check all ;;
    esac
done

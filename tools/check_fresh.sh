#!/bin/sh
# Tries the two commands of README.md on a minimal Debian with nothing prepared, and tells how long each takes
# and how much it installs:
#   tools/check_fresh.sh [STEP...]      the steps of ./check; all of them if none is named
# Needs root, debootstrap, some 5 GB in TMPDIR, and the network: packages come from where this machine's apt has
# them. It is no step of ./check. The exit status is that of the command that failed, or 0.
#
# The Debian is a chroot with its own processes and mounts and no display; what of ./check needs more than that is
# skipped there, and told in its last line.
set -eu
name=check_fresh
cd "$(dirname -- "$(readlink -f -- "$0")")/.."

for command in debootstrap unshare chroot; do
    if ! command -v $command >/dev/null; then
        echo "$name: needs $command" >&2
        exit 2
    fi
done
if [ "$(id -u)" != 0 ]; then
    echo "$name: needs root" >&2
    exit 2
fi

fresh=$(mktemp -d)
chmod 755 "$fresh" # its root, which every user has to read
trap 'rm -rf --one-file-system "$fresh" "$fresh.log"' EXIT
trap 'exit 1' HUP INT TERM

# Runs a command in the fresh Debian, at the checkout's copy, and tells what it took. The clock is the wall's.
in_fresh() {
    size_before=$(size)
    start=$(date +%s)
    status=0
    # shellcheck disable=SC2016 # for the shell inside
    env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin HOME=/root \
        ${http_proxy:+http_proxy="$http_proxy"} ${https_proxy:+https_proxy="$https_proxy"} \
        ${authorities:+NODE_EXTRA_CA_CERTS="$authorities"} \
        unshare --mount --pid --fork --kill-child chroot "$fresh" \
        sh -c 'mount -t proc proc /proc && mount -t tmpfs shm /dev/shm && mount -t devpts pts /dev/pts &&
            cd /murlconv && exec "$@"' sh "$@" || status=$?
    printf '== %s: status %d, %d s, %d MB more\n' "$*" $status $(($(date +%s) - start)) $(($(size) - size_before))
    [ $status = 0 ] || exit $status
}

size() {
    du -sxm "$fresh" | cut -f 1
}

# ---- The Debian, from this machine's mirror, with its proxy and passwords if there are any ----

# shellcheck disable=SC2016 # apt's own names
read -r mirror suite <<END
$(apt-get indextargets --format '$(REPO_URI) $(CODENAME)' 'Created-By: Packages' 'Origin: Debian' | sed '/-[a-z]*$/d;q')
END
start=$(date +%s)
debootstrap --variant=minbase "$suite" "$fresh" "$mirror" >"$fresh.log" 2>&1 || {
    tail -n 20 "$fresh.log" >&2
    exit 1
}
rm -f "$fresh.log"
apt-config dump Acquire | grep -E '^Acquire::(https?::|Check-)' >"$fresh/etc/apt/apt.conf.d/99mirror" || true
for passwords in /etc/apt/auth.conf /etc/apt/auth.conf.d; do
    [ ! -e $passwords ] || cp -R $passwords "$fresh/etc/apt/"
done
# Where this machine trusts an authority of its own, npm has to as well.
authorities=
if [ -n "${NODE_EXTRA_CA_CERTS-}" ]; then
    authorities=/etc/npm_authorities.pem
    cp "$NODE_EXTRA_CA_CERTS" "$fresh$authorities"
fi
mkdir "$fresh/murlconv"
git ls-files -z --cached --others --exclude-standard | tar --null --files-from=- -cf - | tar -C "$fresh/murlconv" -xf -
printf '== a minimal %s: %d s, %d MB\n' "$suite" $(($(date +%s) - start)) "$(size)"

# ---- The two commands ----

in_fresh ./convert samples/plate.mrl
in_fresh cmp tests/golden/samples/plate.want samples/plate_conv.mrl
in_fresh ./convert samples/bracket.mrl
in_fresh ./check "$@"

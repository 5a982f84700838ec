#!/bin/bash
# Runs a command as root on a copy of this machine that vanishes with it, or on the machine itself where that cannot be
# (a container without the right to mount): aside.sh [--root FOLDER] COMMAND...
# With --root the copy is of another installation of Debian, as debootstrap makes it.
set -euo pipefail

# make_copy LOWER MOUNTPOINT: what is written stays in memory.
make_copy() {
    mount -t tmpfs -o mode=755 tmpfs "$2"
    mkdir "$2/root" "$2/changed" "$2/work"
    mount -t overlay overlay -o "lowerdir=$1,upperdir=$2/changed,workdir=$2/work" "$2/root"
}

# The calls of this script to itself, in a mount namespace of its own.
case $1 in
--try)
    make_copy "$2" "$3"
    exit
    ;;
--inside)
    make_copy "$2" "$3"
    root=$3/root
    shift 3
    mount -t proc proc "$root/proc"
    mount --rbind /sys "$root/sys"
    mount --rbind /dev "$root/dev"
    mount -t tmpfs -o mode=755 tmpfs "$root/run"
    mount -t tmpfs -o mode=1777 tmpfs "$root/tmp"
    mkdir -p "$root$PWD"
    mount --bind "$PWD" "$root$PWD"
    mount -o remount,bind,ro "$root$PWD"
    cp -L /etc/resolv.conf "$root/etc/resolv.conf" 2>/dev/null || true
    # shellcheck disable=SC2016 # for the shell inside
    chroot "$root" /bin/bash -c 'cd "$0" && "$@"' "$PWD" "$@"
    exit
    ;;
esac

lower=/
if [ "$1" = --root ]; then
    lower=$(realpath "$2")
    shift 2
fi
mountpoint=$(mktemp -d)
trap 'rmdir "$mountpoint"' EXIT
if unshare --mount "$0" --try "$lower" "$mountpoint" 2>/dev/null; then
    unshare --mount --pid --fork --kill-child "$0" --inside "$lower" "$mountpoint" "$@"
elif [ "$lower" = / ]; then
    echo "No copy can be mounted here: on the machine itself." >&2
    "$@"
else
    echo "No copy can be mounted here." >&2
    exit 1
fi

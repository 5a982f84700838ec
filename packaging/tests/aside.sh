#!/bin/bash
# SPDX-License-Identifier: MIT
# Runs a command as root on a temporary copy of this machine, or on the machine itself if a copy is not possible (in a
# container without the right to mount): aside.sh [--root FOLDER | --copy-only] COMMAND...
# With --root, it copies another installation of Debian, as debootstrap makes it. With --copy-only, it never uses the
# machine itself: the status is 77 if a copy is not possible.
set -euo pipefail

if [ $# -eq 0 ] || [ "$1" = --help ]; then
    sed -n '3,6s/^# //p' "$0"
    exit
fi

# make_copy LOWER MOUNTPOINT: mounts a copy whose changes stay in memory.
make_copy() {
    mount -t tmpfs -o mode=755 tmpfs "$2"
    mkdir "$2/root" "$2/changed" "$2/work"
    mount -t overlay overlay -o "lowerdir=$1,upperdir=$2/changed,workdir=$2/work" "$2/root"
}

# The script calls itself with these arguments, in a separate mount namespace.
case $1 in
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

lower=/ copy_only=''
case $1 in
--root)
    lower=$(realpath "$2")
    shift 2
    ;;
--copy-only)
    copy_only=yes
    shift
    ;;
esac
mountpoint=$(mktemp -d)
inside=''
cleanup() {
    [ -z "$inside" ] || { kill -KILL "$inside" && wait "$inside"; } 2>/dev/null || true
    rmdir "$mountpoint"
}
trap cleanup EXIT
trap 'exit 130' INT TERM HUP

# on_copy COMMAND...
on_copy() {
    unshare --mount --pid --fork --kill-child "$0" --inside "$lower" "$mountpoint" "$@" &
    inside=$!
    local status=0
    wait "$inside" || status=$?
    inside=''
    return "$status"
}

if reason=$(on_copy dpkg-query -W dpkg 2>&1 >/dev/null); then
    on_copy "$@"
elif [ "$lower" = / ] && [ -z "$copy_only" ]; then
    echo "cannot mount a copy of this machine ($reason); using the machine itself" >&2
    "$@"
else
    echo "cannot mount a copy of this machine: $reason" >&2
    exit 77
fi

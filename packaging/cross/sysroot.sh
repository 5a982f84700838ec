#!/bin/bash
# SPDX-License-Identifier: MIT
# Unpacks Debian packages of another architecture, with all they depend on, into a folder to compile and link against:
# sysroot.sh ARCHITECTURE FOLDER PACKAGE...
# Nothing is installed: the packages of this machine and its list of architectures stay as they are. Needs no root. The
# packages come from the archives that apt uses here. A folder that was made for the same packages is left alone.
set -euo pipefail
architecture=$1 folder=$2
shift 2

made_for="$architecture $*"
if [ "$(cat "$folder/made-for" 2>/dev/null)" = "$made_for" ]; then
    exit
fi

mkdir -p "$(dirname "$folder")"
work=$(mktemp -d "$folder.XXXXXX")
trap 'rm -rf "$work"' EXIT
mkdir -p "$work"/state/lists/partial "$work"/cache/archives/partial "$work/root"
touch "$work/status"

# An apt that knows the other architecture alone, and no installed package.
cat >"$work/apt.conf" <<END
APT::Architecture "$architecture";
APT::Architectures { "$architecture"; };
APT::Install-Recommends "false";
APT::Sandbox::User "";
Debug::NoLocking "true";
Dir::State "$work/state";
Dir::State::status "$work/status";
Dir::Cache "$work/cache";
END
export APT_CONFIG=$work/apt.conf

# An archive of others that cannot be read is no reason to stop: what is missing is found out below.
apt-get update -qq >"$work/log" 2>&1 || true
if ! apt-get install -y -qq --download-only "$@" >>"$work/log" 2>&1; then
    cat "$work/log" >&2
    echo "cannot download the $architecture packages; check the network and /etc/apt/sources.list.d" >&2
    exit 1
fi

for package in "$work"/cache/archives/*.deb; do
    dpkg-deb -x "$package" "$work/root"
done
# Emulated programs look into the sysroot first: commands and configuration are to be those of this machine.
rm -rf "$work"/root/{bin,sbin,etc,var,usr/bin,usr/sbin}
# Links to /lib would lead out of the sysroot.
find "$work/root" -type l -lname '/*' -printf '%p %l\n' | while read -r link target; do
    ln -sfnr "$work/root$target" "$link"
done

echo "$made_for" >"$work/root/made-for"
rm -rf "$folder"
mv "$work/root" "$folder"

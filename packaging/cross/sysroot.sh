#!/bin/bash
# SPDX-License-Identifier: MIT
# Unpacks Debian packages of another architecture, with all their dependencies, into a folder to compile and link
# against: sysroot.sh ARCHITECTURE FOLDER PACKAGE...
# Installs nothing: the packages of this machine and its list of architectures do not change. Needs no root. The
# packages come from the archives that apt uses on this machine. A folder that was made for the same packages is not
# changed.
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

# An apt configuration with only the other architecture, and without installed packages.
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

# Continues if a third-party archive cannot be read: missing packages are reported below.
apt-get update -qq >"$work/log" 2>&1 || true
if ! apt-get install -y -qq --download-only "$@" >>"$work/log" 2>&1; then
    cat "$work/log" >&2
    echo "cannot download the $architecture packages; check the network and /etc/apt/sources.list.d" >&2
    exit 1
fi

for package in "$work"/cache/archives/*.deb; do
    dpkg-deb -x "$package" "$work/root"
done
# Emulated programs search the sysroot first, but must use the commands and configuration of this machine.
rm -rf "$work"/root/{bin,sbin,etc,var,usr/bin,usr/sbin}
# Links to /lib would lead out of the sysroot.
find "$work/root" -type l -lname '/*' -printf '%p %l\n' | while read -r link target; do
    ln -sfnr "$work/root$target" "$link"
done

echo "$made_for" >"$work/root/made-for"
rm -rf "$folder"
mv "$work/root" "$folder"

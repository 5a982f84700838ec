#!/bin/bash
# SPDX-License-Identifier: MIT
# Checks that both libraries export exactly the symbols in the symbols files of their packages: symbols.sh BUILD SOURCE
. "$(dirname "$0")/install.sh"

root=$(cd "$source/../.." && pwd)
if ! command -v dpkg-gensymbols >/dev/null; then
    echo "skipped: dpkg-gensymbols is not installed (package dpkg-dev)"
    exit 77
fi
version=$(dpkg-parsechangelog -l "$root/packaging/debian/changelog" -S Version)
# dpkg-gensymbols reads debian/control and debian/*.symbols in the current folder.
mkdir "$work/debian"
cp "$root/packaging/debian/control" "$work/debian"
cd "$work"
# check LIBRARY PACKAGE SYMBOL: SYMBOL is one that the file lists.
check() {
    local library=$1 package=$2 symbols=$root/packaging/debian/$2.symbols wrong
    gensymbols() { dpkg-gensymbols "-p$package" "-v$version" "-e$library" -c4 -O/dev/null "-I$1"; }
    gensymbols "$symbols"

    # The check finds a listed symbol that is missing, and an exported one that is not listed.
    { cat "$symbols" && echo ' _ZN15CIPTVServiceAPI4GoneEv@Base 1.0.0~'; } >"$work/more"
    grep -v "$3" "$symbols" >"$work/fewer"
    for wrong in more fewer; do
        if gensymbols "$work/$wrong" >"$work/said" 2>&1; then
            echo "not noticed: a symbols file of $package with one symbol $wrong than the library"
            exit 1
        fi
    done
}
check "$library" libzv-iptv-service-api1 CreatePlayerControl
check "$libdir/libzv-iptv-client.so.1" libzv-iptv-client1 Player9MuteAudioEb@

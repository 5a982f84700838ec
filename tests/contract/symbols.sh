#!/bin/bash
# SPDX-License-Identifier: MIT
# The library exports what the package's symbols file lists, no more and no less: symbols.sh BUILD SOURCE
. "$(dirname "$0")/install.sh"

root=$(cd "$source/../.." && pwd)
if ! command -v dpkg-gensymbols >/dev/null; then
    echo "skipped: dpkg-gensymbols is not installed (package dpkg-dev)"
    exit 77
fi
package=libzv-iptv-service-api1
version=$(dpkg-parsechangelog -l "$root/packaging/debian/changelog" -S Version)
# dpkg-gensymbols reads debian/control, and looks for debian/*.symbols, where it is started.
mkdir "$work/debian"
cp "$root/packaging/debian/control" "$work/debian"
cd "$work"
gensymbols() {
    dpkg-gensymbols "-p$package" "-v$version" "-e$library" -c4 -O/dev/null "-I$1"
}
symbols=$root/packaging/debian/$package.symbols
gensymbols "$symbols"

# The check notices a symbol that is listed and missing, and one that is not listed.
{ cat "$symbols" && echo ' _ZN15CIPTVServiceAPI4GoneEv@Base 1.0.0~'; } >"$work/more"
grep -v CreatePlayerControl "$symbols" >"$work/fewer"
for wrong in more fewer; do
    if gensymbols "$work/$wrong" >"$work/said" 2>&1; then
        echo "a symbols file with one symbol $wrong than the library passes"
        exit 1
    fi
done

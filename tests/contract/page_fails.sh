#!/bin/bash
# SPDX-License-Identifier: MIT
# Checks that page.py finds errors in pages: page_fails.sh BUILD SOURCE
# shellcheck disable=SC2016 # the pages contain code marks
set -euo pipefail
source=$2
root=$(cd "$source/../.." && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir "$work/root"
ln -s "$root/run" "$root/samples" "$root/examples" "$root/tests" "$root/packaging" "$work/root"

# try STATUS TEXT: page.py ends with the status, and prints the text, for the page in standard input.
try() {
    local status=0
    cat >"$work/root/page.md"
    mkdir "$work/try"
    python3 -B "$source/pages/page.py" page.md "$work/root" "$work/try" >"$work/said" 2>&1 || status=$?
    rm -rf "$work/try"
    if [ "$status" -ne "$1" ] || ! grep -qF -- "$2" "$work/said"; then
        printf 'Status %s, and not "%s":\n' "$status" "$2"
        cat "$work/root/page.md" "$work/said"
        exit 1
    fi
}

printf '```console\n$ echo 1\n1\n$ false\n$ echo $?\n1\n```\n' | try 0 'page.md:1: console: typed'
printf '```console\n$ echo 1\n2\n```\n' | try 1 '-2'
printf '```console\n$ echo 1\n```\n' | try 1 '+1'
printf '<!-- numbers may differ after: it: -->\n```console\n$ echo it: 1\nit: 2\n```\n' | try 0 typed
printf '<!-- numbers may differ in: ^a\\d -->\n```console\n$ echo a1 2\na3 2\n```\n' | try 0 typed
printf '<!-- numbers may differ in: ^a\\d -->\n```console\n$ echo a1 2\na3 4\n```\n' | try 1 '+a# 2'
printf '```console\necho 1\n```\n' | try 1 "does not begin with '$ '"
printf '```cpp\nint main() {}\n```\n' | try 1 'page.md:1: cpp: neither run nor marked'
printf '```\nls\n```\n' | try 1 'page.md:1: block without a language: neither run nor marked'
printf 'Text:\n\n    ls\n' | try 1 'page.md:3: block without a language: neither run nor marked'
printf '* item\n\n  ```sh\n  ls\n  ```\n' | try 1 'page.md:3: sh: neither run nor marked'
printf '<!-- not run: needs root -->\n```\nls\n```\n' | try 0 'not run: needs root'
printf '<!-- not run: -->\n```\nls\n```\n' | try 1 'not run, without a reason'
printf '<!-- not run it: needs root -->\n```\nls\n```\n' | try 1 'a comment that is not a marker'
printf '<!-- not run: needs root -->\nText\n' | try 1 "no block follows the marker 'not run'"
printf '```console\n$ ls\n' | try 1 'a block without an end'
printf '<!-- file: a.txt -->\n```\na\n```\n```console\n$ cat a.txt\nb\n```\n' | try 1 '+a'
printf '<!-- file: a.cpp, the same as examples/hello_player.cpp -->\n```cpp\nint main() {}\n```\n' |
    try 1 'not the same as examples/hello_player.cpp'
printf '<!-- comes from: echo a -->\n```json\nb\n```\n' | try 1 '+a'
printf '<!-- unseen: false -->\n<!-- unseen: cat missing -->\n```console\n$ true\n```\n' | try 1 'cat: missing'
printf '<!-- run by: tests/contract/page.sh -->\n```\nsystemctl start nothing\n```\n' | try 1 'does not contain'
printf '<!-- drop-in of: packaging/systemd/zviptv-sim.service -->\n```ini\n[Service]\nEnvironment="ZVIPTV_OPTIONS=a"\n```\n' |
    try 1 'does not use ZVIPTV_OPTIONS'
printf 'Type `./run everything`.\n' | try 1 'does not know ./run everything'
printf 'See [there](docs/nowhere.md).\n' | try 1 'docs/nowhere.md, which does not exist'

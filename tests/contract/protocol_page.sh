#!/bin/bash
# SPDX-License-Identifier: MIT
# Checks that docs/reference/protocol.md has the tables of protocol/zviptv.xml: protocol_page.sh BUILD SOURCE
set -euo pipefail
root=$(cd "$2/../.." && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
check() { /usr/bin/python3 -B "$root/protocol/generate.py" page --check "$1"; }

check "$root/docs/reference/protocol.md"

# refused PATTERN SED-EXPRESSION: a page changed by the expression fails with a line that matches the pattern.
refused() {
    sed -E "$2" "$root/docs/reference/protocol.md" >"$work/page.md"
    if check "$work/page.md" >"$work/said" 2>&1; then
        echo "not refused: $2"
        exit 1
    fi
    grep -qE "$1" "$work/said" || { cat "$work/said" && exit 1; }
}
refused 'tables are out of date; renew them with ./run protocol' '/^\| `onoff` /s/flag/u32/'
refused "no table 'functions of NOBODY'; there are: " 's/functions of IPGUTIL/functions of NOBODY/'
refused 'has no .* for: record ZVTTX$' '/^<!-- table: record ZVTTX -->$/,/^<!-- end of table -->$/d'

# Updating the page makes the check pass.
sed -E '/^\| `onoff` /d' "$root/docs/reference/protocol.md" >"$work/page.md"
/usr/bin/python3 -B "$root/protocol/generate.py" page "$work/page.md"
diff "$root/docs/reference/protocol.md" "$work/page.md"

# Every record and enumeration of the headers is described.
words=$(sed -nE 's/^(struct|enum) (ZV[A-Za-z]*|EZV[A-Za-z]*|IPGProgramId|Program_IPG|cvtv_resolution_e|IPTVProfile)( : .*)?$/\2/p' \
    "$root/include/zviptv/IPTVTypes.h" | grep -v -e PESData -e Caption$)
[ "$(wc -l <<<"$words")" -eq 21 ] || { echo "unexpected types: $words" && exit 1; }
for word in $words; do
    grep -qE "name=\"$word\"" "$root/protocol/zviptv.xml" || { echo "protocol/zviptv.xml does not describe $word" && exit 1; }
done

named=$(grep -cE '^ {4}(ZV|CVTV|IPTV|PROGRAM)_[A-Z0-9_]* = ' "$root/include/zviptv/IPTVTypes.h")
described=$(grep -c '<value ' "$root/protocol/zviptv.xml")
[ "$named" -eq "$described" ] || { echo "IPTVTypes.h has $named enumerators, protocol/zviptv.xml $described" && exit 1; }

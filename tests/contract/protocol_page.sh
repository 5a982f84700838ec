#!/bin/bash
# docs/protocol.md names every word of the protocol: protocol_page.sh BUILD SOURCE
set -euo pipefail
root=$(cd "$2/../.." && pwd)
words=$(sed -n 's/^constexpr char .*\[\] = "\(.*\)";.*/\1/p' "$root/include/zviptv/Protocol.h")
test "$(wc -l <<<"$words")" -gt 100
status=0
for word in $words; do
    grep -qF "\`$word\`" "$root/docs/protocol.md" || { echo "docs/protocol.md does not name $word"; status=1; }
done
for field in $(sed -n 's/^struct \(ZV[A-Za-z]*\)$/\1/p' "$root/include/zviptv/IPTVTypes.h" | grep -v -e PESData -e Caption); do
    grep -qF "**$field**" "$root/docs/protocol.md" || { echo "docs/protocol.md does not lay out $field"; status=1; }
done
exit $status

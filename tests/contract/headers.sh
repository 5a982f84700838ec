#!/bin/bash
# SPDX-License-Identifier: MIT
# Every installed header compiles by itself, with strict warnings, and needs no GLib: headers.sh BUILD SOURCE
. "$(dirname "$0")/install.sh"

diff <(cd "$prefix/include/zviptv" && ls) - <<'EOF'
CommonNative.h
ConnectionHelperDBusClient.h
ConnectionHelperDBusServer.h
DeferredReply.h
Export.h
Failure.h
IBroadcastData.h
IConnectionHelper.h
IIPGUtil.h
IIPTVDataSubscriber.h
IPTVServiceAPI.h
IPTVTypes.h
IPlayerControl.h
MessageBuffer.h
MutexDBus.h
Protocol.h
ProxyDBusHelper.h
SystemLog.h
EOF
for header in "$prefix"/include/zviptv/*.h; do
    name=zviptv/$(basename "$header")
    echo "$name"
    printf '#include <%s>\n#include <%s>\nint main() {}\n' "$name" "$name" >"$work/one.cpp"
    "$CXX" -std=c++17 -Wall -Wextra -Wpedantic -Werror -fsyntax-only -I "$prefix/include" "$work/one.cpp"
done

# An older language is told in a sentence, before anything else.
printf '#include <zviptv/IPTVServiceAPI.h>\n' >"$work/old.cpp"
if "$CXX" -std=c++14 -fsyntax-only -I "$prefix/include" "$work/old.cpp" 2>"$work/errors"; then
    echo "the headers take C++14"
    exit 1
fi
grep -m1 'error:' "$work/errors" | grep -q 'compile with -std=c++17 or later'

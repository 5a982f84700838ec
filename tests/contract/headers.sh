#!/bin/bash
# SPDX-License-Identifier: MIT
# Checks which headers are installed, and that the build has compiled each of them by itself: headers.sh BUILD SOURCE
. "$(dirname "$0")/install.sh"

diff <(cd "$prefix/include/zviptv" && find . -name testing -prune -o -name '*.h' -printf '%P\n' | LC_ALL=C sort) - <<'EOF'
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
client/Broadcast.h
client/ByteView.h
client/Caption.h
client/CaptionDecoder.h
client/Client.h
client/Failure.h
client/Guide.h
client/Language.h
client/Pending.h
client/PesPacket.h
client/Player.h
client/Programme.h
client/Result.h
client/StateWatcher.h
client/Subscription.h
client/Television.h
client/Types.h
EOF
(cd "$prefix/include" && find . -name '*.h' -printf '%P\n') | while read -r header; do
    if ! compgen -G "$build/tests/contract/CMakeFiles/*_headers_alone.dir/headers/$header.cpp.o" >/dev/null; then
        echo "The build does not compile $header by itself; see tests/contract/CMakeLists.txt."
        exit 1
    fi
done

# With an older C++ standard, the first error is a sentence that says so.
printf '#include <zviptv/IPTVServiceAPI.h>\n' >"$work/old.cpp"
if "$CXX" -std=c++14 -fsyntax-only -I "$prefix/include" "$work/old.cpp" 2>"$work/errors"; then
    echo "the headers compile as C++14"
    exit 1
fi
grep -m1 'error:' "$work/errors" | grep -q 'compile with -std=c++17 or later'

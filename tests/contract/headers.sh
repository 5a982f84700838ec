#!/bin/bash
# SPDX-License-Identifier: MIT
# Checks that every installed header compiles by itself with strict warnings, and that those of the interface do not
# need GLib: headers.sh BUILD SOURCE
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
for header in "$prefix"/include/zviptv/*.h "$prefix"/include/zviptv/client/*.h; do
    name=${header#"$prefix/include/"}
    echo "$name"
    printf '#include <%s>\n#include <%s>\nint main() {}\n' "$name" "$name" >"$work/one.cpp"
    "$CXX" -std=c++17 -Wall -Wextra -Wpedantic -Werror -fsyntax-only -I "$prefix/include" "$work/one.cpp"
done

# The test kit needs GIO and GoogleTest.
for header in "$prefix"/include/zviptv/testing/*.h; do
    name=zviptv/testing/$(basename "$header")
    echo "$name"
    printf '#include <%s>\n#include <%s>\nint main() {}\n' "$name" "$name" >"$work/one.cpp"
    # shellcheck disable=SC2046
    "$CXX" -std=c++17 -Wall -Wextra -Wpedantic -Werror -fsyntax-only -I "$prefix/include" \
        $(pkg-config --cflags gio-2.0) "$work/one.cpp"
done

# With an older C++ standard, the first error is a sentence that says so.
printf '#include <zviptv/IPTVServiceAPI.h>\n' >"$work/old.cpp"
if "$CXX" -std=c++14 -fsyntax-only -I "$prefix/include" "$work/old.cpp" 2>"$work/errors"; then
    echo "the headers take C++14"
    exit 1
fi
grep -m1 'error:' "$work/errors" | grep -q 'compile with -std=c++17 or later'

#!/bin/bash
# SPDX-License-Identifier: MIT
# Checks the soname, the exports and the hardening of the libraries: shared_object.sh BUILD SOURCE
. "$(dirname "$0")/install.sh"

readelf -d "$library" >"$work/dynamic"
grep -q 'SONAME.*\[libzv-iptv-service-api.so.1\]' "$work/dynamic"
grep -q 'BIND_NOW' "$work/dynamic"
grep -q 'NODELETE' "$work/dynamic"
readelf -lW "$library" >"$work/segments"
grep -q 'GNU_RELRO' "$work/segments"
if grep -q 'GNU_STACK.*RWE' "$work/segments"; then
    echo "the stack is executable"
    exit 1
fi
test -L "$libdir/libzv-iptv-service-api.so"

# The library exports the classes and functions of its headers, and nothing internal or of the standard library.
nm -DC --defined-only "$library" | cut -d' ' -f3- >"$work/exported"
grep -q '^CIPTVServiceAPI::CreatePlayerControl(' "$work/exported"
grep -q '^ZVGetLastFailure(' "$work/exported"
grep -q '^ZVSetLogSink(' "$work/exported"
if grep -vE '^((typeinfo|typeinfo name|vtable) for )?(C[A-Z][A-Za-z]+|I[A-Z][A-Za-z]+|ZVFailureKindName|ZVGetLastFailure|ZVSetLogSink)(::|$|\()' "$work/exported"; then
    echo "exported, but declared in no header"
    exit 1
fi
if grep -E 'Proxy::|zviptv::' "$work/exported" | grep -v '^CProxyDBusHelper'; then
    echo "internal, but exported"
    exit 1
fi

# The library of the client layer.
client=$libdir/libzv-iptv-client.so.1
readelf -d "$client" >"$work/dynamic"
grep -q 'SONAME.*\[libzv-iptv-client.so.1\]' "$work/dynamic"
grep -q 'NEEDED.*\[libzv-iptv-service-api.so.1\]' "$work/dynamic"
grep -q 'BIND_NOW' "$work/dynamic"
grep -q 'NODELETE' "$work/dynamic"
nm -DC --defined-only "$client" | cut -d' ' -f3- >"$work/client"
grep -q '^zviptv::Television::Television()' "$work/client"
if grep -vE '^zviptv::((Television|Player|Broadcast|Guide|StateWatcher|Subscription|PesPacket|Caption|CaptionLine|(Caption|Teletext|AribCaption)Decoder)::|ToString(\[|\()|EndWrongRead\(|operator[=!]=\()' "$work/client"; then
    echo "exported by the client library, but declared in no header"
    exit 1
fi
if grep -E '::(State|Parts)(::|$)' "$work/client"; then
    echo "exported by the client library, but private"
    exit 1
fi

# Each exported function is declared in the header of its class.
sed -nE 's/^(C[A-Za-z]+)::~?([A-Za-z0-9_]+|operator=)(\[abi:cxx11\])?(\(.*)?$/\1 \2/p' "$work/exported" | sort -u >"$work/members"
test "$(wc -l <"$work/members")" -gt 50
test "$(grep -cE '^C[A-Za-z]+::' "$work/exported")" = "$(grep -cE '^C[A-Za-z]+::~?([A-Za-z0-9_]+|operator=)(\[|\(|$)' "$work/exported")"
while read -r class member; do
    header=$(grep -lE "^class ZVIPTV_API $class( |\$)" "$prefix"/include/zviptv/*.h) || { echo "no header declares $class"; exit 1; }
    grep -qwF -- "$member" "$header" || { echo "$class::$member is exported, but not declared in $(basename "$header")"; exit 1; }
done <"$work/members"
echo "$(wc -l <"$work/members") members of classes are exported"

#!/bin/bash
# SPDX-License-Identifier: MIT
# Compares the binary interface of a library with the committed one, using abidiff: sizes and members of the classes in
# the headers, slots of virtual functions, parameters, symbols. The library must be a release build by g++, whose debug
# information contains all of this.
#
#   abi.sh write LIBRARY FILE HEADERS...   writes the interface to FILE; HEADERS are the folders of public headers
#   abi.sh compare FILE BASELINE           status 1 when anything in FILE differs from BASELINE, additions included
#   abi.sh renew LIBRARY HEADERS...        shows what differs and makes it the baseline
set -euo pipefail
here=$(dirname "$0")

soname() { readelf -d "$1" | sed -n 's/.*SONAME.*\[\(.*\)\]/\1/p'; }

# write LIBRARY FILE HEADERS...: leaves out build paths, and data that does not affect callers.
write() {
    local class classes folder options=()
    for folder in "${@:3}"; do
        options+=(--headers-dir "$folder")
    done
    case $(soname "$1") in
    libzv-iptv-client.so.*)
        options+=(--suppressions "$here/client.supp")
        classes='Television Player Broadcast Guide StateWatcher TelevisionState Subscription Pending PesPacket PesFilter Caption CaptionLine
            Programme Failure AudioTrack Subtitle TeletextPage IsdbText'
        ;;
    *)
        classes='IPlayerControl IBroadcastData IIPTVDataSubscriber IIPGUtil IConnectionHelper CCommonNative
            CMessageBuffer CProxyDBusHelper ZVAudio ZVTTX ZVResolution ZVPESData'
        ;;
    esac
    abidw --no-corpus-path --no-comp-dir-path --no-show-locs --no-parameter-names --no-elf-needed "${options[@]}" \
        --drop-private-types --exported-interfaces-only --drop-undefined-syms --out-file "$2" "$1"

    # Without complete debug information, the comparison would miss differences.
    for class in $classes; do
        grep -q "<class-decl name='$class' size-in-bits=" "$2" || {
            echo "the debug information of $1 does not describe $class; use a release build by g++" >&2
            exit 1
        }
    done
}

differences() { abidiff --harmless --redundant --no-show-locs "$1" "$2"; }

# compare FILE BASELINE
compare() {
    differences "$2" "$1" || {
        echo "the binary interface differs from $(basename "$2"); see docs/reference/compatibility.md" >&2
        exit 1
    }
}

case ${1-} in
write) write "${@:2}" ;;
compare) compare "$2" "$3" ;;
renew)
    work=$(mktemp -d)
    trap 'rm -rf "$work"' EXIT
    baseline=$here/$(soname "$2").abi
    write "$2" "$work/abi" "${@:3}"
    [ ! -e "$baseline" ] || differences "$baseline" "$work/abi" || true
    cp "$work/abi" "$baseline"
    ;;
*)
    echo "unknown command; use abi.sh write | compare | renew" >&2
    exit 2
    ;;
esac

#!/bin/bash
# SPDX-License-Identifier: MIT
# The library's binary interface against the committed one, as abidiff sees it: sizes and members of what the headers
# declare, slots of virtual functions, parameters, symbols. The library has to be of a release build by g++: debug
# information tells all of this.
#
#   abi.sh write LIBRARY HEADERS FILE   writes the interface to FILE
#   abi.sh compare FILE BASELINE        status 1 when anything in FILE differs from BASELINE, additions included
#   abi.sh renew LIBRARY HEADERS        shows what differs and makes it the baseline
set -euo pipefail

# write LIBRARY HEADERS FILE: nothing of where it was built, and nothing that is the same for every caller.
write() {
    local class
    abidw --no-corpus-path --no-comp-dir-path --no-show-locs --no-parameter-names --no-elf-needed \
        --headers-dir "$2" --drop-private-types --exported-interfaces-only --drop-undefined-syms \
        --out-file "$3" "$1"

    # Without debug information, or with that of one file alone, there would be little that could differ.
    for class in IPlayerControl IBroadcastData IIPTVDataSubscriber IIPGUtil IConnectionHelper CCommonNative \
        CMessageBuffer CProxyDBusHelper ZVAudio ZVTTX ZVResolution ZVPESData; do
        grep -q "<class-decl name='$class' size-in-bits=" "$3" || {
            echo "The debug information of $1 does not describe $class." >&2
            exit 1
        }
    done
}

differences() { abidiff --harmless --redundant --no-show-locs "$1" "$2"; }

# compare FILE BASELINE
compare() {
    differences "$2" "$1" || {
        echo "The binary interface is not that of $(basename "$2"): docs/reference/compatibility.md says what to do." >&2
        exit 1
    }
}

case ${1-} in
write) write "$2" "$3" "$4" ;;
compare) compare "$2" "$3" ;;
renew)
    work=$(mktemp -d)
    trap 'rm -rf "$work"' EXIT
    baseline=$(dirname "$0")/$(readelf -d "$2" | sed -n 's/.*SONAME.*\[\(.*\)\]/\1/p').abi
    write "$2" "$3" "$work/abi"
    [ ! -e "$baseline" ] || differences "$baseline" "$work/abi" || true
    cp "$work/abi" "$baseline"
    ;;
*)
    echo "What? abi.sh write | compare | renew" >&2
    exit 2
    ;;
esac

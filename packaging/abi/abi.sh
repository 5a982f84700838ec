#!/bin/bash
# SPDX-License-Identifier: MIT
# Compares the library's binary interface with the committed one, using abidiff: sizes and members of the classes in the
# headers, slots of virtual functions, parameters, symbols. The library must be a release build by g++, whose debug
# information contains all of this.
#
#   abi.sh write LIBRARY HEADERS FILE   writes the interface to FILE
#   abi.sh compare FILE BASELINE        status 1 when anything in FILE differs from BASELINE, additions included
#   abi.sh renew LIBRARY HEADERS        shows what differs and makes it the baseline
set -euo pipefail

# write LIBRARY HEADERS FILE: leaves out build paths, and data that does not affect callers.
write() {
    local class
    abidw --no-corpus-path --no-comp-dir-path --no-show-locs --no-parameter-names --no-elf-needed \
        --headers-dir "$2" --drop-private-types --exported-interfaces-only --drop-undefined-syms \
        --out-file "$3" "$1"

    # Without complete debug information, the comparison would miss differences.
    for class in IPlayerControl IBroadcastData IIPTVDataSubscriber IIPGUtil IConnectionHelper CCommonNative \
        CMessageBuffer CProxyDBusHelper ZVAudio ZVTTX ZVResolution ZVPESData; do
        grep -q "<class-decl name='$class' size-in-bits=" "$3" || {
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
    echo "unknown command; use abi.sh write | compare | renew" >&2
    exit 2
    ;;
esac

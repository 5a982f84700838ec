#!/bin/bash
# SPDX-License-Identifier: MIT
# The library's binary interface against the committed one, as abidiff sees it: sizes and members of what the headers
# declare, slots of virtual functions, parameters, symbols. The library has to be of a release build by g++: debug
# information tells all of this.
#
#   abi.sh check LIBRARY HEADERS [BASELINE]   status 1 when anything differs, additions included
#   abi.sh renew LIBRARY HEADERS              shows what differs and makes it the baseline
set -euo pipefail
command=$1
library=$2
headers=$3
baseline=${4-$(dirname "$0")/$(readelf -d "$library" | sed -n 's/.*SONAME.*\[\(.*\)\]/\1/p').abi}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# Nothing of where it was built, and nothing that is the same for every caller.
abidw --no-corpus-path --no-comp-dir-path --no-show-locs --no-parameter-names --no-elf-needed \
    --headers-dir "$headers" --drop-private-types --exported-interfaces-only --drop-undefined-syms \
    --out-file "$work/abi" "$library"

# Without debug information, or with that of one file alone, there would be little that could differ.
for class in IPlayerControl IBroadcastData IIPTVDataSubscriber IIPGUtil IConnectionHelper CCommonNative \
    CMessageBuffer CProxyDBusHelper ZVAudio ZVTTX ZVResolution ZVPESData; do
    grep -q "<class-decl name='$class' size-in-bits=" "$work/abi" || {
        echo "The debug information of $library does not describe $class." >&2
        exit 1
    }
done

case $command in
check)
    abidiff --harmless --redundant --no-show-locs "$baseline" "$work/abi" || {
        echo "The binary interface is not that of $(basename "$baseline"): docs/compatibility.md says what to do." >&2
        exit 1
    }
    ;;
renew)
    [ ! -e "$baseline" ] || abidiff --harmless --redundant --no-show-locs "$baseline" "$work/abi" || true
    cp "$work/abi" "$baseline"
    ;;
*)
    echo "What? abi.sh check | renew" >&2
    exit 2
    ;;
esac

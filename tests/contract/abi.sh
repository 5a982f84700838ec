#!/bin/bash
# SPDX-License-Identifier: MIT
# Checks that the binary interface of both libraries is the committed one: abi.sh BUILD SOURCE [left-out]
if [ "${3-}" = left-out ]; then
    echo "skipped: the committed interface is that of the release build by g++ on x86-64, without sanitizers"
    exit 77
fi
. "$(dirname "$0")/install.sh"

if ! command -v abidw >/dev/null; then
    echo "skipped: abidw is not installed (package abigail-tools)"
    exit 77
fi
root=$(cd "$source/../.." && pwd)
abi() { "$root/packaging/abi/abi.sh" "$@"; }

# is_committed LIBRARY: writes its interface to $written, unless that is there from an earlier run with the same files, and
# compares it with $baseline.
is_committed() {
    local name kept=$build/tests/contract/abi
    name=$(basename "$1")
    baseline=$root/packaging/abi/$name.abi
    written=$kept/$name.abi
    sha256sum "$1" "$root"/packaging/abi/{abi.sh,*.supp} "$prefix"/include/zviptv/*.h "$prefix"/include/zviptv/*/*.h >"$work/from"
    if ! cmp -s "$work/from" "$written.from"; then
        mkdir -p "$kept"
        rm -f "$written.from"
        abi write "$1" "$written" "$prefix/include/zviptv"
        cp "$work/from" "$written.from"
    fi
    abi compare "$written" "$baseline"
    if grep -nF "$build" "$baseline" || grep -nE "(path|name)='/" "$baseline"; then
        echo "the baseline contains paths of the machine that made it"
        exit 1
    fi
}

# notices WHAT SED-EXPRESSION: the comparison fails if the expression changes one thing in the baseline.
notices() {
    local what=$1
    sed -E "$2" "$baseline" >"$work/other.abi"
    ! cmp -s "$baseline" "$work/other.abi" || { echo "the expression changes nothing in the baseline: $what"; exit 1; }
    if abi compare "$written" "$work/other.abi" >"$work/said" 2>&1; then
        echo "not noticed: $what"
        exit 1
    fi
    echo "noticed: $what"
}
within() { printf "/<%s name='%s'/,/<\\/%s>/" "$1" "$2" "$1"; }

is_committed "$library"
notices "a structure of another size" "$(within class-decl ZVTTX)s/size-in-bits='128'/size-in-bits='96'/"
notices "a field at another place" "$(within class-decl ZVTTX)s/layout-offset-in-bits='80'/layout-offset-in-bits='88'/"
notices "a field fewer" "$(within class-decl ZVPESData){/bits='64'/,/<\\/data-member>/d}"
notices "an enumerator of another value" "$(within enum-decl EZVSourceState)s/value='3'/value='5'/"
notices "an enumerator fewer" "$(within enum-decl EZVSourceState)"'{/SOURCE_STATE_ERROR/d}'
notices "two virtual functions that change places" \
    "$(within class-decl IIPTVDataSubscriber){s/vtable-offset='4'/vtable-offset='x'/;s/='5'/='4'/;s/='x'/='5'/}"
notices "a virtual function fewer" "$(within class-decl IPlayerControl){/vtable-offset='17'/,/<\\/member-function>/d}"
notices "a symbol fewer" "/name='_ZN10CMutexDBus7TryLockEv' type='func-type'/d"
notices "a symbol more" "s/(.*name='_ZN10CMutexDBus7TryLock)(Ev' type='func-type'.*)/&\\n\\1Soon\\2/"

is_committed "$libdir/libzv-iptv-client.so.1"
notices "a record of another size" "$(within class-decl AudioTrack)s/size-in-bits='192'/size-in-bits='224'/"
notices "a text at another place" "$(within class-decl Failure)s/layout-offset-in-bits='320'/layout-offset-in-bits='576'/"
notices "an enumerator of another value" "$(within enum-decl SourceState)s/value='3'/value='5'/"
notices "a function fewer" "/name='_ZN6zviptv6Player9MuteAudioEb' type='func-type'/d"

#!/bin/bash
# SPDX-License-Identifier: MIT
# Tests the command line of ./run: run_words.sh BUILD SOURCE
set -euo pipefail
root=$(cd "$2/../.." && pwd)

refuses() {
    local wanted=$1 said
    shift
    if said=$("$root/run" "$@" 2>&1); then
        echo "./run $* does not fail"
        exit 1
    fi
    test "$said" = "$wanted" || { echo "./run $* says: $said"; exit 1; }
}

refuses "unknown command 'tset'; see ./run help" tset
refuses "unexpected argument '--asan' of 'build'; see ./run help" build --asan
refuses "unexpected argument '--asan' of 'test'; see ./run help" test --asan
refuses "unexpected argument '--tsan' of 'check'; see ./run help" check --asan --tsan
refuses "unknown option '--msan'; use ./run check [--asan | --panel | --tsan | --valgrind]" check --msan
refuses "unexpected argument '20' of 'fuzz'; see ./run help" fuzz 10 20
refuses "unexpected argument 'i386' of 'cross'; see ./run help" cross armhf i386
refuses 'the architecture is missing or unknown; use ./run cross armhf | arm64 | i386' cross
refuses 'the architecture is missing or unknown; use ./run cross armhf | arm64 | i386' cross mips
diff <("$root/run") <("$root/run" help)

# A copy of ./run that needs no packages, and a cmake that only records its arguments.
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir -p "$work/packaging" "$work/bin" "$work/build/release"
cp "$root/run" "$work"
: >"$work/packaging/build-packages.txt"
printf '#!/bin/sh\necho "$@" >>"%s/called"\n' "$work" >"$work/bin/cmake"
chmod +x "$work/bin/cmake"

# builds WITH: ./run build configures with this BUILD_TESTING.
builds() {
    rm -f "$work/called" "$work/build/release-configure.log"
    PATH=$work/bin:$PATH "$work/run" build >/dev/null
    grep -q -- "--preset release .*-DBUILD_TESTING=$1\$" "$work/called" || { cat "$work/called" && exit 1; }
}

builds OFF
mkdir "$work/build/release/tests"
: >"$work/build/release/tests/CTestTestfile.cmake" # as ./run test leaves it
builds ON

# SPDX-License-Identifier: MIT
# shellcheck shell=bash disable=SC2034
# Sourced by the contract tests: $prefix is the installation of the build in $1, which the tests share and do not change;
# $work is a fresh folder, removed at the end.
set -euo pipefail
build=$1
source=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
prefix=$build/tests/contract/installation
linked=$(find "$prefix" -name libzv-iptv-service-api.so) || true
if [ -z "$linked" ]; then
    echo "the library is not installed in $prefix; run this test with ctest, which installs it first"
    exit 1
fi
libdir=$(dirname "$linked")
library=$libdir/$(readelf -d "$linked" | sed -n 's/.*SONAME.*\[\(.*\)\]/\1/p')
sanitize=${SANITIZE:+-fsanitize=$SANITIZE}

# Each run compiles the same programs; only the path of $work differs.
export CCACHE_BASEDIR=$work CCACHE_NOHASHDIR=1
if [ -n "${CACHE-}" ]; then
    printf '#!/bin/sh\nexec "%s" "%s" "%s" "$@"\n' "$(dirname "${BASH_SOURCE[0]}")/compiler.sh" "$CACHE" "$CXX" \
        >"$work/compiler"
    chmod +x "$work/compiler"
    CXX=$work/compiler
fi

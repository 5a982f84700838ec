# SPDX-License-Identifier: MIT
# shellcheck shell=bash disable=SC2034
# Sourced by the contract tests: installs the build in $1 into a fresh folder, $prefix, removed at the end.
set -euo pipefail
build=$1
source=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
prefix=$work/prefix
"$CMAKE_COMMAND" --install "$build" --prefix "$prefix" >"$work/install.log"
linked=$(find "$prefix" -name libzv-iptv-service-api.so)
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

# shellcheck shell=bash disable=SC2034
# Sourced by the contract tests: installs the build in $1 into a fresh folder, $prefix, removed at the end.
set -euo pipefail
build=$1
source=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
prefix=$work/prefix
"$CMAKE_COMMAND" --install "$build" --prefix "$prefix" >"$work/install.log"
library=$(find "$prefix" -name 'libzv-iptv-service-api.so.1')
libdir=$(dirname "$library")
sanitize=${SANITIZE:+-fsanitize=$SANITIZE}

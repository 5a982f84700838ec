#!/bin/bash
# SPDX-License-Identifier: MIT
# Installs the build for the contract tests: installation.sh BUILD. What has not changed since the last installation stays,
# and what is no longer installed is removed.
set -euo pipefail
build=$1
prefix=$build/tests/contract/installation
"$CMAKE_COMMAND" --install "$build" --prefix "$prefix" | grep -v '^-- Up-to-date: '
comm -13 <(sort "$build/install_manifest.txt") <(find "$prefix" ! -type d | sort) | while read -r old; do
    echo "-- Removing: $old"
    rm "$old"
done

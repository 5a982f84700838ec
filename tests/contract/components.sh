#!/bin/bash
# SPDX-License-Identifier: MIT
# Checks that CMake says what to install for a missing component: components.sh BUILD SOURCE
. "$(dirname "$0")/install.sh"

# A copy of the installation, from which files are removed below.
cp -r "$prefix" "$work/prefix"
libdir=$work/prefix${libdir#"$prefix"}
prefix=$work/prefix

# refused COMPONENTS TEXT: a project that requires these components is refused with this text.
mkdir "$work/project"
refused() {
    printf 'cmake_minimum_required(VERSION 3.25)\nproject(needs CXX)\nfind_package(ZvIptvServiceApi 1 REQUIRED COMPONENTS %s)\n' "$1" \
        >"$work/project/CMakeLists.txt"
    if configured; then
        echo "not refused: $1"
        exit 1
    fi
    tr '\n' ' ' <"$work/out" | tr -s ' ' | grep -qF "$2" || { cat "$work/out" && exit 1; }
}
configured() {
    "$CMAKE_COMMAND" --fresh -S "$work/project" -B "$work/project/build" -DCMAKE_PREFIX_PATH="$prefix" >"$work/out" 2>&1
}

refused Player 'Player is unknown: the components are Client and Testing.'

# Without the package libzv-iptv-client-dev.
while read -r pattern; do
    pattern=${pattern/#usr\/lib\/\*/$libdir}
    # shellcheck disable=SC2086
    rm -r ${pattern/#usr/$prefix}
done <"$source/../../packaging/debian/libzv-iptv-client-dev.install"
refused Client 'ZvIptv::Client is not installed: install libzv-iptv-client-dev.'
PKG_CONFIG_LIBDIR=$work refused 'Client Testing' 'install libzv-iptv-client-dev. ZvIptv::Testing needs pkg-config and gio-2.0: install pkg-config and libglib2.0-dev.'

# Nothing else needs it.
sed -i 's/Client/Testing OPTIONAL_COMPONENTS Client/' "$work/project/CMakeLists.txt"
sed -i 's/ Testing)/)/' "$work/project/CMakeLists.txt"
configured || { cat "$work/out" && exit 1; }

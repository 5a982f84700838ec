#!/bin/bash
# SPDX-License-Identifier: MIT
# Builds and runs a user's program against the installed files: consumer.sh BUILD SOURCE cmake|pkg-config
. "$(dirname "$0")/install.sh"

case $3 in
cmake)
    cp "$source/consumer.cpp" "$work"
    cat >"$work/CMakeLists.txt" <<'EOF'
cmake_minimum_required(VERSION 3.25)
project(consumer CXX)
find_package(ZvIptvServiceApi 1 REQUIRED)
add_executable(consumer consumer.cpp)
target_link_libraries(consumer PRIVATE ZvIptv::ServiceApi)
EOF
    "$CMAKE_COMMAND" -S "$work" -B "$work/build" -DCMAKE_PREFIX_PATH="$prefix" -DCMAKE_CXX_FLAGS="$sanitize"
    "$CMAKE_COMMAND" --build "$work/build"
    program=$work/build/consumer
    ;;
pkg-config)
    export PKG_CONFIG_PATH=$libdir/pkgconfig
    test "$(pkg-config --modversion zv-iptv-service-api)" = 1.1.0
    # shellcheck disable=SC2046
    "$CXX" -std=c++17 $sanitize "$source/consumer.cpp" $(pkg-config --cflags --libs zv-iptv-service-api) -o "$work/consumer"
    program=$work/consumer
    ;;
esac

# No bus: the program shows what an application meets there.
DBUS_SYSTEM_BUS_ADDRESS=unix:path=$work/no-bus LD_LIBRARY_PATH=$libdir "$program" >"$work/output"
cat "$work/output"
diff "$work/output" "$source/consumer.txt"

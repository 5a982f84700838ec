#!/bin/bash
# SPDX-License-Identifier: MIT
# Builds and runs two programs of a user, one for each library, against the installed files:
# consumer.sh BUILD SOURCE cmake|pkg-config
. "$(dirname "$0")/install.sh"

case $3 in
cmake)
    cp "$source/consumer.cpp" "$source/client_consumer.cpp" "$work"
    cat >"$work/CMakeLists.txt" <<'EOF'
cmake_minimum_required(VERSION 3.25)
project(consumer CXX)
find_package(ZvIptvServiceApi 1 REQUIRED)
add_executable(consumer consumer.cpp)
target_link_libraries(consumer PRIVATE ZvIptv::ServiceApi)
add_executable(client_consumer client_consumer.cpp)
target_link_libraries(client_consumer PRIVATE ZvIptv::Client)
EOF
    "$CMAKE_COMMAND" -S "$work" -B "$work/build" -DCMAKE_PREFIX_PATH="$prefix" -DCMAKE_CXX_FLAGS="$sanitize"
    "$CMAKE_COMMAND" --build "$work/build"
    programs=$work/build
    ;;
pkg-config)
    export PKG_CONFIG_PATH=$libdir/pkgconfig
    test "$(pkg-config --modversion zv-iptv-service-api)" = 1.1.0
    test "$(pkg-config --modversion zv-iptv-client)" = 1.1.0
    # shellcheck disable=SC2046
    "$CXX" -std=c++17 $sanitize "$source/consumer.cpp" $(pkg-config --cflags --libs zv-iptv-service-api) -o "$work/consumer"
    # shellcheck disable=SC2046
    "$CXX" -std=c++17 $sanitize "$source/client_consumer.cpp" $(pkg-config --cflags --libs zv-iptv-client) -o "$work/client_consumer"
    programs=$work
    ;;
esac

# Without a bus, the programs show how the library fails.
export DBUS_SYSTEM_BUS_ADDRESS=unix:path=$work/no-bus LD_LIBRARY_PATH=$libdir
for program in consumer client_consumer; do
    "$programs/$program" >"$work/output"
    cat "$work/output"
    diff "$work/output" "$source/$program.txt"
done

#!/bin/bash
# SPDX-License-Identifier: MIT
# Builds a user's program together with the project's sources: subproject.sh BUILD SOURCE
set -euo pipefail
source=$2
root=$(cd "$source/../.." && pwd)
work=$1/tests/contract/subproject # kept: a repeated run configures with a new cache, and compiles only what has changed
mkdir -p "$work"

cp "$source/consumer.cpp" "$work"
cat >"$work/CMakeLists.txt" <<'EOF'
cmake_minimum_required(VERSION 3.25)
project(consumer CXX)
include(CTest)
include(FetchContent)
FetchContent_Declare(zviptv SOURCE_DIR "${ZVIPTV_SOURCE}")
FetchContent_MakeAvailable(zviptv)
add_executable(consumer consumer.cpp)
target_link_libraries(consumer PRIVATE ZvIptv::ServiceApi)
EOF
rm -f "$work/build/CMakeCache.txt" # and not what CMake has found out about the compiler
env -u CMAKE_TOOLCHAIN_FILE "$CMAKE_COMMAND" -S "$work" -B "$work/build" -DZVIPTV_SOURCE="$root" \
    -DCMAKE_UNITY_BUILD=ON # a choice of the user's project, and faster
"$CMAKE_COMMAND" --build "$work/build"

# Only the library is built, and a warning of a newer compiler does not stop the user's build.
grep -x 'ZVIPTV_WERROR:BOOL=OFF' "$work/build/CMakeCache.txt"
"$CMAKE_COMMAND" --build "$work/build" --target help >"$work/targets"
grep -q '^ServiceApi:' "$work/targets"
for target in zviptvctl zviptv-sim zviptv_process man_pages library_tests; do
    if grep -q "^$target:" "$work/targets"; then
        echo "The subproject has the target $target."
        exit 1
    fi
done

DBUS_SYSTEM_BUS_ADDRESS=unix:path=$work/no-bus "$work/build/consumer" >"$work/output"
diff "$work/output" "$source/consumer.txt"

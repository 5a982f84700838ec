# SPDX-License-Identifier: MIT
# shellcheck shell=bash disable=SC2154
# Sourced by installed.sh: builds a program with the client layer, and tests applications with the installed test kits.
templates=/usr/share/zv-iptv/examples
program=$work/home/client_consumer.cpp
cp "$here/../../tests/contract/client_consumer.cpp" "$program"

# built_with HOW: the program talks to the service.
built_with() {
    as "$tester" "$work/home/client-$1" | tee "$work/out"
    grep -qx 'muted: yes' "$work/out" && grep -qx 'tracks: 2' "$work/out" || fail "a program built with $1 prints something else"
}

step "A program with the client layer, built with pkg-config and with CMake"
# shellcheck disable=SC2046
as "$tester" g++ -std=c++17 -Wall -Wextra -Wpedantic -Werror "$program" -o "$work/home/client-pkg-config" \
    $(pkg-config --cflags --libs zv-iptv-client)
built_with pkg-config
mkdir "$work/client"
cat >"$work/client/CMakeLists.txt" <<EOF
cmake_minimum_required(VERSION 3.25)
project(client LANGUAGES CXX)
find_package(ZvIptvServiceApi 1 REQUIRED COMPONENTS Client)
add_executable(client-cmake "$program")
target_link_libraries(client-cmake PRIVATE ZvIptv::Client)
set_target_properties(client-cmake PROPERTIES RUNTIME_OUTPUT_DIRECTORY "$work/home")
EOF
as "$tester" cmake -S "$work/client" -B "$work/home/client" >"$work/cmake.log"
as "$tester" cmake --build "$work/home/client" >>"$work/cmake.log"
built_with cmake
ldd "$work/home/client-cmake" | grep -E '/lib(zvbi|aribb24)\.so' || fail "captions are not decoded"

step "The template of an application in C++, with its tests"
as "$tester" cmake -S "$templates/template-cpp" -B "$work/home/template" >"$work/cmake.log"
as "$tester" cmake --build "$work/home/template" >>"$work/cmake.log"
as "$tester" ctest --test-dir "$work/home/template" --output-on-failure >"$work/ctest.log" || fail "the tests of the C++ template failed"
tail -n 4 "$work/ctest.log"

step "A program in Python"
as "$tester" /usr/bin/python3 -c 'import zviptv; print(len(zviptv.Television().broadcast.audio_tracks()))' | tee "$work/out"
grep -qx 2 "$work/out" || fail "Python does not see the two audio tracks"

step "The template of an application in Python: pytest finds the plugin by its entry point"
as "$tester" /usr/bin/python3 -c 'import zviptv; print(zviptv.__file__)' | tee "$work/out"
grep -qx '/usr/lib/python3/dist-packages/zviptv/__init__.py' "$work/out" || fail "another package is imported"
as "$tester" /usr/bin/python3 -m pytest -q -p no:cacheprovider "$templates/template-python" >"$work/pytest.log" ||
    fail "the tests of the Python template failed"
tail -n 1 "$work/pytest.log"

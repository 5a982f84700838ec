#!/bin/bash
# SPDX-License-Identifier: MIT
# Builds and tests the template of a C++ application with the installed files: template_cpp.sh BUILD SOURCE
. "$(dirname "$0")/../contract/install.sh"

root=$(cd "$source/../.." && pwd)
cp -r "$root/examples/template-cpp" "$work/application"
cd "$work/application"
export PATH=$prefix/bin:$PATH LD_LIBRARY_PATH=$libdir CMAKE_PREFIX_PATH=$prefix ZV_IPTV_LOG=none CXXFLAGS="-Wall -Wextra -Wpedantic -Werror $sanitize"

# The last commands of its CI file.
sed -n 's/^    - \(cmake\|ctest\)/\1/p' ci.yml >commands
[ "$(wc -l <commands)" = 3 ]
bash -e commands | tee out
grep -q '100% tests passed, 0 tests failed out of 2' out
[ -s build/report.xml ] && grep -q 'failures="0"' build/unlock.xml

echo "The test program runs by itself, too"
env -u DBUS_SYSTEM_BUS_ADDRESS build/player_test

echo "A mistake in the application fails its tests"
sed -i 's/MuteAudio(on)/MuteAudio(!on)/; s/Broadcast().UnMuteByRatingPin()/Player().MuteAudio(false)/' Player.cpp
cmake --build build
if ctest --test-dir build --output-on-failure >out; then
    echo "the tests have not noticed it"
    exit 1
fi
grep -q '0% tests passed, 2 tests failed out of 2' out
grep -q 'MuteAudio onoff=1 did not come within 2 s: instead came MuteAudio onoff=0' out
grep -q 'Conversation with the television' out
grep -q 'not met  .*unlock.scenario:3:1: 0.5 expect UnMuteByRatingPin within 5' out

echo "Wrong arguments of zviptv_add_television_test are explained"
refused() {
    printf 'cmake_minimum_required(VERSION 3.25)\nproject(refused LANGUAGES CXX)\nfind_package(ZvIptvServiceApi 1 REQUIRED)\n%s\n' "$1" >"$work/refused/CMakeLists.txt"
    if "$CMAKE_COMMAND" -S "$work/refused" -B "$work/refused/build" >"$work/refused/out" 2>&1; then
        echo "not refused: $1"
        exit 1
    fi
    tr '\n' ' ' <"$work/refused/out" | tr -s ' ' | grep -qF "$2" || { cat "$work/refused/out" && exit 1; }
}
mkdir "$work/refused"
refused 'zviptv_add_television_test(COMMAND true)' 'NAME or COMMAND is missing; give both'
refused 'zviptv_add_television_test(NAME a SCENARO b COMMAND true)' "unexpected or incomplete argument 'SCENARO;b'"
refused 'set(ZVIPTV_SIM_PROGRAM "")
zviptv_add_television_test(NAME a COMMAND true)' 'zviptv-sim was not found; install the package zv-iptv-tools, or set ZVIPTV_SIM_PROGRAM to its path'

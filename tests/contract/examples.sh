#!/bin/bash
# SPDX-License-Identifier: MIT
# The examples, built against the installed files and run with the installed simulator: examples.sh BUILD SOURCE
. "$(dirname "$0")/install.sh"

root=$(cd "$source/../.." && pwd)
"$CMAKE_COMMAND" -S "$root/examples" -B "$work/examples" -DCMAKE_PREFIX_PATH="$prefix" \
    -DCMAKE_CXX_FLAGS="-Wall -Wextra -Wpedantic -Werror $sanitize"
"$CMAKE_COMMAND" --build "$work/examples"
export LD_LIBRARY_PATH=$libdir PATH=$prefix/bin:$work/examples:$PATH ZV_IPTV_LOG=none

on_the_sample() { zviptv-sim --ts "$root/samples/sample.ts" --loop -- "$@"; }

on_the_sample hello_player | tee "$work/out"
grep -qx 'muted: 1, source state: 2, unmuted: 1' "$work/out"
on_the_sample list_tracks | tee "$work/out"
diff "$work/out" - <<'EOF'
audio 0: eng, PID 257
audio 1: deu, PID 258
subtitle 0: eng, PID 259
subtitle 1: eng, PID 260
subtitle 2: deu, PID 260
EOF
on_the_sample receive_pes | tee "$work/out"
test "$(grep -cE '^PID (256|257|258|259|260|261), PTS [0-9]+, [0-9]+ bytes$' "$work/out")" = 10

# The minimal service on a private bus of its own, muted and unmuted by the first example.
. "$source/private_bus.sh"
minimal_service >"$work/service" &
service=$!
wait_for_service "$service"
hello_player | tee "$work/out"
grep -qx 'muted: 1, source state: 2, unmuted: 1' "$work/out"
kill "$service"
diff "$work/service" - <<'EOF'
muted
unmuted
EOF

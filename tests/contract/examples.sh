#!/bin/bash
# SPDX-License-Identifier: MIT
# Builds the examples with the installed files, and runs them with the installed simulator: examples.sh BUILD SOURCE
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

# The first example mutes and unmutes the minimal service on a private bus.
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

# The same application with the client layer and without it: both print the same, also after a restart of the service,
# and the first one is at most half as long.
for variant in with_layer without_layer; do
    # shellcheck disable=SC2046
    "$CXX" -std=c++17 -Wall -Wextra -Wpedantic -Werror ${sanitize:+"$sanitize"} "$root/examples/comparison/$variant.cpp" \
        -o "$work/$variant" $(PKG_CONFIG_PATH="$libdir/pkgconfig" pkg-config --cflags --libs zv-iptv-client glib-2.0 jsoncpp)
    : >"$work/$variant.txt"
    timeout 120 "$work/$variant" >"$work/$variant.txt" &
    application=$!
    for run in 1 2; do
        zviptv-sim --bus system --quiet --ts "$root/samples/sample.ts" --loop --guide "$root/samples/sample.xml" \
            --time 1774735200 &
        service=$!
        until [ "$(grep -c '^packet' "$work/$variant.txt")" = $((run * 3)) ] &&
            [ "$(grep -c '^muted' "$work/$variant.txt")" = "$run" ]; do
            kill -0 "$application"
            sleep 0.25
        done
        kill -KILL "$service"
        until [ "$(grep -c '^no service' "$work/$variant.txt")" = "$run" ]; do
            kill -0 "$application"
            sleep 0.25
        done
    done
    kill "$application"
done
diff <(sort "$work/with_layer.txt") <(sort "$work/without_layer.txt")
diff <(grep -v packet "$work/with_layer.txt") <(grep -v packet "$work/without_layer.txt")
with=$(wc -l <"$root/examples/comparison/with_layer.cpp")
without=$(wc -l <"$root/examples/comparison/without_layer.cpp")
echo "$with lines with the client layer, $without without it"
test $((2 * with)) -le "$without"

#!/bin/bash
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
cat >"$work/bus.conf" <<EOF
<busconfig><type>system</type><listen>unix:path=$work/bus</listen><auth>EXTERNAL</auth><policy context="default">
<allow user="*"/><allow own="*"/><allow send_destination="*"/><allow receive_sender="*"/></policy></busconfig>
EOF
exec 3< <(exec dbus-daemon --config-file="$work/bus.conf" --nofork --nopidfile --print-address 2>"$work/bus.log")
daemon=$!
trap 'kill "$daemon"; rm -rf "$work"' EXIT
read -r DBUS_SYSTEM_BUS_ADDRESS <&3
export DBUS_SYSTEM_BUS_ADDRESS
minimal_service >"$work/service" &
service=$!
dbus-send --system --print-reply --dest=org.freedesktop.DBus / org.freedesktop.DBus.GetId >"$work/id"
until dbus-send --system --print-reply --dest=org.freedesktop.DBus / org.freedesktop.DBus.NameHasOwner \
    string:org.corvel.zviptvapi.dbushelper | grep -q true; do
    kill -0 "$service"
done
hello_player | tee "$work/out"
grep -qx 'muted: 1, source state: 2, unmuted: 1' "$work/out"
kill "$service"
diff "$work/service" - <<'EOF'
muted
unmuted
EOF

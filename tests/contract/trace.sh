#!/bin/bash
# SPDX-License-Identifier: MIT
# Records one session of the simulator with several tools. Checks that zviptvctl trace shows the same for each
# recording, and that tshark reads its files: trace.sh BUILD SOURCE
. "$(dirname "$0")/install.sh"
. "$source/private_bus.sh"

samples=$(cd "$source/../../samples" && pwd)
export LD_LIBRARY_PATH=$libdir PATH=$prefix/bin:$PATH ZV_IPTV_LOG=none TZ=UTC
cd "$work"

# tick NAME: sends a signal, so that the monitors receive something.
tick() {
    dbus-send --system --print-reply --dest=org.freedesktop.DBus / org.freedesktop.DBus.NameHasOwner "string:$1" >tick.out
}

# sees FILE NAME PID: waits until the recording contains a tick of that name.
sees() {
    until grep -aqs "$2" "$1"; do
        kill -0 "$3"
        tick "$2"
    done
}

dbus-monitor --pcap --address "$DBUS_SYSTEM_BUS_ADDRESS" >monitor.pcap &
monitor=$!
busctl --address="$DBUS_SYSTEM_BUS_ADDRESS" --size=134217728 capture >busctl.pcap 2>busctl.log &
busctl=$!
zviptvctl trace --out trace.pcapng >trace.txt 2>trace.log &
trace=$!
sees monitor.pcap the.recording.begins "$monitor"
sees busctl.pcap the.recording.begins "$busctl"
sees trace.pcapng the.recording.begins "$trace"

zviptv-sim --bus system --quiet --record sim.pcap --ts "$samples/sample.ts" --loop --guide "$samples/sample.xml" \
    --time 1774735200 --fault SetAppID=error &
simulator=$!
wait_for_service "$simulator"
cat >calls.sh <<'END'
zviptvctl --id 5 call MuteAudio true
zviptvctl call SetDigitalDualSound MAIN
zviptvctl call GetAudio 77 || [ $? = 1 ]
zviptvctl call SetAppID org.example || [ $? = 4 ]
zviptvctl call GetGenre 4
zviptvctl pes --pid 0x101 --count 1
zviptvctl caption --count 1
END
sh -e calls.sh >calls.out 2>&1
kill "$simulator"
wait "$simulator" || true

sees monitor.pcap the.recording.ends "$monitor"
sees busctl.pcap the.recording.ends "$busctl"
sees trace.pcapng the.recording.ends "$trace"
kill -INT "$trace"
wait "$trace"
kill "$monitor" "$busctl"
wait "$monitor" "$busctl" || true

# content FILE: prints the events of a recording, without times and without calls to the bus itself.
content() {
    zviptvctl trace --in "$1" --json 2>"$1.log" | /usr/bin/python3 -c '
import json, sys
for line in sys.stdin:
    event = json.loads(line)
    for name in ("number", "time", "latency", "request"):
        event.pop(name, None)
    for name in ("process", "program"):
        event.get("application", {}).pop(name, None)
    print(json.dumps(event, sort_keys=True))'
}
for name in trace.pcapng monitor.pcap busctl.pcap sim.pcap; do
    content "$name" >"$name.txt"
    [ "$(grep -c '"function": "PESCB"' "$name.txt")" -ge 1 ]
    [ "$(grep -c '"message": "announcement"' "$name.txt")" -eq 14 ]
    cmp trace.pcapng.txt "$name.txt"
done
[ "$(wc -l <trace.txt)" -eq "$(wc -l <trace.pcapng.txt)" ]

# The simulator answers like the recorded service, whichever program made the recording.
for name in trace.pcapng monitor.pcap busctl.pcap sim.pcap; do
    zviptv-sim --quiet --replay "$name" -- sh -e calls.sh 2>&1 | sed 's/ in [0-9.]* s .*//' |
        diff <(sed 's/ in [0-9.]* s .*//' calls.out) -
done

# shown FILE: function, message, result and problems of every message, as tshark reads them.
shown() {
    tshark -X lua_script:"$prefix/share/zv-iptv/wireshark/zviptv.lua" -r "$1" -Y zviptv -T fields -E separator=, \
        -e zviptv.message -e zviptv.function -e zviptv.result_internal 2>tshark.log
    ! grep -i 'lua\|error\|invalid' tshark.log
}
/usr/bin/python3 -c '
import json, sys
for line in sys.stdin:
    event = json.loads(line)
    if event["message"] not in ("loss", "arrival"):
        print(event["message"], event.get("function", ""), {True: 1, False: 0, None: ""}[event.get("result")], sep=",")
' <trace.pcapng.txt >expected
for name in trace.pcapng sim.pcap; do
    shown "$name" | diff expected -
done

# Bustle counts the same requests.
if command -v bustle >/dev/null; then
    for name in trace.pcapng sim.pcap; do
        [ "$(bustle --count "$name" | awk '$3 == "org.corvel.zviptvapi.DbusCommunication.Send" { print $1 }')" -eq \
            "$(grep -c '"message": "request"' "$name.txt")" ]
    done
else
    echo "not checked: Bustle is not installed (package bustle)"
fi

# The simulator on its private bus, from before the service arrives until it has left.
zviptv-sim --quiet --record session.pcapng --ts "$samples/sample.ts" -- zviptvctl call MuteAudio true
zviptvctl trace --in session.pcapng | sed -E 's/^[0-9:.]+ //; s/:1\.[0-9]+/NAME/g; s/ (zviptvctl)?\[[0-9]+\]//; s/[0-9.]+ ms/TIME/' |
    diff - <(cat <<'END'
NAME -- the service has arrived
NAME -> announces PLAYERCONTROL
NAME <- answers for PLAYERCONTROL dbusname=NAME (TIME)
NAME -> PLAYERCONTROL MuteAudio onoff=true
NAME <- PLAYERCONTROL MuteAudio true (TIME)
NAME -> withdraws PLAYERCONTROL
NAME <- answers for PLAYERCONTROL dbusname=NAME (TIME)
NAME -- has left the bus
NAME -- the service has left the bus
END
)

# A full disk: the simulator goes on, says so, and the recording stays readable.
status=0
(trap '' XFSZ && ulimit -f 8 && exec zviptv-sim --quiet --record full.pcap --ts "$samples/sample.ts" -- \
    zviptvctl call MuteAudio true) >full.out 2>full.log || status=$?
[ "$status" -eq 1 ]
grep -qx "zviptv-sim: cannot write 'full.pcap': File too large; what was written before stays readable" full.log
grep -qx 'result: true' full.out
zviptvctl trace --in full.pcap >full.txt
status=0
zviptv-sim --record bus.txt --ts "$samples/sample.ts" -- true 2>name.log || status=$?
[ "$status" -eq 2 ]
grep -q "name it FILE.pcapng or FILE.pcap" name.log

# A recording that is killed is readable, too.
zviptvctl trace --out killed.pcap >killed.txt 2>killed.log &
trace=$!
sees killed.pcap the.recorder.is.killed "$trace"
kill -KILL "$trace"
wait "$trace" || true
zviptvctl trace --in killed.pcap 2>killed.log
grep -q '^zviptvctl: 0 events of [0-9]* messages$' killed.log

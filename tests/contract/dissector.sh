#!/bin/bash
# SPDX-License-Identifier: MIT
# Checks what tshark shows with zviptv.lua of a recording of dbus-monitor: dissector.sh BUILD SOURCE
. "$(dirname "$0")/install.sh"
. "$source/private_bus.sh"

samples=$(cd "$source/../../samples" && pwd)
export LD_LIBRARY_PATH=$libdir PATH=$prefix/bin:$PATH ZV_IPTV_LOG=none
cd "$work"

# tick NAME: sends a signal, so that the monitor receives something.
tick() {
    dbus-send --system --print-reply --dest=org.freedesktop.DBus / org.freedesktop.DBus.NameHasOwner "string:$1" >tick.out
}

# A capture begins with a header of 24 bytes. It grows when the monitor receives messages.
dbus-monitor --pcap --address "$DBUS_SYSTEM_BUS_ADDRESS" >bus.pcap &
monitor=$!
until [ "$(stat -c %s bus.pcap)" -gt 24 ]; do
    kill -0 "$monitor"
    tick the.recording.begins
done

zviptv-sim --bus system --quiet --ts "$samples/sample.ts" --loop --guide "$samples/sample.xml" --time 1774735200 &
service=$!
wait_for_service "$service"
{
    zviptvctl --id 5 call MuteAudio true
    zviptvctl call MuteVideo false
    zviptvctl call SetDigitalDualSound MAIN
    zviptvctl call GetAudio 0
    zviptvctl call GetAudio 77 || [ $? = 1 ]
    zviptvctl call GetCurrentAudioInfo
    zviptvctl call GetRatingInfo
    zviptvctl call SetAppID org.example
    zviptvctl call GetProgram 18446744073709551615 65535 4294967295 7 PREVIOUS
    zviptvctl call FindProgram 18446744073709551615 4294967295
    zviptvctl call GetGenre 4
    zviptvctl pes --pid 0x101 --count 1
    zviptvctl caption --count 1
} >calls.out 2>&1

# send MESSAGE: sends the service a request that is not part of the protocol.
send() {
    gdbus call --address "$DBUS_SYSTEM_BUS_ADDRESS" --dest org.corvel.zviptvapi.dbushelper \
        --object-path /org/corvel/zviptvapi/DbusCommunication/PLAYERCONTROL \
        --method org.corvel.zviptvapi.DbusCommunication.Send "$1" >>calls.out
}
send "{'functionname': <'MuteAudio'>, 'onoff': <[byte 0x31]>}"
# MuteVideo, between values of other types.
send "{'n': <int16 1>, 'functionname': <[byte 0x4d, 0x75, 0x74, 0x65, 0x56, 0x69, 0x64, 0x65, 0x6f]>, 'handleID': <uint32 9>,
    'v': <<(byte 1, 2.5, [@g 'a(ss)'], [(uint64 1, 'x', true)], {'k': <@ax []>}, @a{sv} {})>>, 'onoff': <[byte 0x31]>}"
send "{'functionname': <[byte 0x57, 0x68, 0x6f]>}"

kill "$service"
wait "$service" || true
until grep -aq the.recording.ends bus.pcap; do
    tick the.recording.ends
done
kill "$monitor"
wait "$monitor" || true

tshark -q -X lua_script:"$prefix/share/zv-iptv/wireshark/zviptv.lua" -X lua_script:"$source/dissector.lua" \
    -r bus.pcap 2>tshark.log | tee shown
! grep -i 'lua\|error\|invalid' tshark.log
diff shown - <<'END'
zviptv.function == "MuteAudio" && zviptv.onoff == 1
    request PLAYERCONTROL 261 1
zviptv.MuteVideo
    request MuteVideo
    reply MuteVideo
    request MuteVideo
    reply MuteVideo
zviptv.mode.name == "MAIN"
    SetDigitalDualSound 1
zviptv.ZVAudio.pid == 0x101
    GetAudio reply 1 eng 1
zviptv.result_internal == 0 && zviptv.endpoint == "BROADCASTDATA"
    GetAudio
zviptv.index == 77
    GetAudio request 77
zviptv.landCode.name == "eng"
    GetCurrentAudioInfo 6647399 0
zviptv.ZVRatingInfo.value > 12
    GetRatingInfo 1 0 17
zviptv.AppID contains "example"
    SetAppID org.example
zviptv.IPGProgramId.eventId == 65535
    18446744073709551615 4294967295 PREVIOUS
zviptv.eventID == 4294967295
    FindProgram 18446744073709551615
zviptv.data contains "Horror"
    GetGenre ["Movie","Horror"]
zviptv.pesPID == 0x101 && zviptv.pesDataSize > 0
    notification AUDIO
zviptv.CaptionCB && zviptv.captionDataSize > 0
    notification CaptionCB
zviptv.on == 1
    requestPESCB IPTVDATASUBSCRIBER
    requestCaptionCB IPTVDATASUBSCRIBER
zviptv.message == "announcement" && zviptv.type == "IPTVDATASUBSCRIBER"
    y
    n
    y
    n
zviptv.MuteVideo && zviptv.onoff == 1
    MuteVideo 1 n has the D-Bus type n, not ay,handleID has the D-Bus type u, not ay,v has the D-Bus type v, not ay
_ws.expert.message contains "functionname"
    functionname has the D-Bus type s, not ay
zviptv.problem
    request functionname has the D-Bus type s, not ay
    request n has the D-Bus type n, not ay,handleID has the D-Bus type u, not ay,v has the D-Bus type v, not ay
    request unknown function Who
    reply unknown function Who
END

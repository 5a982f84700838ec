#!/bin/bash
# SPDX-License-Identifier: MIT
# A demo of the library with real output: starts the simulator, which runs this script again as its command.
set -euo pipefail

if [ -z "${ZVIPTV_SIM_PID+set}" ]; then
    samples=$(dirname "$0")/../samples
    exec zviptv-sim --ts "$samples/sample.ts" --loop --guide "$samples/sample.xml" --time 1774735200 --rating-limit 12 \
        --fault SetAppID=error -- "$0"
fi

bold=$([ -t 1 ] && printf '\033[1m' || true)
plain=$([ -t 1 ] && printf '\033[0m' || true)

# Ctrl-C ends the demo quietly, however the running command reacts to it.
stopper=
interrupted() {
    [ -z "$stopper" ] || kill "$stopper" 2>/dev/null || true
    exit 130
}
trap interrupted INT

chapter() { printf '\n%s== %s%s\n' "$bold" "$*" "$plain"; }

# Shows a command and runs it; its exit status must be the first argument.
show() {
    local wanted=$1 status=0
    shift
    printf '\n$ %s\n' "$*"
    "$@" || status=$?
    if [ "$status" -ne "$wanted" ]; then
        printf 'The demo expected exit status %s, not %s.\n' "$wanted" "$status" >&2
        exit 1
    fi
}

# A person needs some time to type the first command, and then there is a picture. The demo waits for it.
zviptvctl pes --pid 0x102 --count 1 >/dev/null 2>&1 || true

chapter "Player control: each command creates the proxy, makes one call over the bus and prints the answer"
show 0 zviptvctl status
show 0 zviptvctl call MuteAudio true
show 0 zviptvctl call MuteAudio false
show 0 zviptvctl call GetSourceState
show 0 zviptvctl call GetSTCCount
show 0 zviptvctl call GetFirstPTS
show 1 zviptvctl call SetCurrentAudioByIndex 99
printf '(The stream has no track 99: the service refuses, and the exit status is 1.)\n'

chapter "Broadcast data: the tracks of the stream, and the parental lock"
show 0 zviptvctl audio list
show 0 zviptvctl audio select 1
show 0 zviptvctl call GetCurrentAudioInfo
show 0 zviptvctl rating
show 0 zviptvctl unlock pin
show 0 zviptvctl call GetRatingLockState

chapter "Captions: DVB subtitles and teletext in one list, teletext pages, ARIB captions"
show 0 zviptvctl subtitle list
show 0 zviptvctl ttx list
show 0 zviptvctl captions list
show 0 zviptvctl call GetPreferredTTXSubtitle
printf '(The current track 1 is German: the German page is preferred.)\n'
show 0 zviptvctl caption --count 4
printf '(The callback gets captions as broadcast: "teletext" is the data units of the subtitle pages, "caption" a data\n'
printf 'group of the ARIB caption. Their texts count from One, Eins and いち to five.)\n'

chapter "Programme guide: the present programme by the guide's clock"
show 0 zviptvctl call GetPresentProgram 1
show 0 zviptvctl call GetProgramListSize 1 1774735200 14400

chapter "A fault on demand: the simulator answers SetAppID with an error, as its options request"
show 4 zviptvctl call SetAppID org.example.application

chapter "PES delivery: the service pushes the stream's packets to the application's callback"
show 0 zviptvctl pes --count 12

chapter "A long-running application watches the service, which is stopped after 6 seconds"
(
    sleep 6
    kill "$ZVIPTV_SIM_PID"
) &
stopper=$!
show 3 zviptvctl watch --seconds 10

chapter "Without a service"
show 3 zviptvctl call MuteAudio true

cat <<'EOF'

What was shown: a private system bus, the service simulator playing samples/sample.ts on it, and a client of the
installed library. The client created its proxies, muted and unmuted the sound, read the source state, the clock and the
first time stamp, was refused a missing track, read the track lists, unlocked a rated programme, received captions,
queried the guide, got the requested fault, received PES packets as they were played, and noticed that the service left:
the player control object destroyed itself, and no object can be created until a service is back.
EOF

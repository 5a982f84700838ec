#!/bin/bash
# SPDX-License-Identifier: MIT
# The library at work, in words and real output: starts the simulator, which runs this script again as its command.
set -euo pipefail

if [ -z "${ZVIPTV_SIM_PID+set}" ]; then
    samples=$(dirname "$0")/../samples
    exec zviptv-sim --ts "$samples/sample.ts" --loop --guide "$samples/sample.xml" --time 1774735200 --rating-limit 12 \
        --fault SetAppID=error -- "$0"
fi

bold=$([ -t 1 ] && printf '\033[1m' || true)
plain=$([ -t 1 ] && printf '\033[0m' || true)

# Ctrl-C ends the demo quietly, whatever the command that it also reached made of it.
stopper=
interrupted() {
    [ -z "$stopper" ] || kill "$stopper" 2>/dev/null || true
    exit 130
}
trap interrupted INT

chapter() { printf '\n%s== %s%s\n' "$bold" "$*" "$plain"; }

# Shows a command and runs it; its exit status has to be the first argument.
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

# Whoever types sees a picture before the first command; so does the demo.
zviptvctl pes --pid 0x102 --count 1 >/dev/null 2>&1 || true

chapter "Player control: each command creates the proxy, makes one call over the bus and prints what came back"
show 0 zviptvctl status
show 0 zviptvctl call MuteAudio true
show 0 zviptvctl call MuteAudio false
show 0 zviptvctl call GetSourceState
show 0 zviptvctl call GetSTCCount
show 0 zviptvctl call GetFirstPTS
show 1 zviptvctl call SetCurrentAudioByIndex 99
printf '(The stream has no track 99: the service refused, exit status 1.)\n'

chapter "Broadcast data: what the stream carries, and the parental lock"
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
printf '(Track 1, German, is heard: the German page is preferred.)\n'
show 0 zviptvctl caption --count 4
printf '(Captions come to a callback as broadcast: teletext is the data units of the subtitle pages, caption a data\n'
printf 'group of the ARIB caption. They say One and Eins, いち, and so on to five.)\n'

chapter "Programme guide: what is on, by the guide's clock"
show 0 zviptvctl call GetPresentProgram 1
show 0 zviptvctl call GetProgramListSize 1 1774735200 14400

chapter "A fault on demand: the simulator was told to answer SetAppID with an error"
show 4 zviptvctl call SetAppID org.example.application

chapter "PES delivery: the service pushes the stream's packets to the application's callback"
show 0 zviptvctl pes --count 12

chapter "An application that stays: it watches the service, and after 6 seconds the service is stopped"
(
    sleep 6
    kill "$ZVIPTV_SIM_PID"
) &
stopper=$!
show 3 zviptvctl watch --seconds 10

chapter "No service any more"
show 3 zviptvctl call MuteAudio true

cat <<'EOF'

What was shown: a private system bus, the service simulator playing samples/sample.ts on it, and a client of the
installed library. The client created its proxies, muted and unmuted, read source state, clock and first time stamp,
was refused what does not exist, read the track lists, unlocked a rated programme, received captions, asked the guide,
met a fault that it was promised, received PES packets as they were played, and saw the service go: the player control
object destroyed itself, and nothing could be created until a service is back.
EOF

#!/bin/bash
# SPDX-License-Identifier: MIT
# make_corpus.sh BUILD: regenerates the seeds in corpus/ and the words in dictionaries/, from what the project itself
# sends and reads: messages between the simulator and the command line of the build folder BUILD, the samples, the
# streams of the tests' builders. Other files in corpus/ stay: they are inputs that once found a defect.
set -euo pipefail
here=$(dirname "$(realpath "${BASH_SOURCE[0]}")")
corpus=$here/corpus
build=$(realpath "$1")

# Records the messages of each of these commands and methods.
record_all() {
    local words
    while read -r -a words; do
        "$build/tests/fuzz/record_messages" "$corpus" "$build/tools/ctl/zviptvctl" "${words[@]}" >/dev/null
    done <<'END'
status
audio list
audio select 1
subtitle list
ttx list
captions list
rating
unlock pin
captions select caption 0
ttx select 0
subtitle select 0
mute audio on
mute video on
unlock programme
guide exists
guide now 1
guide list 1 1774735200 3600
guide genre 1
guide find 1 1
guide get 0
guide rating 1
pes --count 12
call SetAudioFormat AC3 1
call SetDigitalDualSound 1
call SetCurrentTTX 0
call SetCurrentHybridSBT 0
call GetSTCCount
call SetCurrentISDBText 0 0
call SetCurrentISDBTextService 0 48
call GetCaptionDataMode
call GetDefaultCaptionService
call MuteAudio true
call MuteVideo false
call GetResolution
call SetAppID org.example.application
call GetSourceState
call GetFirstPTS
call GetAudioFormat
call GetDigitalDualSound
call GetCurrentAudioInfo
call SizeOfAudio
call GetAudio 1
call SizeOfTTX
call GetTTX 0
call GetCurrentTTX
call SizeOfHybridSBT
call GetHybridSBT 0
call CheckHardOfHearingSBT
call GetPreferredHybridSBT
call GetCurrentHybridSBT
call GetPreferredTTXSubtitle
call SizeOfISDBText 0
call GetISDBText 0 0
call GetCurrentISDBText 0
call GetCaptionLanguage 1
call GetRatingInfo
call SetUnlockedInfo 1
call GetRatingLockState
call UnMuteByRatingPin
call SetUnlockedInfoWhenFactoryMode 1
call FlagServiceLocked
call ExistXmlForIPG
call GetProgramListSize 1 1774735200 14400
call GetProgram 0
call GetProgram 1 1 1774735200 0 0
call GetPresentProgram 1
call FindProgram 1 1
call GetRating 1
call GetGenre 1
call GetProgramList 1 1774735200 3600
call CloneUSBToTV /media/usb
END
}

if [ "${2-}" = record ]; then # on the simulator's bus
    record_all || true
    exit
fi

# seed TARGET NAME TEXT: a seed of a few words, with printf's escapes.
seed() {
    mkdir -p "$corpus/$1"
    # shellcheck disable=SC2059 # the text is the format
    printf -- "$3" >"$corpus/$1/$2"
}

text_seeds() {
    local number=0 text
    seed xmltv sample "$(sed 's/[%\\]/&&/g' "$root/samples/sample.xml")\n\377"
    seed xmltv programme '<tv><channel id="1.a"><display-name lang="de">Eins</display-name></channel><programme start="20260329010000 +0100" stop="20260329020000 CET" channel="1.a"><title lang="de">T</title><category>News</category><rating system="FSK"><value>12</value></rating></programme></tv>\004'
    seed xmltv latin "<?xml version='1.0' encoding='ISO-8859-1'?><tv><programme start='202603290100' channel='x'><title>\351</title></programme></tv>\020"
    seed xmltv bytes "<?xml version='1.0' encoding='windows-1252'?><tv><programme start='202603290100' channel='x'><title>\200</title></programme></tv>\020"
    seed xmltv entity '<!DOCTYPE tv [<!ENTITY e "x">]><tv><programme start="2026" channel="1"><title>&e;</title></programme></tv>\001'
    seed xmltv defaults '<!DOCTYPE tv [<!ATTLIST title lang CDATA "de" x (a|b) #IMPLIED>]><tv><programme start="2026" channel="1"><title>T</title></programme></tv>\001'
    seed xmltv unread '<!DOCTYPE tv SYSTEM "xmltv.dtd"><tv><programme start="2026" channel="1"><title>&nbsp;</title></programme></tv>\001'
    seed xmltv wide '\377\376<\0t\0v\0/\0>\0\001'
    seed xmltv overlap '<tv><programme start="2026" channel="1"/><programme start="2026" channel="1"/><programme start="20260101000100" stop="20251231" channel="1"/></tv>\001'
    for text in 'Tonight' '\005Caf\351' '\020\000\002\341' '\021\000A\004\020' '\025\303\251' 'A\312e\341\212\206x\207' \
        '\022\260\241' '\023\260\241' '\037\001abc' 'eng\020\000\001\000\001' '\006\001fra' 'eng\011\000'; do
        seed dvb_text "$((++number))" "$text"
    done
    seed guide_query key '{"service_id": "1", "event_id": 1, "start_time": 1774735200, "duration": 0}\002'
    seed guide_query number 'x\002\000\000\070\020i\310\000\240\000\000\000\001\000'
    seed guide_query nested '[[[[[[[[[[[[[[[[[[{"service_id":"\\u00e9"}\002'
    seed request_check repeated '256\\.1\\.0\002\001\002\001\001\001\012\000\000'
    seed request_check id '{"duration": 0, "event_id": 65535, "service_id": "1", "start_time": 1}\\.-1\003\001\002\001\003\000\003'
    seed request_check controls 'IPGUTIL\\.k\033\\.v\302\233\000\000\001\001'
    seed notification CaptionCB 'functionname\\.CaptionCB\\.captionDataSize\\.3\\.captionType\\.5\\.captionData\\.abc\\.\013\013\013\013\004\001'
    number=0
    for text in 0 -1 0x1fff 4294967296 18446744073709551615 -9223372036854775808 2.5 true off kor \
        ZV_LANGUAGE_KOR zv_caption_service_3 8K Gettx ''; do
        seed arguments "$((++number))" "$text"
    done
    number=0
    local steps='\001\000\000\000\050\001\002\001\003\000\002\001\003\007\000\000\000\000\000\000\000'
    for text in 'MuteAudio=delay:300' '*=drop,count=3,for=2.5,from=1e1' 'requestPESCB=error,effect=no' \
        'PESCB=burst:4,application=:1.7,probability=0.25' 'CaptionCB=short:captionData' 'Announcement=dead,count=1' \
        'GetAudio=result:-1,effect=yes' 'PESCB=reorder,count=2' 'MuteAudio=explode' 'PESCB=duplicate,count=1,count=2' \
        'GetAudio=missing:nosuchkey'; do
        seed fault_rule "$((++number))" "$text$steps"
    done
    number=0
    for text in 'pause' 'seek\n2.5' 'speed\n1e3' 'load\nudp://@239.1.1.1:5000' 'programme\n65535' 'lock\nservice' \
        'time\n4294967295' 'fault\nadd\n*=drop\n--count\n3\n--for=1' 'fault\nclear' 'mute\naudio\non' \
        'select\nsubtitle\n1' 'die\n--for\n0' 'fault' 'load\n\377' 'seek\nnan'; do
        seed verb "$((++number))" "$text"
    done
    number=0
    for text in '\000' '\100\000\000\000\000\000\000\000\000\002' '\000\000\000\000\000\000\360\077\001\003' \
        'udp://@239.1.1.1:5000\\.\004' '\001\000\000\000\005' 'service\\.\006' '\000\000\000\000\000\000\000\000\010' \
        '*=drop\\.\003\000\000\000\000\001\011' 'GetAudio=missing:audio\\.\000\000\000\000\000\000\000\000\000\001\001\011' \
        'audio\\.\001\014' 'subtitle\\.\001\000\000\000\015' 'for\\.x\\.\000\002\001\016'; do
        seed control "$((++number))" "$text"
    done
    # Steps of a session, of five bytes: kind, application, function, value, time; at the end speed and --unrecorded.
    seed recording turns '\000\001\000\001\001\000\001\000\001\001\000\001\003\002\001\000\001\000\001\001\000\000'
    seed recording session '\004\000\001\001\000\005\001\000\000\001\002\000\005\000\001\000\001\001\001\001\003\001\000\005\002\003\001\000\006\002\001\001\000\001\003\002\000\005\000\000\000\001\000\001\000\003\000'
    seed recording lives '\004\000\001\001\000\000\001\000\001\001\004\000\001\002\003\004\000\001\001\003\000\001\000\001\001\004\000\001\002\003\004\001\001\003\003\003\000'
    seed recording errors '\001\001\000\001\001\002\000\000\001\000\001\001\000\001\001\002\000\001\377\001\001\001\000\377\004\002\000\004\200\001\006\000\154\031\000\007\001\002\044\001\000\001\000\007\000\002\001'
    seed recording clock-set-back '\000\001\001\001\000\003\001\000\005\012\003\001\000\006\001\001\000'
    mkdir -p "$corpus/scenario"
    for text in "$root"/examples/scenarios/*.scenario; do
        cp "$text" "$corpus/scenario/$(basename "$text" .scenario)"
    done
    seed scenario include 'include b\n1 pause\nexpect no MuteAudio onoff=1 for 2 # x\n\0include a\nafter GetAudio index=1 expect "GetAudio" within 1\n'
    seed scenario quotes 'expect SetAppID AppID="Z\374\\"<&" within 0\n1 load "x'
    seed scenario mark '\357\273\277include b\r\n1 pause\r\n\0\357\273\2771 play\n2 pl\0ay\n'
    seed scenario errors 'x\n-1 pause\n1 seek abc\n1 expect Muteaudio within 2\n1 expect MuteAudio onoff=2 within 2\nafter\n2\ninclude a\n1 fault add MuteAudio=foo\n1 die --for\n'
    number=0
    for text in '--json\nstatus' 'call\nGetTTX\n--\n-1' 'call\nGetAudio\nx' 'call\n--list\n--json' '--help' \
        'audio\nselect\n--help' 'pes\n--count\n3\n--pid\n0x1fff\n--seconds\n0.5' '--profile\n2\n--id=65536\nstats' \
        'help\nguide' 'caption\n--json' 'methods\n--json' '--version' 'call\nGetProgram\n[1,2]' '--log\nguide\nlist'; do
        seed command_line "$((++number))" "$text"
    done
}

# Words that inputs are made of, in libFuzzer's form.
dictionaries() {
    mkdir -p "$here/dictionaries"
    printf '"%s"\n' '<tv>' '</tv>' '<channel id=' '</channel>' '<display-name>' '</display-name>' '<programme' ' start=' \
        ' stop=' ' channel=' '</programme>' '<title' '<sub-title' '<desc' '<category' '<rating' '<value>' '<icon src=' \
        '<episode-num' ' lang=' ' system=' '<![CDATA[' ']]>' '<!ENTITY' '<!DOCTYPE tv [' '&#x' '<?xml version=' \
        ' encoding=' 20260329 ' +0100' >"$here/dictionaries/xmltv.dict"
    "$build/tools/ctl/zviptvctl" --help-all | grep -oE -e '--[a-z-]+|^ *[a-z]+' | tr -d ' ' | sort -u | sed 's/.*/"&"/' \
        >"$here/dictionaries/command_line.dict"
    sed -n 's/^constexpr char [A-Za-z]*\[\] = \("[^"]*"\);.*/\1/p' "$build/protocol/generated/include/zviptv/Protocol.h" | sort -u \
        >"$here/dictionaries/messages.dict"
    printf '"%s"\n' -1 2147483648 33550336 18446744073709551615 >>"$here/dictionaries/messages.dict"
}

root=$here/../..
cmake --build "$build" --target record_messages stream_seeds zviptv-sim zviptvctl
"$build/tools/sim/zviptv-sim" --ts "$root/samples/sample.ts" --loop --guide "$root/samples/sample.xml" \
    --time 1774735200 --rating-limit 12 -- "$0" "$build" record
# Captures of a short session.
capture_seeds() {
    mkdir -p "$corpus/capture"
    for format in pcap pcapng; do
        "$build/tools/sim/zviptv-sim" --quiet --record "$corpus/capture/session.$format" --ts "$root/samples/sample.ts" \
            --fault MuteVideo=error --fault MuteAudio=result:0 -- sh -c '"$1" call MuteAudio true; "$1" call MuteVideo true
            "$1" call GetAudio 0; "$1" pes --count 1' sh "$build/tools/ctl/zviptvctl" || true
    done
}
capture_seeds
"$build/tests/fuzz/stream_seeds" "$corpus" "$root/samples/sample.ts"
text_seeds
dictionaries

#!/bin/bash
# SPDX-License-Identifier: MIT
# Makes a stream with codings that neither the sample nor the captures contain: made_streams.sh mpeg2|latm OUT.ts
# Needs ffmpeg and python3.
set -euo pipefail

picture=(-f lavfi -i "testsrc2=size=720x576:rate=25")
tones() { printf -- '-f lavfi -i sine=frequency=%s:sample_rate=%s ' "$1" "$2"; }

case $1 in
mpeg2) # interlaced MPEG-2 video, 16:9; AC-3 with six channels, AAC in ADTS, MPEG audio in stereo, and mono at a low
    # rate; caption services
    # shellcheck disable=SC2046
    ffmpeg -hide_banner -loglevel error -nostdin -y "${picture[@]}" $(tones 440 48000) $(tones 550 44100) \
        -t 4 -map 0:v -map 1:a -map 2:a -map 1:a -map 2:a \
        -c:v mpeg2video -b:v 600k -flags:v +ildct+ilme -top 1 -aspect 16:9 -g 12 \
        -c:a:0 ac3 -ac:a:0 6 -b:a:0 384k -c:a:1 aac -ac:a:1 2 -b:a:1 96k -c:a:2 mp2 -ac:a:2 2 -b:a:2 192k \
        -c:a:3 mp2 -ac:a:3 1 -ar:a:3 24000 -b:a:3 64k \
        -metadata:s:a:0 language=eng -metadata:s:a:1 language=fra -metadata:s:a:2 language=fra \
        -metadata:s:a:3 language=eng -disposition:a:3 visual_impaired \
        -f mpegts -mpegts_service_id 4660 "$2"
    "$(dirname "$0")/dress.py" "$2"
    ;;
latm) # two programmes: the second has progressive MPEG-2 video, 4:3, AAC in LATM, E-AC-3 and MP3
    # shellcheck disable=SC2046
    ffmpeg -hide_banner -loglevel error -nostdin -y "${picture[@]}" $(tones 440 48000) $(tones 550 32000) \
        -t 4 -map 1:a -map 0:v -map 2:a -map 1:a -map 2:a \
        -c:v mpeg2video -b:v 600k -s 352x288 -r 30000/1001 -aspect 4:3 -g 12 \
        -c:a:0 mp2 -b:a:0 64k -c:a:1 aac -ac:a:1 1 -b:a:1 48k -c:a:2 eac3 -ac:a:2 2 -b:a:2 192k \
        -c:a:3 libmp3lame -ac:a:3 2 -b:a:3 128k \
        -metadata:s:a:1 language=deu -metadata:s:a:2 language=deu -metadata:s:a:3 language=ita \
        -program program_num=7:title=Radio:st=0 -program program_num=9:title=Pictures:st=1:st=2:st=3:st=4 \
        -f mpegts -mpegts_flags latm "$2"
    ;;
esac

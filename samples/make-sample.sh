#!/bin/bash
# SPDX-License-Identifier: MIT
# Makes sample.ts, the transport stream that the simulator and the tests play. Needs ffmpeg, bash
# and python3. The same ffmpeg version writes the same bytes every time: no dates, no version texts, one thread.
#
# usage: make-sample.sh [OUT.ts]
set -euo pipefail

here=$(cd "$(dirname "$0")" && pwd)
out=${1:-$here/sample.ts}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

"$here/make-subtitles.sh" "$work/words.sup"

inputs=(
    -f lavfi -i "testsrc2=size=320x180:rate=25"
    -f lavfi -i "sine=frequency=440:sample_rate=48000"
    -f lavfi -i "sine=frequency=660:sample_rate=48000"
    -fix_sub_duration -itsoffset 1 -i "$work/words.sup"     # first word after one second
)
video=(-c:v libx264 -threads 1 -preset veryslow -profile:v main -g 50 -b:v 90k -maxrate 120k -bufsize 240k
    -bsf:v filter_units=remove_types=6)                    # without the encoder's own note (SEI)
audio=(-c:a mp2 -b:a 48k -ac 1)
labels=(
    -metadata service_name="ZV Sample One" -metadata service_provider="ZV"
    -metadata:s:a:0 language=eng -metadata:s:a:1 language=deu -metadata:s:s:0 language=eng
)
multiplex=(-f mpegts -mpegts_service_id 1 -mpegts_pmt_start_pid 0x1000 -mpegts_start_pid 0x100 -pcr_period 20)
exact=(-flags:v +bitexact -flags:a +bitexact -fflags +bitexact -map_metadata -1)

ffmpeg -hide_banner -loglevel error -nostdin -y "${inputs[@]}" \
    -map 0:v -map 1:a -map 2:a -map 3:s -t 12 \
    "${video[@]}" "${audio[@]}" -c:s dvbsub "${exact[@]}" "${labels[@]}" "${multiplex[@]}" "$work/sample.ts"
"$here/add-captions.py" "$work/sample.ts" "$out"

ls -l "$out"

#!/bin/bash
# SPDX-License-Identifier: MIT
# Makes examples/scenarios/other-tracks.ts, a stream with other tracks than sample.ts. Needs ffmpeg, whose same version
# writes the same bytes every time.
#
# usage: make-other-tracks.sh [OUT.ts]
set -euo pipefail

out=${1:-$(cd "$(dirname "$0")" && pwd)/../examples/scenarios/other-tracks.ts}
inputs=(
    -f lavfi -i "testsrc2=size=160x90:rate=25"
    -f lavfi -i "sine=frequency=330:sample_rate=48000"
)
video=(-c:v libx264 -threads 1 -preset veryslow -profile:v main -g 50 -b:v 40k -maxrate 60k -bufsize 120k
    -bsf:v filter_units=remove_types=6)
audio=(-c:a mp2 -b:a 32k -ac 1)
labels=(
    -metadata service_name="ZV Sample Two" -metadata service_provider="ZV"
    -metadata:s:a:0 language=fra -metadata:s:a:1 language=spa -metadata:s:a:2 language=ita
)
multiplex=(-f mpegts -mpegts_service_id 2 -mpegts_pmt_start_pid 0x1000 -mpegts_start_pid 0x100 -pcr_period 40)
exact=(-flags:v +bitexact -flags:a +bitexact -fflags +bitexact -map_metadata -1)

ffmpeg -hide_banner -loglevel error -nostdin -y "${inputs[@]}" -map 0:v -map 1:a -map 1:a -map 1:a -t 6 \
    "${video[@]}" "${audio[@]}" "${exact[@]}" "${labels[@]}" "${multiplex[@]}" "$out"

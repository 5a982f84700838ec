#!/bin/bash
# SPDX-License-Identifier: MIT
# Writes a small bitmap subtitle file (.sup) for make-sample.sh: block letters on a 320x180 plane,
# shown one word after another. ffmpeg turns it into DVB subtitles.
#
# usage: make-subtitles.sh OUT.sup
set -euo pipefail

out=${1:?usage: make-subtitles.sh OUT.sup}

readonly plane_width=320 plane_height=180 scale=4 left=40 top=130

# One letter per line, five rows of five dots: '#' is ink.
declare -A glyph=(
    [E]="##### #.... ####. #.... #####" [F]="##### #.... ####. #.... #...."
    [H]="#...# #...# ##### #...# #...#" [I]="##### ..#.. ..#.. ..#.. #####"
    [N]="#...# ##..# #.#.# #..## #...#" [O]=".###. #...# #...# #...# .###."
    [R]="####. #...# ####. #..#. #...#" [T]="##### ..#.. ..#.. ..#.. ..#.."
    [U]="#...# #...# #...# #...# .###." [V]="#...# #...# #...# .#.#. ..#.."
    [W]="#...# #...# #.#.# ##.## #...#"
)

hex() { printf "%0$(($1 * 2))x" "$2"; }                       # hex BYTES VALUE
emit() { printf "$(sed 's/../\\x&/g' <<<"$1")" >>"$out"; }    # appends bytes, given as hex digits
segment() {                                                   # segment TYPE PTS PAYLOAD
    emit "5047$(hex 4 "$2")00000000$1$(hex 2 $((${#3} / 2)))$3"
}

run() {                                                       # run COLOUR LENGTH, below 64
    if (($1)); then printf '00%02x%02x' $((0x80 | $2)) "$1"; else printf '00%02x' "$2"; fi
}

bitmap() {                                                    # run-length code of one word
    local word=$1 row dots line i
    for row in 1 2 3 4 5; do
        dots=.
        for ((i = 0; i < ${#word}; i++)); do
            dots+=$(cut -d' ' -f$row <<<"${glyph[${word:i:1}]}").
        done
        line=
        for ((i = 0; i < ${#dots}; i++)); do
            if [[ ${dots:i:1} == '#' ]]; then line+=$(run 1 $scale); else line+=$(run 2 $scale); fi
        done
        for ((i = 0; i < scale; i++)); do printf '%s0000' "$line"; done
    done
}

show() {                                                      # show NUMBER PTS WORD
    local width=$(((${#3} * 6 + 1) * scale)) height=$((5 * scale)) data
    local place; place="$(hex 2 $left)$(hex 2 $top)"
    data="$(hex 2 $width)$(hex 2 $height)$(bitmap "$3")"
    segment 16 "$2" "$(hex 2 $plane_width)$(hex 2 $plane_height)10$(hex 2 "$1")8000000100000000$place"
    segment 17 "$2" "0100$place$(hex 2 $width)$(hex 2 $height)"
    segment 14 "$2" "000001eb8080ff02108080a0"            # palette: white ink, dark box
    segment 15 "$2" "000000c0$(hex 3 $((${#data} / 2)))$data"
    segment 80 "$2" ""
}

blank() {                                                     # blank NUMBER PTS
    segment 16 "$2" "$(hex 2 $plane_width)$(hex 2 $plane_height)10$(hex 2 "$1")00000000"
    segment 80 "$2" ""
}

: >"$out"
number=0 second=1
for word in ONE TWO THREE FOUR FIVE; do
    show $((number++)) $((second * 90000)) $word
    blank $((number++)) $(((second + 1) * 90000))
    ((second += 2))
done

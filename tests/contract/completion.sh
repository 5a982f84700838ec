#!/bin/bash
# SPDX-License-Identifier: MIT
# Checks the completions that bash offers with the installed files, and without the functions of bash-completion:
# completion.sh BUILD SOURCE
. "$(dirname "$0")/install.sh"

export PATH=$prefix/bin:$PATH LD_LIBRARY_PATH=$libdir
completions=$prefix/share/bash-completion/completions
cd "$work"
mkdir empty media said
touch media/one.ts media/two.ts media/guide.xml media/film.scenario
cd media

# The completion asks the tools for the same help again and again: each runs once for each command line.
once() {
    local kept="$work/said/$*"
    [ -e "$kept" ] || command "$@" >"$kept" || return
    printf '%s\n' "$(<"$kept")"
}
zviptvctl() { once zviptvctl "$@"; }
zviptv-sim() { once zviptv-sim "$@"; }

# offered WORD...: prints the completions of the last word. Like bash, it splits words at "=".
offered() (
    # shellcheck source=../../packaging/completion/zviptv.bash
    . "$completions/$1"
    [ "$(complete -p "$1")" = "complete -F _zviptv $1" ] || { echo "$1 has no completion"; exit 1; }
    COMP_WORDS=("$@")
    COMP_CWORD=$(($# - 1))
    _zviptv "$1" "${*: -1}" "${*: -2:1}"
    printf '%s\n' "${COMPREPLY[@]}"
)

# expect 'WORD...' 'LAST WORD' 'OFFERED...'
expect() {
    local typed=() words
    read -ra typed <<<"$1"
    words=$(offered "${typed[@]}" "$2" | sort -u)
    words=${words//$'\n'/ }
    [ "$words" = "$3" ] || { printf '%s\n' "$1 $2: offered: $words" "expected: $3"; exit 1; }
    echo "$1 $2: $words"
}

expect zviptvctl st status
expect zviptvctl doc doctor
expect zviptvctl ba batch
expect zviptvctl ca 'call caption captions'
expect zviptvctl --js --json
expect 'zviptvctl --profile 2 --json' mu mute
expect 'zviptvctl --profile' '' ''
expect 'zviptvctl audio' '' 'list select'
expect 'zviptvctl --log audio' se select
expect 'zviptvctl guide' l 'list load'
expect 'zviptvctl guide' -- '--help --help-all --id --json --log --profile'
expect 'zviptvctl pes' --c --count
expect 'zviptvctl pes --out' '' 'film.scenario guide.xml one.ts two.ts'
expect 'zviptvctl pes --out' t two.ts
expect 'zviptvctl pes --ts' o one.ts
expect 'zviptvctl pes --es' --o --out
expect 'zviptvctl caption' -- '--count --help --help-all --id --json --log --out --page --profile --seconds --srt --text'
expect 'zviptvctl caption --srt' t two.ts
expect 'zviptvctl pes --count 3 --o' --o --out
expect 'zviptvctl pes --count 3' -- '--count --es --help --help-all --id --json --log --out --pid --profile --seconds --ts'
expect 'zviptvctl mute' '' 'audio video'
expect 'zviptvctl mute audio' '' 'off on'
expect 'zviptvctl captions select' c caption
expect 'zviptvctl unlock' p 'pin programme'
expect 'zviptvctl call' Mute 'MuteAudio MuteVideo'
expect 'zviptvctl call --json' GetFirst GetFirstPTS
expect 'zviptvctl call MuteAudio' '' ''
expect 'zviptvctl guide load' g guide.xml
expect 'zviptvctl sim' re 'reset restart'
expect 'zviptvctl sim fault' '' 'add clear remove'
expect 'zviptvctl sim fault add' MuteA MuteAudio
expect 'zviptvctl sim fault add MuteAudio=drop' --c --count
expect 'zviptvctl sim lock' '' 'programme service'
expect 'zviptvctl sim mute audio' '' 'off on'
expect 'zviptvctl sim load' o one.ts
expect 'zviptvctl nonsense' '' ''

expect zviptv-sim --t '--time --ts'
expect 'zviptv-sim --ts' '' 'film.scenario guide.xml one.ts two.ts'
expect 'zviptv-sim --input' o one.ts
expect 'zviptv-sim --ts =' o one.ts
expect 'zviptv-sim --ts one.ts --guide' g guide.xml
expect 'zviptv-sim --ts one.ts --loop --bus' '' 'private system'
expect 'zviptv-sim --bus' = 'private system'
expect zviptv-sim --sc --scenario
expect 'zviptv-sim --ts one.ts --scenario' '' 'film.scenario guide.xml one.ts two.ts'
expect 'zviptv-sim --ts one.ts --junit' g guide.xml
expect 'zviptv-sim --bus =' s system
expect 'zviptv-sim --replay' g guide.xml
expect 'zviptv-sim --replay one.ts --unrecorded' '' 'error false stream'
expect 'zviptv-sim --ts one.ts --' zviptvct zviptvctl
expect 'zviptv-sim --ts one.ts -- cat' o one.ts

# With bash-completion, that package completes the words after --.
_command_offset() { COMPREPLY=("offset $1"); }
expect 'zviptv-sim --ts one.ts -- zviptvctl' au 'offset 4'

# All subcommands and options of the tools are offered.
for tool in zviptvctl zviptv-sim; do
    offered "$tool" -- | sort >"$work/offered"
    "$tool" --help | sed -nE 's/^  (-h,)?(--[a-z-]+(,--[a-z-]+)?).*/\2/p' | tr , '\n' | sort >"$work/named"
    test "$(wc -l <"$work/named")" -gt 6
    diff "$work/offered" "$work/named"
done
offered zviptvctl '' | sort >"$work/offered"
"$prefix/bin/zviptvctl" --help | sed -n '/^Subcommands:/,/^$/s/^  \([a-z]*\) .*/\1/p' | sort | diff - "$work/offered"

# Without the tool, nothing is offered and nothing is printed.
unset -f zviptvctl
[ -z "$(PATH=$work/empty offered zviptvctl '' 2>&1)" ]

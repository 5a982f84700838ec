# SPDX-License-Identifier: MIT
# shellcheck shell=bash
# Bash completion of zviptvctl and zviptv-sim. It reads commands and options from their --help, so that
# nothing is listed twice.

# Prints a line for each option with its value, if it has one: "--bus system|private". An option with two
# names has two lines.
_zviptv_options()
{
    sed -E 's/^  (--[a-z-]+),(--[a-z-]+)(.*)$/  \1\3\n  \2\3/' <<<"$1" |
        sed -nE 's/^  (-[a-z],)?(--[a-z-]+)( ([^ ]+))?( .*)?$/\2 \4/p'
}

_zviptv_subcommands()
{
    sed -nE '/^Subcommands:/,/^$/s/^  ([^ ]+) .*/\1/p' <<<"$1"
}

# Prints what the Nth positional argument accepts: its name, or the words of its description: "on or off".
_zviptv_positional()
{
    sed -nE '/^Positionals:/,/^$/s/^  ([^ ]+)( REQUIRED)? +(.*)$/\1 \3/p' <<<"$1" |
        sed -nE "$2{s/^[^ ]+ ([a-z]+) or ([a-z]+)$/\1|\2/;s/ .*//;p}"
}

# Completes the value of an option or a positional argument: files, the alternatives in its help, methods.
_zviptv_values()
{
    local kind=${1%%=*} tool=$2 cur=$3 methods
    case $kind in
    FILE | 'FILE|URL' | PATH | XMLTV | INPUT)
        compopt -o filenames 2>/dev/null
        mapfile -t COMPREPLY < <(compgen -f -- "$cur")
        ;;
    METHOD)
        methods=$("$tool" methods 2>/dev/null | sed -n 's/^  \([A-Za-z]*\)(.*/\1/p')
        mapfile -t COMPREPLY < <(compgen -W "$methods" -- "$cur")
        ;;
    *\|*)
        mapfile -t COMPREPLY < <(compgen -W "${kind//|/ }" -- "$cur")
        ;;
    esac
}

# Completes the words after --: a command and its arguments.
_zviptv_command()
{
    if declare -F _command_offset >/dev/null; then
        _command_offset "$1"
    elif [ "$1" -eq "$COMP_CWORD" ]; then
        mapfile -t COMPREPLY < <(compgen -c -- "${COMP_WORDS[COMP_CWORD]}")
    else
        compopt -o filenames 2>/dev/null
        mapfile -t COMPREPLY < <(compgen -f -- "${COMP_WORDS[COMP_CWORD]}")
    fi
}

_zviptv()
{
    local tool=${COMP_WORDS[0]/#\~/$HOME} cur=${COMP_WORDS[COMP_CWORD]} path=() awaited='' positionals=0
    local help word i
    COMPREPLY=()
    help=$("$tool" --help 2>/dev/null) || return
    for ((i = 1; i < COMP_CWORD; i++)); do
        word=${COMP_WORDS[i]}
        if [ "$word" = = ]; then
            continue # bash parts --option=value at the sign
        elif [ -n "$awaited" ]; then
            awaited=''
        elif [ "$word" = -- ]; then
            [ ${#path[@]} -gt 0 ] || _zviptv_command $((i + 1))
            return
        elif [[ $word == -* ]]; then
            awaited=$(_zviptv_options "$help" | sed -n "s/^$word //p")
        elif _zviptv_subcommands "$help" | grep -qxF -e "$word"; then
            path+=("$word")
            help=$("$tool" "${path[@]}" --help 2>/dev/null) || return
        else
            positionals=$((positionals + 1))
        fi
    done
    [ "$cur" != = ] || cur=''
    if [ -n "$awaited" ]; then
        _zviptv_values "$awaited" "$tool" "$cur"
    elif [[ $cur == -* ]]; then
        mapfile -t COMPREPLY < <(compgen -W "$(_zviptv_options "$help" | sed 's/ .*//')" -- "$cur")
    elif [ "$positionals" -eq 0 ] && [ -n "$(_zviptv_subcommands "$help")" ]; then
        mapfile -t COMPREPLY < <(compgen -W "$(_zviptv_subcommands "$help")" -- "$cur")
    else
        _zviptv_values "$(_zviptv_positional "$help" $((positionals + 1)))" "$tool" "$cur"
    fi
}

complete -F _zviptv zviptvctl zviptv-sim

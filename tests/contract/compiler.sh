#!/bin/bash
# SPDX-License-Identifier: MIT
# Compiles the sources of a command one by one and then links them, so that a compiler cache, which does not keep linked
# programs, finds unchanged sources: compiler.sh CACHE COMPILER ARGUMENT...
set -euo pipefail
cache=$1
compiler=$2
shift 2

case " $* " in
*' -c '* | *' -E '* | *' -fsyntax-only '*) exec "$cache" "$compiler" "$@" ;;
esac

objects=$(mktemp -d)
trap 'rm -rf "$objects"' EXIT
sources=() to_compile=() to_link=()
while [ $# -gt 0 ]; do
    case $1 in
    *.cpp)
        to_link+=("$objects/${#sources[@]}.o")
        sources+=("$1")
        ;;
    -o)
        to_link+=("$1" "$2")
        shift
        ;;
    -l* | -L* | -Wl,*) to_link+=("$1") ;;
    *)
        to_compile+=("$1")
        to_link+=("$1")
        ;;
    esac
    shift
done
for i in "${!sources[@]}"; do
    "$cache" "$compiler" "${to_compile[@]}" -c "${sources[i]}" -o "$objects/$i.o"
done
"$compiler" "${to_link[@]}"

#!/bin/bash
# SPDX-License-Identifier: MIT
# fuzz.sh BUILD SECONDS: runs every fuzz target of the build folder BUILD for the given number of seconds, two at a
# time, and prints the results. Inputs that end a target are kept in BUILD/findings, new inputs in BUILD/corpus.
# The exit status is not 0 if there is a finding, or if a target did not run.
set -euo pipefail
here=$(dirname "$(realpath "${BASH_SOURCE[0]}")")
build=$(realpath "$1")
seconds=$2

dictionary_of() {
    case $1 in
    notification | reply | call | peer_message | helper_message | request_check) echo messages ;;
    *) echo "$1" ;;
    esac
}

# Its end status is in the log's last line.
run_target() {
    local target=$1 status=0 dictionary limit=128 options=()
    dictionary=$here/dictionaries/$(dictionary_of "$target").dict
    [ -f "$dictionary" ] && options+=("-dict=$dictionary")
    [ "$target" != capture ] || limit=256 # libpcap makes room for a message of 128 MiB when one is announced
    mkdir -p "$build/corpus/$target" "$build/findings" "$build/logs"
    "$build/tests/fuzz/fuzz_$target" "${options[@]}" -max_total_time="$seconds" -timeout=10 -rss_limit_mb=1024 \
        -malloc_limit_mb="$limit" -max_len=65536 -artifact_prefix="$build/findings/$target-" \
        "$build/corpus/$target" "$here/corpus/$target" >"$build/logs/$target.log" 2>&1 || status=$?
    printf '\nexit status %d\n' "$status" >>"$build/logs/$target.log"
}

# Prints the number after a word in the last line of libFuzzer.
number() { sed -nE "s|^#.*[[:space:]]$2 ([0-9]+).*|\\1|p" "$build/logs/$1.log" | tail -1; }

row() {
    local target=$1 log=$build/logs/$1.log runs result=none
    runs=$(sed -nE 's/^#([0-9]+)[[:space:]].*/\1/p' "$log" | tail -1)
    tail -1 "$log" | grep -qx 'exit status 0' ||
        result="$(grep -m1 -E 'SUMMARY:|does not hold|out-of-memory|timeout' "$log" || tail -1 "$log")"
    [ -n "$runs" ] || [ "$result" != none ] || result='did not run'
    printf '%-15s %10s %8s %8s %8s  %s\n' "$target" "${runs:-0}" "$(number "$target" exec/s:)" "$(number "$target" cov:)" \
        "$(number "$target" corp:)" "$result"
    [ "$result" = none ]
}

if [ "${3-}" != "" ]; then
    run_target "$3"
    exit
fi

export G_DEBUG=fatal-criticals ZV_IPTV_LOG=none ASAN_OPTIONS=quarantine_size_mb=64 UBSAN_OPTIONS=print_stacktrace=1
mapfile -t targets < <(find "$build/tests/fuzz" -maxdepth 1 -name 'fuzz_*' -type f -perm /1 -printf '%f\n' | sed 's/^fuzz_//' | sort)
[ ${#targets[@]} -gt 0 ] || { echo "No fuzz targets in $build" >&2; exit 1; }
printf '%s\n' "${targets[@]}" | xargs -P 2 -n 1 "$0" "$build" "$seconds"
failed=0
printf '%-15s %10s %8s %8s %8s  %s\n' target runs 'runs/s' coverage corpus finding
for target in "${targets[@]}"; do
    row "$target" || failed=1
done
[ "$failed" -eq 0 ] || echo "The inputs are in $build/findings, the logs in $build/logs." >&2
exit "$failed"

#!/bin/bash
# SPDX-License-Identifier: MIT
# inprocess.sh PROGRAM FOLDER [OPTION...]: measures what encoding and decoding cost, and leaves the figures
# (inprocess.json) and what they ask the heap for (inprocess-allocations.json) in FOLDER. The options are Google
# Benchmark's and override those here.
set -euo pipefail
program=$1 folder=$2
mkdir -p "$folder"
export ZV_IPTV_LOG=none

# Every repetition runs all benchmarks, in another order each time: what disturbs the machine meets all of them.
"$program" --benchmark_repetitions=15 --benchmark_min_time=0.02 --benchmark_enable_random_interleaving=true \
    --benchmark_out="$folder/inprocess.json" --benchmark_out_format=json "${@:3}" >"$folder/inprocess.log" 2>&1 ||
    { cat "$folder/inprocess.log"; exit 1; }
G_SLICE=always-malloc "$program" --benchmark_min_time=0 --benchmark_out="$folder/inprocess-allocations.json" \
    --benchmark_out_format=json >>"$folder/inprocess.log" 2>&1 || { cat "$folder/inprocess.log"; exit 1; }

#!/bin/bash
# SPDX-License-Identifier: MIT
# inprocess.sh PROGRAM FOLDER [OPTION...]: measures encoding and decoding, and writes the times (inprocess.json) and the
# allocations (inprocess-allocations.json) to FOLDER. The options are those of Google Benchmark, and override the ones
# below.
set -euo pipefail
program=$1 folder=$2
mkdir -p "$folder"
export ZV_IPTV_LOG=none

# Every repetition runs all benchmarks in a new order, so that a disturbance of the machine affects all of them.
"$program" --benchmark_repetitions=15 --benchmark_min_time=0.02 --benchmark_enable_random_interleaving=true \
    --benchmark_out="$folder/inprocess.json" --benchmark_out_format=json "${@:3}" >"$folder/inprocess.log" 2>&1 ||
    { cat "$folder/inprocess.log"; exit 1; }
G_SLICE=always-malloc "$program" --benchmark_min_time=0 --benchmark_out="$folder/inprocess-allocations.json" \
    --benchmark_out_format=json >>"$folder/inprocess.log" 2>&1 || { cat "$folder/inprocess.log"; exit 1; }

#!/bin/bash
# SPDX-License-Identifier: MIT
# Runs the demo, and checks its output: demo.sh BUILD SOURCE
. "$(dirname "$0")/install.sh"

export PATH=$prefix/bin:$PATH LD_LIBRARY_PATH=$libdir ZV_IPTV_LOG=none
"$source/../../examples/demo.sh" 2>&1 | tee "$work/out"
for shown in '^result: true$' '^teletext size=' '"title":"Cellar Door"' 'Error.Injected' '^video pid=0x0100' \
    '^the service left the bus' '^What was shown:'; do
    grep -q "$shown" "$work/out" || { echo "The demo does not show: $shown" >&2 && exit 1; }
done

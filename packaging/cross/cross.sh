#!/bin/bash
# SPDX-License-Identifier: MIT
# Builds the libraries and tools for another architecture and tests them, in QEMU if this machine cannot run them:
# cross.sh ARCHITECTURE PACKAGE...
# PACKAGE... are the packages of the sysroot. All files are in build/cross/ARCHITECTURE.
set -euo pipefail
architecture=$1
shift
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)
folder=$root/build/cross/$architecture
build=$folder/build
jobs=$(nproc)

say() { printf '\n== %s\n' "$*"; }

# quietly LOG COMMAND...: runs the command, and shows its output only if it fails.
quietly() {
    local log=$1
    shift
    "$@" >"$log" 2>&1 || { cat "$log"; exit 1; }
}

# The test programs that run alone or beside a dbus-daemon of this machine.
programs=(message_tests dbus_tests native_tests proxy_tests log_tests support_tests
    client_tests client_stream_tests caption_tests mpegts_tests sim_stream_tests sim_guide_tests sim_unit_tests)

# leave_out REASON NAME...: leaves out the tests whose names begin with NAME.
names=() reasons=()
leave_out() {
    reasons+=("$*")
    names+=("${@:2}")
}

leave_out 'they look at the installed files or the tools of this machine:' contract. look. cost. policy_tests. soak.
if [ "$architecture" = i386 ] && [ "$(uname -m)" = x86_64 ]; then
    how='on this machine'
    programs+=(fault_tests ctl_tests sim_service_tests)
    export GCONV_PATH=$folder/sysroot/usr/lib/i386-linux-gnu/gconv # character sets for the C library
    leave_out 'their programs find the libraries of the sysroot before those of LD_LIBRARY_PATH:' \
        ctl_tests.DoctorVersion.ReportsTheLoadedLibrary \
        ctl_tests.DoctorVersion.FollowsALinkToItsFolder ctl_tests.DoctorVersion.ReportsAServiceWhoseLibraryWasReplaced
else
    how='in QEMU'
    leave_out 'they start programs of the architecture, which this machine cannot run by itself:' \
        fault_tests. ctl_tests. sim_service_tests. log_tests.LogEnvironment. log_tests.SystemLog.
    leave_out 'QEMU does not know PR_SET_CHILD_SUBREAPER:' support_tests.ChildProcessTest.DiesWithTheProcessThatStartedIt
fi
if [ "$architecture" = armhf ]; then
    leave_out 'exceptions cannot pass through GLib, which has no unwind tables on armhf:' dbus_tests.Exceptions. \
        dbus_tests.HelperServerLife.AnswersAnnouncementsAfterAnExceptionOfTheHandler \
        proxy_tests.DispatchFaults.MalformedPESThrowsOutOfTheDispatch \
        proxy_tests.DispatchFaults.MalformedCaptionThrowsOutOfTheDispatch \
        proxy_tests.DispatchFaults.FirstMalformedNumberCounts proxy_tests.DispatchFaults.ProxyWorksAfterManyFailures \
        proxy_tests.DispatchFaults.FailureOfACallbackLeavesTheDispatch
fi

# beginning NAME...: prints a regular expression for the tests whose names begin with NAME.
beginning() {
    local IFS='|'
    local alternatives="$*"
    printf '^(%s)' "${alternatives//./\\.}"
}

say "Making the sysroot: $architecture"
"$root/packaging/cross/sysroot.sh" "$architecture" "$folder/sysroot" "$@"

say "Building: $architecture"
quietly "$folder/configure.log" cmake -S "$root" -B "$build" -G Ninja -DCMAKE_TOOLCHAIN_FILE="$root/cmake/cross.cmake" \
    -DZVIPTV_CROSS="$architecture" -DZVIPTV_SYSROOT="$folder/sysroot" -DCMAKE_BUILD_TYPE=RelWithDebInfo \
    -DZVIPTV_WERROR=ON -DZVIPTV_TOOLS=ON -DZVIPTV_BENCH=OFF -DBUILD_TESTING=ON
cmake --build "$build" -j "$jobs" --target ServiceApi Client zviptv-sim zviptvctl fuzz_targets "${programs[@]}"

say "Testing: $architecture, $how"
ctest --test-dir "$build" -j $((jobs * 2)) --output-on-failure \
    -R "$(beginning "${programs[@]/%/.}" fuzz_replay. cross.)" -E "$(beginning "${names[@]}")"

say "Left out on $architecture"
printf -- '- %s\n' "${reasons[@]}"

# SPDX-License-Identifier: MIT
# shellcheck shell=bash disable=SC2154
# Sourced by installed.sh: tests the simulator's unit, and starts it if systemd runs the machine.
unit=zviptv-sim.service
if ! command -v systemd-analyze >/dev/null; then
    echo "skipped: systemd is not installed"
    return
fi
[ "$(systemctl --root=/ is-enabled "$unit" || true)" = disabled ] || fail "the unit is not disabled"
systemd-analyze verify --man=false "/lib/systemd/system/$unit"
systemd-analyze security --offline=true --threshold=10 "/lib/systemd/system/$unit" | tail -n 1
if [ ! -d /run/systemd/system ]; then
    echo "not started: systemd does not run this machine"
    return
fi
(
    unset DBUS_SYSTEM_BUS_ADDRESS
    trap 'systemctl stop "$unit"' EXIT
    systemctl start "$unit"
    as "$tester" zviptvctl status
)

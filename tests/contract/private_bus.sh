# SPDX-License-Identifier: MIT
# shellcheck shell=bash disable=SC2154
# Sourced by contract tests after install.sh: starts a bus in $work that ends with the test, and sets
# DBUS_SYSTEM_BUS_ADDRESS to its address.
cat >"$work/bus.conf" <<END
<busconfig><type>system</type><listen>unix:path=$work/bus</listen><auth>EXTERNAL</auth><policy context="default">
<allow user="*"/><allow own="*"/><allow send_destination="*"/><allow receive_sender="*"/></policy></busconfig>
END
exec 3< <(exec dbus-daemon --config-file="$work/bus.conf" --nofork --nopidfile --print-address 2>"$work/bus.log")
daemon=$!
trap 'kill "$daemon"; rm -rf "$work"' EXIT
read -r DBUS_SYSTEM_BUS_ADDRESS <&3
export DBUS_SYSTEM_BUS_ADDRESS

# wait_for_service PID: waits until the process owns the service's name.
wait_for_service() {
    until dbus-send --system --print-reply --dest=org.freedesktop.DBus / org.freedesktop.DBus.NameHasOwner \
        string:org.corvel.zviptvapi.dbushelper | grep -q true; do
        kill -0 "$1"
    done
}

#!/bin/bash
# SPDX-License-Identifier: MIT
# Checks that examples/python/service.py answers every function, pushes to subscribers, and works again after it was
# killed: python_service.sh BUILD SOURCE
. "$(dirname "$0")/install.sh"
. "$source/private_bus.sh"

root=$(cd "$source/../.." && pwd)
export LD_LIBRARY_PATH=$libdir PATH=$prefix/bin:$PATH ZV_IPTV_LOG=none
cd "$work"

start_service() {
    "$root/examples/python/service.py" --time 1774720000 >service.log 2>&1 &
    service=$!
    wait_for_service "$service"
}

await() {
    local end=$((SECONDS + 60))
    until "$@"; do
        [ "$SECONDS" -lt "$end" ] || { echo "not true within 60 s: $*"; cat service.log; exit 1; }
        sleep 0.05
    done
}

# lines PATTERN FILE COUNT: succeeds if at least COUNT lines of the file match the pattern.
lines() { [ -f "$2" ] && [ "$(grep -c "$1" "$2")" -ge "$3" ]; }

# ask TYPE REQUEST: sends a request as a caller that has announced nothing.
ask() {
    gdbus call --address "$DBUS_SYSTEM_BUS_ADDRESS" --dest org.corvel.zviptvapi.dbushelper \
        --object-path "/org/corvel/zviptvapi/DbusCommunication/$1" \
        --method org.corvel.zviptvapi.DbusCommunication.Send "$2" 2>&1 | sed '/^(According to introspection/d; /^$/d'
}

# Runs the commands of a session, which begin with "$ ", and compares the output and every exit status other than 0.
replay() {
    local line
    while read -r line; do
        if [ "${line#\$ }" != "$line" ]; then
            printf '%s\n' "$line"
            eval "${line#\$ }" 2>&1 </dev/null || printf 'exit status %s\n' "$?"
        fi
    done <"$1" >session
    diff "$1" session
}

start_service
replay "$source/python_service.txt"
zviptvctl methods | sed -n 's/^  \([A-Za-z]*\)(.*/\1/p' | grep -v ubscribeFor | sort -u >methods.list
[ "$(wc -l <methods.list)" -ge 49 ]
grep -o '^\$ zviptvctl call [A-Za-z]*' "$source/python_service.txt" | cut -d ' ' -f 4 | sort -u | diff methods.list -

echo "An application can announce only its own channels, and gets further packets even if it answers with errors"
"$source/python_peer.py" | diff "$source/python_peer.txt" -

echo "An application is killed: the service drops its channel"
left=$(grep -c '^IPTVDATASUBSCRIBER leaves' service.log)
zviptvctl pes >killed 2>&1 &
killed=$!
await lines ^audio killed 1
kill -KILL "$killed"
await lines '^IPTVDATASUBSCRIBER leaves' service.log $((left + 1))

echo "An application is stopped: others still get packets, and it does, too, when it continues"
zviptvctl pes >stopped 2>&1 &
stopped=$!
await lines ^audio stopped 1
kill -STOP "$stopped"
before=$(grep -c ^audio stopped)
[ "$(zviptvctl pes --count 5 2>&1 | grep -c ^audio)" = 5 ]
kill -CONT "$stopped"
await lines ^audio stopped $((before + 5))

echo "The service is killed and started again: applications notice both"
zviptvctl watch --json >watch.log 2>&1 &
watch=$!
await lines '"event":"tick"' watch.log 1
kill -KILL "$service"
status=0
wait "$stopped" || status=$?
[ "$status" = 3 ]
tail -n 1 stopped | grep -qx 'zviptvctl: the service left the bus; start it, then run this command again'
await lines '"event":"waiting"' watch.log 1
start_service
await lines '"event":"back"' watch.log 1
[ "$(zviptvctl call GetSourceState)" = $'result: true\nstate: 2 (PLAYING)' ]
zviptvctl caption --count 1 2>/dev/null | grep -qx 'teletext size=46'
kill -INT "$watch"
wait "$watch"

echo "A second service cannot own the name"
status=0
"$root/examples/python/service.py" >second 2>&1 || status=$?
[ "$status" = 1 ]
diff second - <<'END'
service.py: cannot own org.corvel.zviptvapi.dbushelper: another service has it, or the bus refuses; stop the other service, or run as the user that the bus's policy names
END
kill "$service"

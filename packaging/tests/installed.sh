#!/bin/bash
# SPDX-License-Identifier: MIT
# Tests the installed packages, as root: installed.sh [DEB...]. The given packages are installed first and purged at the
# end, with their dependencies. The bus has Debian's configuration, and a separate socket if the machine's system bus
# runs.
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
. "$here/installation.sh"
[ "$(id -u)" -eq 0 ] || { echo "Installing packages and acting as other users needs root." >&2; exit 1; }
work=$(mktemp -d)
chmod 755 "$work"
stock_socket=/run/dbus/system_bus_socket
stream=/usr/share/zv-iptv/samples/sample.ts
helper=org.corvel.zviptvapi.dbushelper
daemon='' service='' made_socket=''
export ZV_IPTV_LOG=none LC_ALL=C.UTF-8

step() { printf '\n-- %s\n' "$*"; }

fail() {
    printf 'FAILED: %s\n' "$*" >&2
    tail -n 20 "$work"/*.log >&2 2>/dev/null || true
    exit 1
}

stop() { [ -z "$1" ] || { kill "$1" && wait "$1"; } 2>/dev/null || true; }

cleanup() {
    local status=$?
    trap - EXIT
    set +e
    stop "$service"
    remove_packages || status=1
    remove_accounts || status=1
    stop "$daemon"
    [ -z "$made_socket" ] || rm -f "$stock_socket"
    rm -rf "$work"
    [ "$status" -ne 0 ] || printf '\nThe installed packages work.\n'
    exit "$status"
}
trap cleanup EXIT
trap 'exit 130' INT TERM HUP

# start_bus SOCKET: the system bus as Debian configures it, with the policies that are installed.
start_bus() {
    mkdir -p "$(dirname "$1")"
    exec 3< <(exec dbus-daemon --config-file=/usr/share/dbus-1/system.conf --address="unix:path=$1" --nofork \
        --nopidfile --nosyslog --print-address 2>"$work/bus.log")
    daemon=$!
    read -r DBUS_SYSTEM_BUS_ADDRESS <&3 || fail "the bus does not start"
    export DBUS_SYSTEM_BUS_ADDRESS
}

# become USER COMMAND...: replaces the shell by the command, so that a background process is the command itself and can
# be stopped.
become() {
    local user=$1
    shift
    cd /
    HOME=$work/home exec setpriv --reuid "$user" --regid "$(id -g "$user")" --init-groups "$@"
}

as() (become "$@")

bus_method() { dbus-send --system --print-reply --dest=org.freedesktop.DBus / "org.freedesktop.DBus.$1" "${@:2}"; }

# If no bus runs, the test's bus is that of the machine, and the installation itself must make it read the policy.
if [ ! -S "$stock_socket" ] && command -v dbus-daemon >/dev/null; then
    start_bus "$stock_socket"
    made_socket=yes
    bus_method GetId >/dev/null
fi
if [ $# -gt 0 ]; then
    step "Installing: $(basename -a "$@" | tr '\n' ' ')"
    mapfile -t packages < <(realpath "$@")
    install_packages "${packages[@]}"
fi
[ -n "$daemon" ] || start_bus "$work/bus"
add_tester
mkdir "$work/home"
chown "$tester" "$work/home"

step "The systemd unit: disabled, valid, with few privileges"
. "$here/unit.sh"

step "Bash completes the tools' words"
for words in "zviptvctl sta status" "zviptv-sim --lo --loop --lock-service --lock-stops-pushes"; do
    read -r tool typed offered <<<"$words"
    # shellcheck disable=SC2016 # for the shell inside
    as "$tester" bash -c '. "/usr/share/bash-completion/completions/$1" && COMP_WORDS=("$1" "$2") COMP_CWORD=1 &&
        _zviptv && echo "${COMPREPLY[@]}"' bash "$tool" "$typed" | tee "$work/out"
    grep -qx -- "$offered" "$work/out" || fail "bash offers something else for $tool $typed"
done

step "The simulator, as the user zviptv"
start_service() {
    become zviptv zviptv-sim --bus system --quiet --ts "$stream" --loop 2>"$work/service.log" &
    service=$!
    local end=$((SECONDS + 60))
    until bus_method NameHasOwner "string:$helper" | grep -q true; do
        kill -0 "$service" 2>/dev/null && [ "$SECONDS" -lt "$end" ] || fail "the service does not own its name"
        sleep 0.05
    done
}
start_service
bus_method GetConnectionUnixUser "string:$helper" | grep -qw "uint32 $(id -u zviptv)" || fail "another user owns the name"

step "The site and its API reference"
site=/usr/share/doc/zv-iptv-doc/html
grep -q 'Your first application' "$site/index.html" || fail "no site"
grep -q 'Selects the audio track at' "$site/reference/api/IPlayerControl.h.html" || fail "no API reference"
broken=$(find -L "$site" -type l -o -name '*.gz')
[ -z "$broken" ] || fail "a browser cannot read: $broken"

step "Examples, built by an ordinary user from the development files"
examples=/usr/share/doc/zv-iptv-doc/examples
for source in "$examples"/*.cpp; do
    modules='zv-iptv-service-api glib-2.0'
    ! grep -q '<zviptv/client/' "$source" || modules='zv-iptv-client glib-2.0 ncursesw'
    # shellcheck disable=SC2046
    as "$tester" g++ -std=c++17 -Wall -Wextra -Wpedantic -Werror "$source" \
        -o "$work/home/$(basename "$source" .cpp)" $(pkg-config --cflags --libs $modules)
done
as "$tester" cmake -S "$examples" -B "$work/home/cmake" >"$work/cmake.log"
as "$tester" cmake --build "$work/home/cmake" >>"$work/cmake.log"

step "A user of the group zviptv-apps can use the service with the examples and zviptvctl"
for folder in "$work/home" "$work/home/cmake"; do
    as "$tester" "$folder/hello_player" | tee "$work/out"
    grep -qx 'muted: 1, source state: 2, unmuted: 1' "$work/out" || fail "hello_player prints something else"
    as "$tester" "$folder/list_tracks" | tee "$work/out"
    grep -qx 'subtitle 2: deu, PID 260' "$work/out" || fail "list_tracks prints something else"
    as "$tester" "$folder/receive_pes" >"$work/out"
    [ "$(grep -c '^PID ' "$work/out")" -eq 10 ] || fail "receive_pes has not received 10 packets"
done
as "$tester" zviptvctl status
as "$tester" zviptvctl caption --count 1
zviptvctl call MuteAudio false # root may
. "$here/client.sh"

step "The user nobody can neither call the service nor own its name"
status=0
as nobody zviptvctl call MuteAudio true 2>&1 | tee "$work/out" || status=${PIPESTATUS[0]}
[ "$status" -ge 3 ] || fail "the user nobody could call the service: exit status $status"
grep -q AccessDenied "$work/out" || fail "zviptvctl does not report AccessDenied to the user nobody"

step "zviptvctl doctor gives each user the right diagnosis"
as "$tester" zviptvctl doctor
zviptvctl doctor >"$work/out" || fail "zviptvctl doctor reports to root: $(cat "$work/out")"
diagnose() { # USER STATUS LINE
    local status=0
    as "$1" zviptvctl doctor >"$work/out" || status=$?
    if [ "$status" -ne "$2" ] || ! grep -q -- "$3" "$work/out"; then
        fail "zviptvctl doctor reports to $1: $(cat "$work/out")"
    fi
}
diagnose nobody 4 '^        sudo adduser nobody zviptv-apps$'
diagnose zviptv 0 '^ok       policy     loaded (/usr/share/dbus-1/system.d/'
stop "$service"
service=''
diagnose "$tester" 3 '^wrong: service$'
for user in nobody root "$tester"; do
    status=0
    as "$user" timeout 20 zviptv-sim --bus system --ts "$stream" 2>"$work/out" || status=$?
    sed "s/^/$user: /" "$work/out"
    [ "$status" -eq 1 ] || fail "$user runs a service: exit status $status"
done

step "An ordinary user runs the demo"
as "$tester" /usr/share/zv-iptv/examples/demo.sh >"$work/demo.log" 2>&1 || fail "the demo exited with an error"
tail -n 6 "$work/demo.log"
grep -q '^What was shown:' "$work/demo.log" || fail "the demo does not come to its end"

#!/bin/bash
# SPDX-License-Identifier: MIT
# Checks that the folders of src and tools include only the folders in docs/explanation/architecture.md, and that the
# installed headers include nothing of either: layers.sh BUILD SOURCE
set -euo pipefail
cd "$2/../.."
status=0

fail() {
    echo "$1"
    status=1
}

# may FOLDER OTHER...: declares the other folders that the folder includes.
may() {
    local folder=$1 included other
    shift
    [ -d "$folder" ] || fail "$folder does not exist; remove it from this test"
    checked+=" $folder "
    included=$({ grep -rhoE '#include "[a-z]+/' "$folder" || true; } | sed 's/.*"//; s/\/$//' | sort -u)
    for other in $included; do
        if [[ " $rooms " == *" $other "* ]] && ! grep -qw "$other" <<<"${folder##*/} $*"; then
            fail "$folder includes $other"
        fi
    done
}
folders=$(find src src/client tools tools/sim tools/ctl -mindepth 1 -maxdepth 1 -type d ! -path src/client ! -path tools/sim ! -path tools/ctl)
rooms=$(for folder in $folders; do echo "${folder##*/}"; done | tr '\n' ' ')
checked=

may include
may src/failure
may src/message
may src/log
may src/glib
may src/dbus failure glib message log
may src/native dbus message log
may src/proxy dbus failure message log
may src/mpegts
may src/client/guide glib
may src/client/message
may src/client/link dbus glib
may src/client/calls
may src/client/state
may src/client/stream mpegts
may src/client/captions mpegts

may tools/process
may tools/common glib
may tools/verbs glib
may tools/trace common glib
may tools/sim/stream mpegts
may tools/sim/input stream mpegts process glib
may tools/sim/guide stream mpegts
may tools/sim/playback guide input stream mpegts process common
may tools/sim/replay trace process common
may tools/sim/endpoints playback replay guide input stream common glib
may tools/sim/control endpoints playback verbs common glib
may tools/sim/scenario common
may tools/sim/panel input trace verbs process common glib
may tools/sim/host control endpoints input panel playback scenario trace verbs process common glib
may tools/ctl/output mpegts common glib
may tools/ctl/session output glib
may tools/ctl/commands session output common
may tools/ctl/simulator session output verbs common glib
may tools/ctl/doctor output common glib
may tools/ctl/trace session output trace common glib

# The folders of the client layer, which are included as "client/FOLDER/...".
client_may() {
    local room=src/client/$1 included other
    shift
    [ -d "$room" ] || fail "$room does not exist; remove it from this test"
    clients+=" $room "
    included=$({ grep -rhoE '#include "client/[a-z]+/' "$room" || true; } | sed 's|.*client/||; s|/$||' | sort -u)
    for other in $included; do
        grep -qw "$other" <<<"${room##*/} $*" || fail "$room includes client/$other"
    done
}
clients=
client_may guide
client_may message guide
client_may link message
client_may calls link message
client_may state link
client_may stream message
client_may captions stream
for room in src/client/*/; do
    [[ "$clients" == *" ${room%/} "* ]] || fail "$room is missing in this test; add what it may include"
done
# It uses the library through its public headers, except for the code that watches a bus.
while IFS=: read -r file name; do
    case $name in
    dbus/CloseWatch.h | dbus/FreeDescriptors.h | dbus/SignalSubscription.h | dbus/UserData.h) ;;
    *) fail "$file includes $name" ;;
    esac
done < <(grep -roE '#include "dbus/[A-Za-z]+\.h"' src/client | sed 's/#include "//; s/"$//')

for folder in $folders; do
    [[ "$checked" == *" $folder "* ]] || fail "$folder is missing in this test; add what it may include"
done
# A name without a folder belongs to the same folder or to a generated header, never to the folder above.
while IFS=: read -r file name; do
    [ -e "${file%/*}/$name" ] || [ -z "$(find src tools -name "$name")" ] || fail "$file includes $name of another folder"
done < <(grep -roE '#include "[A-Za-z0-9]+\.h"' src/*/ tools/*/ | sed 's/#include "//; s/"$//')
if grep -rnE --exclude-dir=testing '#include [<"](gio|glib|dbus/dbus|json)' include; then
    fail "a public header includes a header of another library"
fi
exit $status

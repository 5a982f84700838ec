#!/bin/bash
# Folders of src include what docs/architecture.md says, headers and tools nothing of src: layers.sh BUILD SOURCE
set -euo pipefail
cd "$2/../.."
status=0

# may FOLDER LAYER...: what the folder includes of src.
may() {
    local folder=$1 layer found
    shift
    found=$({ grep -rhoE '#include "[a-z]+/' "$folder" || true; } | sed 's/.*"//; s/\/$//' | sort -u)
    for layer in message log dbus native proxy; do
        if grep -qx "$layer" <<<"$found" && ! grep -qw "$layer" <<<"$*"; then
            echo "$folder includes src/$layer"
            status=1
        fi
    done
}
may src/message message
may src/log log
may src/dbus dbus message log
may src/native native dbus message log
may src/proxy proxy dbus message log
may include
may tools
if grep -rnE '#include [<"](gio|glib|dbus/dbus|json)' include; then
    echo "a header includes a library's"
    status=1
fi
exit $status

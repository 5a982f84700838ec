#!/bin/bash
# Folders of src include what docs/architecture.md says, headers and tools nothing of src: layers.sh BUILD SOURCE
set -euo pipefail
cd "$2/../.."
status=0

# may FOLDER LAYER...: what the folder includes of src.
may() {
    local folder=$1 layer found
    shift
    [ -d "$folder" ] || { echo "$folder is no folder" && status=1; }
    found=$({ grep -rhoE '#include "[a-z]+/' "$folder" || true; } | sed 's/.*"//; s/\/$//' | sort -u)
    for layer in $layers; do
        if grep -qx "$layer" <<<"$found" && ! grep -qw "$layer" <<<"$*"; then
            echo "$folder includes src/$layer"
            status=1
        fi
    done
}
layers=$(cd src && find . -mindepth 1 -maxdepth 1 -type d -printf '%f ')
[ "$(wc -w <<<"$layers")" -eq 5 ] || { echo "say here what each of these may include: $layers" && status=1; }
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

#!/bin/bash
# SPDX-License-Identifier: MIT
# Runs the commands of a page, builds its programs and compares the output: page.sh BUILD SOURCE PAGE
. "$(dirname "$0")/install.sh"

root=$(cd "$source/../.." && pwd)
mkdir "$work/bin"
printf '#!/bin/sh\nexec "%s" "$@" %s\n' "$CXX" "$sanitize" >"$work/bin/g++"
# Pages use this to wait for a service, as a reader would.
cat >"$work/bin/wait-for-service" <<'END'
#!/bin/sh
tries=0
until dbus-send --system --print-reply --dest=org.freedesktop.DBus / org.freedesktop.DBus.NameHasOwner \
    string:org.corvel.zviptvapi.dbushelper | grep -q true; do
    tries=$((tries + 1))
    [ "$tries" -lt 600 ] || { echo "no service has started" >&2; exit 1; }
    sleep 0.05
done
END
# In a container the bus prints warnings about its limits.
printf '#!/bin/sh\nexec dbus-daemon "$@" 2>>"%s"\n' "$work/bus.log" >"$work/bin/bus"
printf '#!/bin/sh\nexec "%s" --dbus-daemon="%s" "$@"\n' "$(command -v dbus-run-session)" "$work/bin/bus" \
    >"$work/bin/dbus-run-session"
chmod +x "$work"/bin/*
ln -s "$prefix" "$work/prefix"
ln -s /usr/bin/python3 "$work/bin/python3" # the compiled module is for Debian's
export PATH=$work/bin:$prefix/bin:$PATH LD_LIBRARY_PATH=$libdir PKG_CONFIG_PATH=$libdir/pkgconfig ZV_IPTV_LOG=none
export PYTHONPATH=$prefix/lib/python3/dist-packages PYTHONDONTWRITEBYTECODE=1
export MYPY_CACHE_DIR=$build/tests/contract/mypy
export CMAKE_PREFIX_PATH=$prefix CXXFLAGS=$sanitize DBUS_SYSTEM_BUS_ADDRESS=unix:path=$work/no-bus
/usr/bin/python3 -B "$source/pages/page.py" "$3" "$root" "$work"

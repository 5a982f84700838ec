#!/bin/sh
# SPDX-License-Identifier: MIT
# with_journal.sh COMMAND...: runs the command with a private journal as the system's log, which keeps every line in
# memory. Nothing is written to the machine's log. Run it as root, in unshare --mount.
set -e
mount --make-rprivate /
mount -t tmpfs tmpfs /run
mkdir -p /run/systemd/journal /run/systemd/journald.conf.d /run/log/journal
printf '[Journal]\nStorage=volatile\nReadKMsg=no\nAudit=no\nRateLimitIntervalSec=0\n' \
    >/run/systemd/journald.conf.d/bench.conf
setpriv --pdeathsig KILL /lib/systemd/systemd-journald </dev/null >/dev/null 2>&1 &
tries=0
until journalctl --sync 2>/dev/null; do # it answers when it reads
    tries=$((tries + 1))
    [ "$tries" -lt 600 ] || { echo "systemd-journald does not start" >&2; exit 1; }
    sleep 0.05
done
exec "$@"

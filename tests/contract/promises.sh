#!/bin/bash
# Every test that the page of promises names exists: promises.sh BUILD SOURCE
set -euo pipefail
build=$1
page=$2/../../docs/reliability.md
listed=$(ctest --test-dir "$build" -N | sed -n 's/^ *Test *#[0-9]*: //p')
named=$(grep -oE '`[a-z_]+\.[A-Za-z0-9]+(\.[A-Za-z0-9_]+)?`' "$page" | tr -d '`' | sort -u)
[ -n "$named" ] || { echo "docs/reliability.md names no test" >&2; exit 1; }
status=0
while read -r test; do
    grep -qxE "${test%%.*}\.([A-Za-z0-9]+/)?${test#*.}(/.*)?" <<<"$listed" || {
        echo "docs/reliability.md names $test, which is no test" >&2
        status=1
    }
done <<<"$named"
echo "$(wc -l <<<"$named") tests named"
exit $status

#!/bin/bash
# SPDX-License-Identifier: MIT
# Checks that every test that the pages of guarantees name exists: guarantees.sh BUILD SOURCE
set -euo pipefail
build=$1
docs=$2/../../docs/reference
listed=$(
    ctest --test-dir "$build" -N | sed -n 's/^ *Test *#[0-9]*: //p'
    find "$build/tests" -name '*_tests' -type f -executable | while read -r program; do
        "$program" --gtest_list_tests | awk -v program="${program##*/}" '/^[^ ]/ { suite = $1 } /^ / { print program "." suite $1 }'
    done
)
status=0

# A page names a test, its suite, or the whole program, and leaves out the name of an instantiation.
names=$(awk '
    function accept(name) { do print name; while (sub(/[.\/][^.\/]*$/, "", name)) }
    { accept($0) }
    sub(/\.[A-Za-z0-9]+\//, ".") { accept($0) }' <<<"$listed" | sort -u)

for page in reliability.md compatibility.md; do
    # shellcheck disable=SC2016 # the marks are those of the page
    named=$(grep -oE '`([a-z_]+_tests|contract)(\.[A-Za-z0-9_]+)*`' "$docs/$page" | tr -d '`' | sort -u)
    [ -n "$named" ] || { echo "docs/reference/$page names no test" >&2; exit 1; }
    while read -r test; do
        echo "docs/reference/$page names $test, which does not exist" >&2
        status=1
    done < <(comm -23 <(echo "$named") <(echo "$names"))
    echo "docs/reference/$page: $(wc -l <<<"$named") tests named"
done
exit $status

#!/bin/bash
# SPDX-License-Identifier: MIT
# The page of the control interface names the members that the interface has, with their types, and the verbs that
# zviptvctl has: control_page.sh BUILD SOURCE
. "$(dirname "$0")/install.sh"

root=$source/../..
page=$root/docs/simulator-control.md
export LD_LIBRARY_PATH=$libdir

# The rows of a table, their first N cells without the code marks: "Running b".
rows() {
    sed -n "/^<!-- table: $1 -->/,/^<!-- end of table -->/p" "$page" | sed -n '5,$p;4p' | grep '^| `' |
        sed 's/\\|/OR/g' | cut -d '|' -f "$2" | sed 's/`//g; s/|/ /g; s/  */ /g; s/^ //; s/ *$//; s/OR/|/g' | sort
}

python3 - "$root/tools/sim/control/org.corvel.zviptvapi.Simulator1.xml" >"$work/members" <<'PYTHON'
import sys
import xml.etree.ElementTree as tree
interface = tree.parse(sys.argv[1]).getroot().find("interface")
for member in interface:
    types = [argument.get("type") for argument in member.findall("arg")]
    words = {"property": [member.get("type")], "signal": ["".join(types)], "method": [", ".join(types)]}[member.tag]
    print(member.tag, member.get("name"), *words)
PYTHON
[ "$(wc -l <"$work/members")" -gt 45 ]

for table in properties:property:2,3 signals:signal:2,3; do
    IFS=: read -r name tag cells <<<"$table"
    sed -n "s/^$tag //p" "$work/members" | sed 's/ *$//' | sort >"$work/described"
    echo "$name:"
    rows "$name" "$cells" | diff "$work/described" -
done

# A method's types are those before the entries of its dictionary.
sed -n 's/^method //p' "$work/members" | sed 's/ *$//' | sort >"$work/described"
echo methods:
rows methods 3,4 | sed 's/:.*//' | diff "$work/described" -

# Every verb, as zviptvctl spells it.
for verb in $("$prefix/bin/zviptvctl" sim --help | sed -n '/^Subcommands:/,/^$/s/^  \([a-z]*\) .*/\1/p'); do
    case $verb in
    status | watch) ;;
    fault) printf 'fault %s\n' add clear remove ;;
    *) echo "$verb" ;;
    esac
done | sort >"$work/verbs"
echo verbs:
rows methods 2 | sed -E 's/^(fault [a-z]+|[a-z]+).*/\1/' | sort | diff "$work/verbs" -
while read -r verb; do
    # shellcheck disable=SC2086
    "$prefix/bin/zviptvctl" sim $verb --help | sed -n 's/^Usage: zviptvctl sim //p' | sed 's/ \[OPTIONS\]//'
done <"$work/verbs" | sort >"$work/usage"
rows methods 2 | sed 's/ \[.*//' | sort | diff "$work/usage" -

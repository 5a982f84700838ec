#!/bin/bash
# SPDX-License-Identifier: MIT
# Checks that the page of the control interface lists its members with their types, the words of its properties, and the
# verbs of zviptvctl: control_page.sh BUILD SOURCE
. "$(dirname "$0")/install.sh"

root=$source/../..
page=$root/docs/reference/simulator-control.md
export LD_LIBRARY_PATH=$libdir

# Prints the first N cells of each row of a table, without code marks: "Running b".
rows() {
    sed -n "/^<!-- table: $1 -->/,/^<!-- end of table -->/p" "$page" | sed -n '5,$p;4p' | grep '^| `' |
        sed 's/\\|/OR/g' | cut -d '|' -f "$2" | sed 's/`//g; s/|/ /g; s/  */ /g; s/^ //; s/ *$//; s/OR/|/g' | sort
}

# Prints the words between code marks.
marked() {
    # shellcheck disable=SC2016
    grep -o '`[A-Za-z]*`' | tr -d '`' | sort
}

/usr/bin/python3 - "$root/tools/sim/control/org.corvel.zviptvapi.Simulator1.xml" >"$work/members" <<'PYTHON'
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

# The words of enumerations, in the order of their numbers.
words() {
    sed -n "s/^constexpr char const\* $1\[\] = {\(.*\)};/\1/p" "$root/tools/sim/control/Report.cpp" |
        tr -d '" ' | tr ',' '\n'
}
echo states:
words SourceStates | awk '{ print $0, NR - 1 }' | sort >"$work/described"
[ "$(wc -l <"$work/described")" -eq 5 ]
rows "source states" 2,3 | diff "$work/described" -
for property in SourceState:SourceStates DualSound:DualSounds; do
    echo "$property:"
    words "${property#*:}" | sort >"$work/described"
    [ "$(wc -l <"$work/described")" -ge 4 ]
    sed -n "s/^| \`${property%:*}\` //p" "$page" | cut -d '|' -f 3 | marked | diff "$work/described" -
done

# Properties whose changes are not signalled, which the page names in one sentence.
echo "not announced:"
grep -B 1 EmitsChangedSignal "$root/tools/sim/control/org.corvel.zviptvapi.Simulator1.xml" |
    sed -n 's/.*<property name="\([A-Za-z]*\)".*/\1/p' | sort >"$work/described"
[ -s "$work/described" ]
tr '\n' ' ' <"$page" | grep -o '[^.]* change all the time' | marked | diff "$work/described" -

# The types of a method are those before its dictionary of options.
sed -n 's/^method //p' "$work/members" | sed 's/ *$//' | sort >"$work/described"
echo methods:
{ rows methods 3,4 | sed 's/:.*//'; rows "scenario methods" 2-4 | sed -E 's/ ([a-z]) ([a-z])/ \1, \2/'; } | sort | diff "$work/described" -

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

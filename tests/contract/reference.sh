#!/bin/bash
# SPDX-License-Identifier: MIT
# Checks that Doxygen makes the API reference without warnings, and that it documents every public entity: reference.sh BUILD SOURCE
set -euo pipefail
root=$(cd "$2/../.." && pwd)
generated="$1/protocol/generated/include $1/kits/include"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
if ! command -v doxygen >/dev/null; then
    echo "skipped: doxygen is not installed (package doxygen)"
    exit 77
fi

# make_reference FOLDER: makes the reference of a folder with the layout of the project.
make_reference() {
    mkdir -p "$work/out"
    printf '%s\n' '@INCLUDE = docs/site/Doxyfile' "INPUT += $generated" "STRIP_FROM_PATH += $generated" "OUTPUT_DIRECTORY = $work/out" |
        (cd "$1" && doxygen -) 2>&1
}
make_reference "$root"

# Doxygen does not warn about enumerators and macros: the test searches for them in the result.
/usr/bin/python3 - "$work/out/xml" <<'PYTHON'
import glob, sys, xml.etree.ElementTree as tree
def bare(node):
    return not any("".join(text.itertext()).strip()
                   for kind in ("briefdescription", "detaileddescription") for text in node.findall(kind))
seen, missing = 0, []
for file in glob.glob(sys.argv[1] + "/*.xml"):
    root = tree.parse(file).getroot()
    for node in [*root.iter("enumvalue"), *root.iter("memberdef")]:
        if node.get("prot") != "private" and (node.tag == "enumvalue" or node.get("kind") in ("define", "enum", "typedef")):
            seen += 1
            if bare(node):
                missing.append(node.findtext("name"))
print(seen, "enumerators, enumerations, macros and types")
if missing or seen < 80:
    sys.exit("not documented: " + ", ".join(missing))
PYTHON

# The check finds entities without documentation and with wrong documentation.
copy=$work/copy
mkdir -p "$copy/docs"
cp -r "$root/include" "$root/examples" "$copy"
cp -r "$root/docs/site" "$copy/docs"
for wrong in 'ZVIPTV_API void ZVNothingSaid();' $'/// Takes `a`.\n/// @param b what is not there\nZVIPTV_API void ZVWrong(int a);'; do
    { cat "$root/include/zviptv/SystemLog.h" && echo "$wrong"; } >"$copy/include/zviptv/SystemLog.h"
    if make_reference "$copy" >"$work/said"; then
        echo "not noticed: $wrong"
        exit 1
    fi
    grep -q 'SystemLog.h:[0-9]*: error:' "$work/said" || { cat "$work/said" && exit 1; }
done

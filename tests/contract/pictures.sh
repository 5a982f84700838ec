#!/bin/bash
# SPDX-License-Identifier: MIT
# Checks that the pictures of the pages match their sources: pictures.sh BUILD SOURCE
set -euo pipefail
root=$(cd "$2/../.." && pwd)
if ! command -v dot >/dev/null; then
    echo "skipped: Graphviz is not installed (package graphviz)"
    exit 77
fi
if ! fc-list 'DejaVu Sans' | grep -q .; then
    echo "skipped: the font of the pictures is not installed (package fonts-dejavu-core)"
    exit 77
fi
"$root/docs/pictures/draw.py" --check

# The check finds a picture that differs from its source.
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cp "$root"/docs/pictures/* "$work"
sed -i 's/MuteAudio(true)/MuteAudio(false)/' "$work/request.dot"
if "$work/draw.py" --check >"$work/said"; then
    echo "a changed source is not noticed"
    exit 1
fi
grep -qx 'docs/pictures/request.svg is out of date; renew it with ./run pictures' "$work/said"

#!/bin/bash
# SPDX-License-Identifier: MIT
# Checks that the manual pages list exactly the options and commands of --help: man_pages.sh BUILD SOURCE
. "$(dirname "$0")/install.sh"

pages=$(cd "$source/../../docs/man" && pwd)
export LD_LIBRARY_PATH=$libdir
options() { grep -oE -- '--[a-z][a-z-]*' | sort -u; }

for tool in zviptv-sim zviptvctl; do
    "$prefix/bin/$tool" --help >"$work/help"
    # The words at the beginning of a line; on the page of zviptvctl, only those before its commands.
    grep -oE '^ *(-[a-z],)?--[a-z-]+(,--[a-z-]+)*' "$work/help" | options >"$work/in-help"
    sed '/^# COMMANDS/,$d' "$pages/$tool.1.scd" | grep -E '^\*-' | options >"$work/in-page"
    echo "$tool:"
    diff "$work/in-help" "$work/in-page"
done

sed -n '/^Subcommands:/,/^$/s/^  \([a-z]*\) .*/\1/p' "$work/help" | sort >"$work/in-help"
sed -n '/^# COMMANDS/,/^# EXIT/s/^\*\([a-z]*\)\*.*/\1/p' "$pages/zviptvctl.1.scd" | sort -u >"$work/in-page"
test -s "$work/in-help"
diff "$work/in-help" "$work/in-page"

"$prefix/bin/zviptvctl" --help | sed -n 's/^  \([0-6]\)  \(.*\)/\1 \2/p' >"$work/in-help"
sed -n '/^# EXIT/,/^# ENV/p' "$pages/zviptvctl.1.scd" | sed -n '/^\*[0-6]\*$/{s/\*//g;N;s/\n\t/ /;p}' >"$work/in-page"
test -s "$work/in-help"
diff "$work/in-help" "$work/in-page"

# The pages of the tools and the overview are installed.
for page in man1/zviptv-sim.1 man1/zviptvctl.1 man7/zv-iptv.7; do
    grep -q '^\.TH ' "$prefix/share/man/$page" || { echo "Not installed: $page"; exit 1; }
done

#!/bin/bash
# Types the commands of the README's tour and compares what comes out: readme_tour.sh BUILD SOURCE
#
# Commands begin with "$ "; what follows "... -- bash" is typed in that shell, up to "exit". A comment in the tour
# tells after what, up to the end of the line, numbers may differ.
. "$(dirname "$0")/install.sh"

root=$(cd "$source/../.." && pwd)
sed -n '/^## A five-minute tour$/,/^## /p' "$root/README.md" >"$work/tour.md"
numbers=$(sed -n 's/^<!-- numbers may differ after: \(.*\) -->$/\1/p' "$work/tour.md")
test -n "$numbers"
sed -n '/^```console$/,/^```$/{/^```/!p}' "$work/tour.md" >"$work/page"
test "$(grep -c '^\$ ' "$work/page")" -ge 15

# Whoever types sees picture, sound and captions before the first command; so does the script.
awk '
BEGIN { print "exec 2>&1" }
!more && !/^\$ / { next }
{ typed = typed $0 "\n"; more = /\\$/ }
more { next }
{
    printf "status=$?\ncat <<\"TYPED\"\n%sTYPED\n(exit $status)\n", typed
    command = substr(typed, 3)
    typed = ""
    if (command == "exit\n") {
        print "SESSION"
    } else if (sub(/-- bash\n$/, "-- bash <<\"SESSION\"\n", command)) {
        printf "%s", command
        print "for pid in 0x100 0x102 0x105; do zviptvctl pes --pid $pid --count 1 >/dev/null 2>&1; done"
    } else {
        printf "%s", command
    }
}' "$work/page" >"$work/commands"

mkdir -p "$work/here/build" "$work/bin"
ln -s "$root/samples" "$root/examples" "$work/here"
printf '#!/bin/sh\nexec "%s" "$@" %s\n' "$CXX" "$sanitize" >"$work/bin/g++"
chmod +x "$work/bin/g++"
export PATH=$work/bin:$prefix/bin:$PATH LD_LIBRARY_PATH=$libdir PKG_CONFIG_PATH=$libdir/pkgconfig ZV_IPTV_LOG=none
(cd "$work/here" && bash "$work/commands") >"$work/run"

without_numbers() {
    awk -v after="$numbers" 'match($0, after) {
        end = substr($0, RSTART + RLENGTH)
        gsub(/[0-9]+/, "#", end)
        $0 = substr($0, 1, RSTART + RLENGTH - 1) end
    } { print }' "$1"
}
diff -u --label README.md <(without_numbers "$work/page") --label 'what comes out' <(without_numbers "$work/run")

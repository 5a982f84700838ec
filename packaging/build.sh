#!/bin/bash
# SPDX-License-Identifier: MIT
# Builds the Debian packages twice, with different folders, time zones and umasks, and keeps the first ones if the
# second ones are identical to the byte: build.sh OUT. With --once before OUT, builds once and without lintian, to test
# the packages.
set -euo pipefail
cd "$(dirname "$0")/.."
once=''
if [ "$1" = --once ]; then
    once=yes
    shift
fi
mkdir -p "$1"
out=$(realpath "$1")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

say() { printf '\n== %s\n' "$*"; }

# Prints the files of the project: all that git does not ignore or, without git, all outside the folders build, debian
# and .git.
files() {
    if [ -e .git ] && git ls-files >/dev/null 2>&1; then
        git ls-files -z --cached --others --exclude-standard | while IFS= read -r -d '' file; do
            [ ! -e "$file" ] || printf '%s\0' "$file"
        done
    else
        find . \( -path ./build -o -path ./debian -o -path ./.git \) -prune -o -type f -print0
    fi
}

# build FOLDER TIMEZONE UMASK [OPTION...]: builds the packages in the parent folder of FOLDER, without the caller's
# environment. Prints each step, and the end of the log if one fails.
build() (
    cd "$1"
    umask "$3"
    env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin HOME="$work" LC_ALL=C.UTF-8 TZ="$2" \
        DEB_BUILD_OPTIONS="parallel=$(nproc)" dpkg-buildpackage -us -uc "${@:4}" 2>&1 |
        tee "$1.log" | grep --line-buffered '^   dh_' || {
        tail -n 50 "$1.log" >&2
        exit 1
    }
)

version=$(dpkg-parsechangelog -l packaging/debian/changelog -S Version)
if [ "$(date +%s)" -lt "$(dpkg-parsechangelog -l packaging/debian/changelog -S Timestamp)" ]; then
    echo "the clock is earlier than packaging/debian/changelog; correct the clock or the changelog" >&2
    exit 1
fi
first=$work/one/libzv-iptv-service-api-$version
second=$work/another-place/of-another-length/libzv-iptv-service-api-$version
mkdir -p "$first" "$second"
files | tar -c --null --files-from=- | tar -x -C "$first"
cp -r "$first/packaging/debian" "$first/debian"

# keep: replaces the previous packages with the ones just built.
keep() {
    rm -f "$out"/*.{deb,dsc,tar.xz,changes,buildinfo}
    find "$work/one" -maxdepth 1 -type f ! -name '*.log' -exec cp -t "$out" {} +
    say "In ${out#"$PWD"/}"
    (cd "$out" && ls -1 ./*.deb)
}

say "Building the packages"
if [ -n "$once" ]; then
    build "$first" UTC 022 --build=binary
    keep
    exit
fi
cp -a "$first/." "$second"
build "$first" UTC 022
say "Building them again, elsewhere"
build "$second" Asia/Kathmandu 077
for file in "$work"/one/*.deb "$work"/one/*.dsc "$work"/one/*.tar.xz; do
    cmp "$file" "$(dirname "$second")/$(basename "$file")"
done
echo "Both builds are identical to the byte."

say "lintian"
lintian --allow-root --fail-on error,warning --info --display-info "$work"/one/*.changes

keep

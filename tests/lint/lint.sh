#!/bin/bash
# SPDX-License-Identifier: MIT
# Checks the sources without running them: lint.sh BUILD [FILE...]
# Checks all files of the project, or the given ones. Sources are compiled as in the release in BUILD, but
# separately. A header is checked with the sources that include it.
set -uo pipefail
root=$(cd "$(dirname "$0")/../.." && pwd)
build=$(realpath "$1")
shift
[ $# -eq 0 ] || mapfile -t named < <(realpath -s --relative-to="$root" "$@")
cd "$root" || exit 1
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
failed=0

all() { git ls-files --cached --others --exclude-standard; }
chosen() { if [ -v named ]; then printf '%s\n' "${named[@]}"; else all; fi; }
# The files to check, without those that do not exist.
mapfile -t files < <(chosen | while read -r file; do [ ! -f "$file" ] || printf '%s\n' "$file"; done)

# matching PATTERN: prints those of them that match.
matching() { printf '%s\n' "${files[@]}" | grep -E "$1"; }

# say TOOL FILE...: prints the tool and the number of its files.
say() { printf '%s: %s files\n' "$1" "$(($# - 1))"; }

check() { "$@" || failed=1; }

# The rules of .editorconfig for all texts. Markdown may end lines with spaces. Seeds and samples are not checked.
mapfile -t texts < <(matching . | grep -vE '^(tests/fuzz/corpus|samples)/|\.(md|svg)$' | xargs -d '\n' grep -lI .)
if [ ${#texts[@]} -gt 0 ]; then
    say "ends of lines" "${texts[@]}"
    ! grep -nE '[[:space:]]$' /dev/null "${texts[@]}" || failed=1
    for text in "${texts[@]}"; do
        [ -z "$(tail -c 1 "$text")" ] || { echo "$text: the last line does not end" && failed=1; }
    done
fi

mapfile -t licensed < <(matching '(\.(cpp|h|py|sh|bash|cmake|lua|gnuplot)|CMakeLists\.txt|/run|^run)$')
if [ ${#licensed[@]} -gt 0 ]; then
    say "licence lines" "${licensed[@]}"
    for file in "${licensed[@]}"; do
        head -n 3 "$file" | grep -q 'SPDX-License-Identifier: MIT' ||
            { echo "$file: add a line with SPDX-License-Identifier: MIT at its top" && failed=1; }
    done
fi

mapfile -t sources < <(matching '\.(cpp|h)$')
if [ ${#sources[@]} -gt 0 ]; then
    say clang-format "${sources[@]}"
    check clang-format-14 --dry-run -Werror "${sources[@]}"
fi

# Names or first lines identify the scripts of bash.
mapfile -t scripts < <(for file in "${files[@]}"; do
    case $file in
    *.sh | *.bash) printf '%s\n' "$file" ;;
    *.*) ;;
    *) head -n 1 "$file" | grep -qaE '^#!/bin/(ba)?sh' && printf '%s\n' "$file" ;;
    esac
done)
if [ ${#scripts[@]} -gt 0 ]; then
    say shellcheck "${scripts[@]}"
    check shellcheck --severity=warning "${scripts[@]}"
fi

mapfile -t modules < <(matching '\.py$')
if [ ${#modules[@]} -gt 0 ]; then
    say "Python's compiler" "${modules[@]}"
    check python3 -B -c 'import sys
for name in sys.argv[1:]:
    compile(open(name, encoding="utf-8").read(), name, "exec")' "${modules[@]}"
fi

# The commands of the release, but for each source separately, without the options that only g++ understands and without
# precompiled headers, which would hide a missing include. BUILD has the generated headers.
write_commands() {
    cmake --preset release -B "$work/separate" -DCMAKE_UNITY_BUILD=OFF -DBUILD_TESTING=ON -DZVIPTV_BENCH=ON \
        >"$work/configure.log" 2>&1 || { cat "$work/configure.log" && exit 1; }
    sed -E "s/ -(femit-class-debug-always|fpch-preprocess|Winvalid-pch)//g; s/ -include [^ ]*cmake_pch\.hxx//g
        s|$work/separate|$build|g" "$work/separate/compile_commands.json" >"$work/compile_commands.json"
}

mapfile -t sources < <(matching '\.cpp$')
if [ ${#sources[@]} -gt 0 ]; then
    write_commands
    mapfile -t built < <(for file in "${sources[@]}"; do
        ! grep -qF "\"$root/$file\"" "$work/compile_commands.json" || printf '%s\n' "$root/$file"
    done)
    others=$((${#sources[@]} - ${#built[@]}))
    [ "$others" -eq 0 ] || echo "clang-tidy: $others files are left out, which the release does not build"
    say clang-tidy "${built[@]}"
    [ ${#built[@]} -eq 0 ] || printf '%s\0' "${built[@]}" | xargs -0 -P "$(nproc)" -n 1 clang-tidy-14 -p "$work" --quiet \
        2> >(grep -v 'warnings\? generated' >&2) || failed=1
fi

[ "$failed" -eq 0 ] && echo "No findings."
exit "$failed"

#!/bin/bash
# SPDX-License-Identifier: MIT
# Checks the sources without running them: lint.sh BUILD [FILE...]
# Checks all files of the project, or the given ones. A header of C++ is checked with the sources that include it.
set -uo pipefail
root=$(cd "$(dirname "$0")/../.." && pwd)
build=$(realpath "$1")
shift
[ $# -eq 0 ] || mapfile -t named < <(realpath -s --relative-to="$root" "$@")
cd "$root" || exit 1
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
    ! grep -n '^#!.*env ' /dev/null "${modules[@]}" || { echo "scripts begin with #!/usr/bin/python3" && failed=1; }
    say "Python's compiler" "${modules[@]}"
    check /usr/bin/python3 -B -c 'import sys
for name in sys.argv[1:]:
    compile(open(name, encoding="utf-8").read(), name, "exec")' "${modules[@]}"
fi

mapfile -t sources < <(matching '\.cpp$')
if [ ${#sources[@]} -gt 0 ]; then
    which=all
    [ ! -v named ] || which=some
    check tests/lint/sources.py "$which" "$build" "${sources[@]}"
fi

[ "$failed" -eq 0 ] && echo "No findings."
exit "$failed"

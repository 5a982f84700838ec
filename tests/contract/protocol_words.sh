#!/bin/bash
# SPDX-License-Identifier: MIT
# Checks that the installed Protocol.h has all released constants and words, which protocol_words.txt lists as
# namespace, constant, word. It may have more: protocol_words.sh BUILD SOURCE
. "$(dirname "$0")/install.sh"

{
    printf '#include <zviptv/Protocol.h>\n#include <string_view>\n'
    while read -r namespace constant word; do
        printf 'static_assert(std::string_view(zviptv::protocol::%s::%s) == "%s");\n' "$namespace" "$constant" "$word"
    done <"$source/protocol_words.txt"
    printf 'int main() {}\n'
} >"$work/words.cpp"
[ "$(grep -c static_assert "$work/words.cpp")" -ge 115 ]
compile() { "$CXX" -std=c++17 -fsyntax-only -I "$prefix/include" "$work/words.cpp" 2>"$work/errors"; }
compile || { cat "$work/errors" && exit 1; }

# The check finds a word that differs.
sed -i 's/"MuteAudio"/"Muteaudio"/' "$work/words.cpp"
if compile; then
    echo "a changed word is not noticed"
    exit 1
fi

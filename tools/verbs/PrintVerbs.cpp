// SPDX-License-Identifier: MIT
// Prints the verbs as JSON, for kits.py.
#include "verbs/Verbs.h"

#include <cstdio>

namespace {

using namespace zviptv::verbs;

void PrintForm(Form form)
{
    std::printf(R"("type": "%s", "accepted": "%s", "words": "%s")", TypeOf(form), Accepted(form),
                NameOf(form));
}

void Print(Verb const& verb)
{
    std::printf(R"({"words": "%s", "method": "%s", "help": "%s", "arguments": [)", verb.words, verb.method,
                verb.help);
    char const* separator = "";
    for (Form const form : verb.arguments) {
        std::printf("%s{", separator);
        PrintForm(form);
        std::printf("}");
        separator = ", ";
    }
    std::printf(R"(], "options": [)");
    separator = "";
    for (Option const& option : verb.options) {
        std::printf(R"(%s{"name": "%s", "help": "%s", )", separator, option.name, option.help);
        PrintForm(option.form);
        std::printf("}");
        separator = ", ";
    }
    std::printf("]}");
}

} // namespace

int main()
{
    char const* separator = "[\n";
    for (Verb const& verb : Verbs()) {
        std::printf("%s", separator);
        Print(verb);
        separator = ",\n";
    }
    std::printf("\n]\n");
}

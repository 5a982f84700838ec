// SPDX-License-Identifier: MIT
#include "Report.h"

#include "common/Markup.h"

#include <cstdio>

// The report as JUnit XML.

namespace zviptv::sim {

namespace {

constexpr char Replacement[] = "\xEF\xBF\xBD"; // U+FFFD

/// The number of bytes of the UTF-8 character at `at` that XML 1.0 allows; 0 when there is none.
std::size_t CharacterAt(std::string const& text, std::size_t at)
{
    auto const byte = [&text](std::size_t i) {
        return i < text.size() ? static_cast<unsigned char>(text[i]) : static_cast<unsigned char>(0);
    };
    unsigned const first = byte(at);
    if (first < 0x80) {
        return first >= 0x20 && first != 0x7F ? 1 : 0;
    }
    std::size_t const length = first >= 0xF0 && first < 0xF5   ? 4
                               : first >= 0xE0 && first < 0xF0 ? 3
                               : first >= 0xC2 && first < 0xE0 ? 2
                                                               : 0;
    unsigned code = length == 0 ? 0 : first & (0xFFU >> (length + 1));
    for (std::size_t i = 1; i < length; ++i) {
        if ((byte(at + i) & 0xC0U) != 0x80) {
            return 0;
        }
        code = (code << 6U) | (byte(at + i) & 0x3FU);
    }
    bool const isShortest = code >= (length == 4 ? 0x10000U : length == 3 ? 0x800U : 0x80U);
    bool const isAllowed =
        code <= 0x10FFFF && (code < 0xD800 || code > 0xDFFF) && code != 0xFFFE && code != 0xFFFF;
    return isShortest && isAllowed ? length : 0;
}

/// The value of an attribute, without characters that XML does not allow.
std::string Escaped(std::string const& text)
{
    std::string escaped;
    for (std::size_t i = 0; i < text.size();) {
        std::size_t const length = CharacterAt(text, i);
        if (length == 0) {
            escaped += text[i] == '\t' ? "&#9;" : text[i] == '\n' ? "&#10;" : Replacement;
            ++i;
            continue;
        }
        escaped += EscapeMarkup(std::string_view(text).substr(i, length));
        i += length;
    }
    return escaped;
}

std::string Attribute(char const* name, std::string const& value)
{
    return std::string(" ") + name + "=\"" + Escaped(value) + "\"";
}

std::string Time(double seconds)
{
    char text[64];
    std::snprintf(text, sizeof(text), "%.3f", seconds);
    return Attribute("time", text);
}

} // namespace

std::string JUnitReport(Play const& play, double seconds)
{
    std::size_t tests = 0;
    std::size_t failures = 0;
    std::size_t errors = 0;
    std::string cases;
    for (std::size_t i = 0; i < play.Steps().steps.size(); ++i) {
        Step const& step = play.Steps().steps[i];
        Outcome const& outcome = play.Of(i);
        bool const isError = outcome.state == Outcome::State::Failed;
        if (!step.expectation && !isError) {
            continue;
        }
        bool const isFailure = outcome.state != Outcome::State::Met && !isError;
        ++tests;
        failures += isFailure ? 1U : 0U;
        errors += isError ? 1U : 0U;
        cases += "    <testcase" + Attribute("classname", step.place.file) +
                 Attribute("name", "line " + std::to_string(step.place.line) + ": " + step.text) +
                 Time(outcome.took);
        cases += isError ? ">\n      <error" + Attribute("message", outcome.seen) + "/>\n    </testcase>\n"
                 : isFailure
                     ? ">\n      <failure" + Attribute("message", outcome.seen) + "/>\n    </testcase>\n"
                     : "/>\n";
    }
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<testsuites>\n  <testsuite" +
           Attribute("name", play.Steps().file) + Attribute("tests", std::to_string(tests)) +
           Attribute("failures", std::to_string(failures)) + Attribute("errors", std::to_string(errors)) +
           Time(seconds) + ">\n" + cases + "  </testsuite>\n</testsuites>\n";
}

} // namespace zviptv::sim

// SPDX-License-Identifier: MIT
#include "GuideGenerator.h"

#include <ctime>
#include <fstream>
#include <random>

namespace zviptv::test {

namespace {

constexpr std::uint32_t Channels = 200;
constexpr std::uint32_t HalfHour = 1800;

std::string Time(std::uint32_t seconds)
{
    auto const time = static_cast<std::time_t>(seconds);
    std::tm parts{};
    gmtime_r(&time, &parts);
    char text[32];
    std::strftime(text, sizeof text, "%Y%m%d%H%M%S +0000", &parts);
    return text;
}

/// Appends to one text: a guide of many megabytes has millions of words.
void AppendWords(std::string& text, std::minstd_rand& random, unsigned count)
{
    static char const* const Some[] = {"harbour", "night", "König", "über",  "signal", "deep", "été",
                                       "river",   "light", "house", "storm", "train",  "sea",  "voice"};
    for (unsigned i = 0; i < count; ++i) {
        text.append(i == 0 ? "" : " ").append(Some[random() % (sizeof Some / sizeof *Some)]);
    }
}

void AppendProgramme(std::string& text, std::minstd_rand& random, std::uint32_t number,
                     std::string const& times)
{
    text.append("  <programme ").append(times).append(" channel=\"");
    text.append(std::to_string(1 + number % Channels));
    text.append(".example\">\n    <title lang=\"en\">Series ").append(std::to_string(random() % 5000));
    text.append("</title>\n    <sub-title lang=\"en\">");
    AppendWords(text, random, 4);
    text.append(" ").append(std::to_string(number)).append("</sub-title>\n    <desc lang=\"en\">");
    AppendWords(text, random, 40);
    text.append("</desc>\n    <category lang=\"en\">Genre ").append(std::to_string(random() % 40));
    text.append("</category>\n    <rating system=\"FSK\"><value>").append(std::to_string(random() % 3 * 6));
    text.append("</value></rating>\n  </programme>\n");
}

} // namespace

GeneratedGuide WriteGuide(std::string const& path, std::uint64_t bytes)
{
    std::ofstream file(path, std::ios::binary);
    std::minstd_rand random(500);
    GeneratedGuide written;
    auto const write = [&](std::string const& text) {
        file << text;
        written.bytes += text.size();
    };
    write("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<tv>\n");
    for (std::uint32_t i = 1; i <= Channels; ++i) {
        write("  <channel id=\"" + std::to_string(i) + ".example\"><display-name>Channel " +
              std::to_string(i) + "</display-name></channel>\n");
    }
    while (written.bytes < bytes) {
        std::uint32_t const start = 1767225600 + written.programmes / Channels * HalfHour;
        std::string const times = "start=\"" + Time(start) + "\" stop=\"" + Time(start + HalfHour) + "\"";
        std::string text; // of all channels
        for (std::uint32_t i = 0; i < Channels && written.bytes + text.size() < bytes; ++i) {
            AppendProgramme(text, random, written.programmes++, times);
        }
        write(text);
    }
    write("</tv>\n");
    return written;
}

} // namespace zviptv::test

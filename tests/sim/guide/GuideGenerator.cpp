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

std::string Words(std::mt19937& random, unsigned count)
{
    static char const* const Some[] = {"harbour", "night", "König", "über",  "signal", "deep", "été",
                                       "river",   "light", "house", "storm", "train",  "sea",  "voice"};
    std::string text;
    for (unsigned i = 0; i < count; ++i) {
        text += Some[random() % (sizeof Some / sizeof *Some)] + std::string(i + 1 < count ? " " : "");
    }
    return text;
}

std::string ProgrammeText(std::mt19937& random, std::uint32_t number)
{
    std::uint32_t const start = 1767225600 + number / Channels * HalfHour;
    std::string const title = "Series " + std::to_string(random() % 5000);
    return "  <programme start=\"" + Time(start) + "\" stop=\"" + Time(start + HalfHour) + "\" channel=\"" +
           std::to_string(1 + number % Channels) + ".example\">\n    <title lang=\"en\">" + title +
           "</title>\n    <sub-title lang=\"en\">" + Words(random, 4) + " " + std::to_string(number) +
           "</sub-title>\n    <desc lang=\"en\">" + Words(random, 40) +
           "</desc>\n    <category lang=\"en\">Genre " + std::to_string(random() % 40) +
           "</category>\n    <rating system=\"FSK\"><value>" + std::to_string(random() % 3 * 6) +
           "</value></rating>\n  </programme>\n";
}

} // namespace

GeneratedGuide WriteGuide(std::string const& path, std::uint64_t bytes)
{
    std::ofstream file(path, std::ios::binary);
    std::mt19937 random(500);
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
        write(ProgrammeText(random, written.programmes++));
    }
    write("</tv>\n");
    return written;
}

} // namespace zviptv::test

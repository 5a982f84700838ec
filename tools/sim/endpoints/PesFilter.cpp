// SPDX-License-Identifier: MIT
#include "PesFilter.h"

#include <array>
#include <charconv>
#include <sstream>
#include <stdexcept>
#include <utility>

namespace zviptv::sim {

namespace {

constexpr std::uint16_t HighestPid = 0x1FFF;

constexpr std::array<std::pair<char const*, StreamKind>, 6> KindWords{{
    {"audio", StreamKind::Audio},
    {"subtitle", StreamKind::Subtitle},
    {"teletext", StreamKind::Teletext},
    {"caption", StreamKind::AribCaption},
    {"caption", StreamKind::AribSuperimpose},
    {"video", StreamKind::Video},
}};

std::uint16_t ParsePid(std::string const& word)
{
    bool const isHex = word.rfind("0x", 0) == 0 || word.rfind("0X", 0) == 0;
    char const* const digits = word.data() + (isHex ? 2 : 0);
    char const* const wordEnd = word.data() + word.size();
    std::uint16_t pid = 0;
    auto const [end, failure] = std::from_chars(digits, wordEnd, pid, isHex ? 16 : 10);
    if (failure != std::errc() || end != wordEnd || pid > HighestPid) {
        throw std::invalid_argument(
            "'" + word +
            "' is not a kind of PES packet: use audio, subtitle, teletext, caption, video, a "
            "PID up to 8191 or 0x1FFF; or the one word none");
    }
    return pid;
}

} // namespace

PesFilter PesFilter::Parse(std::string const& text)
{
    PesFilter filter;
    filter.m_all = text.empty();
    if (text == "none") {
        return filter;
    }
    std::istringstream words(text);
    for (std::string word; std::getline(words, word, ',');) {
        bool isKind = false;
        for (auto const& [name, kind] : KindWords) {
            if (word == name) {
                filter.m_kinds.insert(kind);
                isKind = true;
            }
        }
        if (!isKind) {
            filter.m_pids.insert(ParsePid(word));
        }
    }
    return filter;
}

bool PesFilter::Passes(PesPacket const& pes) const
{
    return m_all || m_kinds.count(pes.kind) != 0 || m_pids.count(pes.pid) != 0;
}

} // namespace zviptv::sim

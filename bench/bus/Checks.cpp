// SPDX-License-Identifier: MIT
#include "Checks.h"

#include "Wire.h"

#include <cstdio>

namespace zviptv::bench {

namespace {

struct Expected
{
    char const* path;
    RequestEntries entries;
};

/// The expected requests by function. The name of the function is one of the entries.
std::map<std::string, Expected, std::less<>> const& AllExpected()
{
    static std::map<std::string, Expected, std::less<>> const all{
        {"MuteAudio",
         {wire::PlayerPath, {{"functionname", "MuteAudio"}, {"handleID", "256"}, {"onoff", "1"}}}},
        {"GetRatingInfo", {wire::BroadcastPath, {{"functionname", "GetRatingInfo"}, {"handleID", "256"}}}},
        {"requestPESCB",
         {wire::SubscriberPath, {{"functionname", "requestPESCB"}, {"handleID", "256"}, {"on", "1"}}}},
        {"ExistXmlForIPG", {wire::GuidePath, {{"functionname", "ExistXmlForIPG"}}}}};
    return all;
}

} // namespace

bool Checks::Accept(std::string const& sender, std::string_view function, std::string_view path,
                    std::function<RequestEntries()> const& read)
{
    std::string const who = std::string(function) + " of " + sender;
    if (m_accepted.count(who) > 0) {
        return true;
    }
    auto const expected = AllExpected().find(function);
    if (expected == AllExpected().end() || path != expected->second.path ||
        read() != expected->second.entries) {
        std::fprintf(stderr, "bench_service: unexpected request: %s\n", who.c_str());
        return false;
    }
    m_accepted.insert(who);
    return true;
}

} // namespace zviptv::bench

// SPDX-License-Identifier: MIT
#include "StreamGuide.h"

#include "common/PrintableText.h"
#include "common/StandardStreams.h"
#include "guide/GuideProblems.h"

#include <cstdio>
#include <stdexcept>

namespace zviptv::sim {

namespace {

void Print(std::uint64_t id, std::string const& name)
{
    std::printf("%llu  %s\n", static_cast<unsigned long long>(id), EscapeText(name).c_str());
}

} // namespace

ServiceNames NamesOf(Player const& player)
{
    ServiceNames names;
    for (Programme const& programme : player.Programmes()) {
        if (!programme.name.empty()) {
            names.emplace(programme.name, programme.number);
        }
    }
    return names;
}

LoadedGuide LoadGuideOf(Player const& player, std::string const& path)
{
    try {
        return LoadGuide(path, NamesOf(player));
    } catch (GuideError const& failure) {
        throw std::runtime_error(std::string("cannot load the guide: ") + failure.what());
    }
}

void ListServices(PlayerOptions const& stream, std::string const& path)
{
    SimulatedClock clock(1.0, {});
    Player const player(stream, clock, [](PesPacket const&) {});
    if (player.Counters().isLive) {
        throw StreamError("--list-services needs a file: record some seconds of " + stream.input.url +
                          " first");
    }
    if (path.empty()) {
        for (Programme const& programme : player.Programmes()) {
            Print(programme.number, programme.name);
        }
    } else {
        std::shared_ptr<Guide const> const guide = LoadGuideOf(player, path).guide;
        for (GuideService const& service : guide->Services()) {
            Print(service.id, service.name);
        }
    }
    RequireOutput();
}

} // namespace zviptv::sim

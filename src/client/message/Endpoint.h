// SPDX-License-Identifier: MIT
#pragma once

#include <zviptv/Protocol.h>

#include <cstddef>

namespace zviptv::client {

/// The endpoint of a channel.
enum class EndpointId
{
    PlayerControl,
    BroadcastData,
    DataSubscriber,
    ProgramGuide
};
constexpr std::size_t EndpointCount = 4;

/// Its type word, which is the channel's name, too.
constexpr char const* TypeWord(EndpointId endpoint)
{
    switch (endpoint) {
    case EndpointId::PlayerControl:
        return protocol::type::PlayerControl;
    case EndpointId::BroadcastData:
        return protocol::type::BroadcastData;
    case EndpointId::DataSubscriber:
        return protocol::type::DataSubscriber;
    case EndpointId::ProgramGuide:
        break;
    }
    return protocol::type::ProgramGuide;
}

} // namespace zviptv::client

// SPDX-License-Identifier: MIT
#include "client/stream/Push.h"

#include "client/message/Text.h"

#include <zviptv/Protocol.h>

#include <cstdint>

namespace zviptv::client {

namespace {

namespace key = protocol::key;

/// Reads a number like the core library: characters after the digits are ignored.
std::int32_t Number(Push const& push, char const* key)
{
    std::string const text(push.field(key));
    try {
        return std::stoi(text);
    } catch (std::logic_error const&) {
        throw UnreadablePush(key,
                             text.empty() ? "the number is missing" : Shown(text, '\'') + " is not a number");
    }
}

ByteView Data(Push const& push, char const* dataKey, char const* sizeKey)
{
    std::int32_t const announced = Number(push, sizeKey);
    if (announced < 0) {
        throw UnreadablePush(sizeKey, "the size " + std::to_string(announced) + " is negative");
    }
    std::string_view const bytes = push.field(dataKey);
    ByteView const all(reinterpret_cast<std::uint8_t const*>(bytes.data()), bytes.size());
    return all.Part(0, static_cast<std::size_t>(announced));
}

} // namespace

PesPacket ReadPes(Push const& push)
{
    auto const kind = static_cast<PesKind>(Number(push, key::PESType));
    auto const pid = static_cast<std::uint16_t>(Number(push, key::PESPID));
    return {kind, pid, push.owner, Data(push, key::PESData, key::PESDataSize)};
}

CaptionData ReadCaption(Push const& push)
{
    auto const kind = static_cast<PesKind>(Number(push, key::CaptionType));
    return {kind, push.owner, Data(push, key::CaptionData, key::CaptionDataSize)};
}

} // namespace zviptv::client

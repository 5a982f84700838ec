// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

/// The words of the protocol, for the programs without the library.
namespace zviptv::bench::wire {

constexpr char HelperName[] = "org.corvel.zviptvapi.dbushelper";
constexpr char HelperInterface[] = "org.corvel.zviptvapi.dbushelper";
constexpr char Interface[] = "org.corvel.zviptvapi.DbusCommunication";
constexpr char PlayerPath[] = "/org/corvel/zviptvapi/DbusCommunication/PLAYERCONTROL";
constexpr char BroadcastPath[] = "/org/corvel/zviptvapi/DbusCommunication/BROADCASTDATA";
constexpr char SubscriberPath[] = "/org/corvel/zviptvapi/DbusCommunication/IPTVDATASUBSCRIBER";
constexpr char GuidePath[] = "/org/corvel/zviptvapi/DbusCommunication/IPGUTIL";
constexpr char Method[] = "Send";
constexpr char Signal[] = "SendSignal";

constexpr int TimeoutMs = 2000;
constexpr int Ratings = 100;

/// A key and the bytes of its value.
struct Entry
{
    char const* key;
    std::string_view value;
};

/// The layout of a region's rating in a message.
struct Rating
{
    std::uint8_t region;
    std::uint8_t dimension;
    std::uint8_t value;
};
static_assert(sizeof(Rating) == 3);

/// The byte of packet `number` at `position`: the number at both ends, and between them a pattern that
/// changes if it is shifted by a page or by a block of memory.
inline char ByteOf(std::size_t number, std::size_t position, std::size_t size)
{
    bool const isEnd = position == 0 || position + 1 == size;
    return static_cast<char>(isEnd ? number : position % 251);
}

template <typename Ratings>
unsigned int SumOf(Ratings const& ratings)
{
    unsigned int sum = 0;
    for (auto const& rating : ratings) {
        sum += rating.value;
    }
    return sum;
}

} // namespace zviptv::bench::wire

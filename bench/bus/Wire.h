#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

/// The protocol's words as they travel, for the programs that do without the library.
namespace zviptv::bench::wire {

constexpr char HelperName[] = "org.corvel.zviptvapi.dbushelper";
constexpr char HelperInterface[] = "org.corvel.zviptvapi.dbushelper";
constexpr char Interface[] = "org.corvel.zviptvapi.DbusCommunication";
constexpr char PlayerPath[] = "/org/corvel/zviptvapi/DbusCommunication/PLAYERCONTROL";
constexpr char BroadcastPath[] = "/org/corvel/zviptvapi/DbusCommunication/BROADCASTDATA";
constexpr char SubscriberPath[] = "/org/corvel/zviptvapi/DbusCommunication/IPTVDATASUBSCRIBER";
constexpr char Method[] = "Send";
constexpr char Signal[] = "SendSignal";

constexpr int TimeoutMs = 2000;
constexpr int Ratings = 100;

/// A key and the bytes under it.
struct Entry
{
    char const* key;
    std::string_view value;
};

/// A region's rating as its bytes travel.
struct Rating
{
    std::uint8_t region;
    std::uint8_t dimension;
    std::uint8_t value;
};
static_assert(sizeof(Rating) == 3);

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

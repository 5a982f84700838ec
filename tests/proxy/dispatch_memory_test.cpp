// SPDX-License-Identifier: MIT
#include "SubscriberTest.h"

#include "proxy/Subscribers.h"

using namespace zviptv::test;

namespace {

constexpr std::size_t MiB = 1024 * 1024;

auto& deliveries = Deliveries<ZVPESData>();
std::vector<std::vector<std::uint8_t>> taken;

void Take(ZVPESData& pes, void* /*userData*/)
{
    taken.push_back(std::move(pes.data));
}

/// The memory of the last packet. If the library keeps it, it contains the next packet.
std::vector<std::uint8_t const*> addresses;

void Look(ZVPESData& pes, void* /*userData*/)
{
    addresses.push_back(pes.data.data());
}

class DispatchMemory : public SubscriberTest
{
protected:
    ~DispatchMemory() override
    {
        taken.clear();
        addresses.clear();
    }

    void NotifyOf(std::size_t size, char first)
    {
        Notify(PESOf(std::to_string(size), first + PatternBytes(size - 1)));
    }
};

TEST_F(DispatchMemory, PacketsOfAllSizesKeepTheirBytes)
{
    SubscribeForPES(Collect<ZVPESData>);
    for (std::size_t const size :
         {3 * MiB, std::size_t{188}, MiB, std::size_t{1}, 2 * MiB + 1, 64 * MiB / 1024}) {
        deliveries.clear();
        NotifyOf(size, 'a');
        ASSERT_TRUE(RunUntil([] { return !deliveries.empty(); }));
        EXPECT_TRUE(TextOf(deliveries.front().record.data) == 'a' + PatternBytes(size - 1)) << size;
    }
}

TEST_F(DispatchMemory, HoldsOnlyTheLastPacket)
{
    SubscribeForPES(Look);
    NotifyOf(MiB, 'a');
    NotifyOf(MiB, 'b');
    NotifyOf(1000, 'c');
    ASSERT_TRUE(RunUntil([] { return addresses.size() == 3; }));
    EXPECT_EQ(addresses[0], addresses[1]);
    EXPECT_EQ(addresses[0], addresses[2]);
}

TEST_F(DispatchMemory, MayBeTakenByTheCallback)
{
    SubscribeForPES(Take);
    NotifyOf(1000, 'a');
    NotifyOf(1000, 'b');
    NotifyOf(1000, 'c');
    ASSERT_TRUE(RunUntil([] { return taken.size() == 3; }));
    for (std::size_t i = 0; i < taken.size(); ++i) {
        EXPECT_EQ(TextOf(taken[i]), "abc"[i] + PatternBytes(999));
    }
}

TEST(SpareMemory, IsKeptDuringAWaitUnlessItIsUnusuallyLarge)
{
    using Bytes = std::vector<std::uint8_t>;
    zviptv::Subscribers<ZVPESData> subscribers;
    subscribers.KeepSpare(Bytes(100));
    EXPECT_EQ(subscribers.TakeSpare().capacity(), 0U) << "nobody has asked for anything";
    subscribers.SetRequested(true);
    subscribers.KeepSpare(Bytes(100));
    EXPECT_EQ(subscribers.TakeSpare().capacity(), 100U);
    EXPECT_EQ(subscribers.TakeSpare().capacity(), 0U) << "taken already";
    subscribers.KeepSpare(Bytes(3 * MiB));
    EXPECT_EQ(subscribers.TakeSpare().capacity(), 0U) << "unusually large";
    subscribers.KeepSpare(Bytes(100));
    subscribers.SetRequested(false);
    EXPECT_EQ(subscribers.TakeSpare().capacity(), 0U) << "nobody waits any more";
}

} // namespace

// SPDX-License-Identifier: MIT
#include "StreamBuilder.h"

#include <zviptv/client/PesPacket.h>

#include <gtest/gtest.h>

namespace zviptv::test {
namespace {

PesPacket Packet(Bytes bytes)
{
    auto const owned = std::make_shared<Bytes const>(std::move(bytes));
    return {PesKind::Video, 0x100, owned, ByteView(*owned)};
}

} // namespace

TEST(PesPacket, HeaderFieldsAreRead)
{
    PesPacket const packet = Packet(MakePes(0x1FFFFFFFF, {1, 2, 3}, false, 0x100000001, 0xE0));
    EXPECT_EQ(packet.Kind(), PesKind::Video);
    EXPECT_EQ(packet.Pid(), 0x100);
    EXPECT_TRUE(packet.HasHeader());
    EXPECT_EQ(packet.StreamId(), 0xE0);
    EXPECT_EQ(packet.Length(), 3 + 10 + 3);
    EXPECT_EQ(packet.Pts(), 8589934591U) << "33 bits";
    EXPECT_EQ(packet.Dts(), 4294967297U);
    EXPECT_EQ(packet.Payload().Copy(), (Bytes{1, 2, 3}));
    EXPECT_EQ(packet.Data().Size(), 6U + 16U);
}

TEST(PesPacket, WithoutAHeaderHasOnlyBytes)
{
    for (Bytes const& bytes : {Bytes{}, Bytes{'t', 'e', 'x', 't', 0, 0, 0, 0, 0, 0}, Bytes{0, 0, 1, 0xE0}}) {
        PesPacket const packet = Packet(bytes);
        EXPECT_FALSE(packet.HasHeader());
        EXPECT_EQ(packet.Data().Copy(), bytes);
        EXPECT_TRUE(packet.Payload().Empty());
        EXPECT_FALSE(packet.Pts());
        EXPECT_FALSE(packet.Dts());
        EXPECT_EQ(packet.StreamId(), 0);
    }
}

TEST(PesPacket, CopiesShareTheBytesAndKeepThem)
{
    auto owned = std::make_shared<Bytes const>(MakePes(1, {7}));
    std::weak_ptr<Bytes const> const watched = owned;
    std::uint8_t const* const first = owned->data();
    std::optional<PesPacket> kept;
    {
        PesPacket const packet(PesKind::Audio, 1, owned, ByteView(*owned));
        owned.reset();
        kept = packet;
    }
    EXPECT_EQ(kept->Data().Data(), first) << "no byte was copied";
    EXPECT_EQ(kept->Payload().Copy(), Bytes{7});
    kept.reset();
    EXPECT_TRUE(watched.expired());
}

} // namespace zviptv::test

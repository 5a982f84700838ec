// SPDX-License-Identifier: MIT
#include "Pushes.h"

#include <gtest/gtest.h>

namespace zviptv::test {
namespace {

std::string FailureOf(Fields fields)
{
    try {
        fields.at("functionname") == "PESCB" ? static_cast<void>(client::ReadPes(PushOf(fields)))
                                             : static_cast<void>(client::ReadCaption(PushOf(fields)));
    } catch (client::UnreadablePush const& error) {
        return std::string(error.Key()) + ": " + error.what();
    }
    return "";
}

Fields With(Fields fields, std::string const& key, std::string const& value)
{
    fields[key] = value;
    return fields;
}

Fields Without(Fields fields, std::string const& key)
{
    fields.erase(key);
    return fields;
}

} // namespace

TEST(Push, PesPacketHasTheValuesOfTheMessage)
{
    client::Push const push = PushOf(PesFields("8191", std::string("\0\1x", 3), "1"));
    PesPacket const packet = client::ReadPes(push);
    EXPECT_EQ(packet.Kind(), PesKind::Video);
    EXPECT_EQ(packet.Pid(), 8191);
    EXPECT_EQ(packet.Data().Copy(), (Bytes{0, 1, 'x'}));
    EXPECT_EQ(static_cast<void const*>(packet.Data().Data()), push.field("pesData").data()) << "no copy";
    EXPECT_EQ(client::ReadPes(PushOf(PesFields("65535", "x", "77"))).Pid(), 0xFFFF);
    EXPECT_EQ(client::ReadPes(PushOf(PesFields("1", "x", "77"))).Kind(), static_cast<PesKind>(77))
        << "kinds may be added";
}

TEST(Push, PacketKeepsTheMessage)
{
    std::optional<PesPacket> packet;
    {
        client::Push const push = PushOf(PesFields("1", "bytes"));
        packet = client::ReadPes(push);
    }
    EXPECT_EQ(packet->Data().Copy(), (Bytes{'b', 'y', 't', 'e', 's'}));
}

TEST(Push, AnnouncedSizeCutsTheData)
{
    auto const size = [](std::string const& announced) {
        return client::ReadPes(PushOf(With(PesFields("1", "1234"), "pesDataSize", announced))).Data().Size();
    };
    EXPECT_EQ(size("2"), 2U);
    EXPECT_EQ(size("0"), 0U);
    EXPECT_EQ(size("4"), 4U);
    EXPECT_EQ(size("2147483647"), 4U) << "there is no more";
}

TEST(Push, CaptionDataHasTypeAndBytes)
{
    CaptionData const data = client::ReadCaption(PushOf(CaptionFields("abc", "5")));
    EXPECT_EQ(data.Kind(), PesKind::Caption);
    EXPECT_EQ(data.Data().Copy(), (Bytes{'a', 'b', 'c'}));
}

TEST(Push, UnreadableNumbersNameTheirKey)
{
    Fields const pes = PesFields("1", "x");
    EXPECT_EQ(FailureOf(Without(pes, "pesPID")), "pesPID: the number is missing");
    EXPECT_EQ(FailureOf(With(pes, "pesPID", "pid")), "pesPID: 'pid' is not a number");
    EXPECT_EQ(FailureOf(With(pes, "pesType", "99999999999")), "pesType: '99999999999' is not a number");
    EXPECT_EQ(FailureOf(Without(pes, "pesDataSize")), "pesDataSize: the number is missing");
    EXPECT_EQ(FailureOf(With(pes, "pesDataSize", "-1")), "pesDataSize: the size -1 is negative");
    EXPECT_EQ(FailureOf(Without(CaptionFields("x"), "captionType")), "captionType: the number is missing");
    EXPECT_EQ(FailureOf(With(CaptionFields("x"), "captionDataSize", "x")),
              "captionDataSize: 'x' is not a number");
    EXPECT_EQ(FailureOf(Without(pes, "pesPTS")), "") << "the time is in the packet";
}

TEST(Push, ShowsTheBeginningOfAValueInOneLineOfText)
{
    Fields const pes = PesFields("1", "x");
    EXPECT_EQ(FailureOf(With(pes, "pesPID", "\x1B[31m\n\xFF")), "pesPID: '?[31m?"
                                                                "?' is not a number");
    EXPECT_EQ(FailureOf(With(pes, "pesPID", std::string(1 << 20, 'a'))),
              "pesPID: '" + std::string(40, 'a') + "'... is not a number");
}

} // namespace zviptv::test

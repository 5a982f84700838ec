// SPDX-License-Identifier: MIT
#include "GeneratedStreamTest.h"

namespace zviptv::test {
namespace {

constexpr std::uint16_t Text = 0x138;

/// The data field of superimposed text: its identifier, the head of a data group, and data.
Bytes Field(std::uint8_t seed)
{
    return Bytes{0x81, 0xFF, 0xF0, 0x04, 0, 0, 0, 20} + Noise(20, seed) + Bytes{0x12, 0x34};
}

/// Superimposed text, which has no time stamp, in a stream with a clock.
class Superimpose : public GeneratedStream
{
protected:
    static StreamBuilder Stream()
    {
        StreamBuilder builder;
        builder.Section(0, MakePat({{1, 0x1000}}));
        builder.Section(0x1000,
                        MakePmt(1, 0x100, {{0x06, Text, {0x52, 1, 0x38, 0xFD, 3, 0x00, 0x08, 0x3C}}}));
        builder.Pcr(0x100, 27'000'000).Pes(Text, MakePes({}, Field(1)));
        builder.Pcr(0x100, 27'900'000).Pes(Text, MakePes({}, Field(2)));
        return builder;
    }

    static WireEntries Notification(std::uint8_t seed)
    {
        Bytes const field = Field(seed);
        return Entries({{"functionname", "CaptionCB"},
                        {"captionDataSize", "30"},
                        {"captionType", "5"},
                        {"captionData", std::string(field.begin(), field.end())}});
    }
};

TEST_F(Superimpose, IsACaptionOfTheWholeDataField)
{
    Play(Stream(), {"--wait-for", "1"});
    m_application.Announce("IPTVDATASUBSCRIBER");
    m_application.Ask("IPTVDATASUBSCRIBER", {{"functionname", "requestCaptionCB"}, {"on", "1"}});
    MessageLog const& received = m_application.Peer().Received();
    ASSERT_TRUE(received.WaitForCount(IsSignal("SendSignal"), 2));
    std::vector<WireEntries> seen;
    for (WireMessage const& message : received.All()) {
        if (message.member == "SendSignal") {
            EXPECT_EQ(message.path, ChannelPath("IPTVDATASUBSCRIBER"));
            seen.push_back(message.entries);
        }
    }
    EXPECT_EQ(seen, (std::vector<WireEntries>{Notification(1), Notification(2)}));
}

TEST_F(Superimpose, IsListedSeparatelyFromCaptions)
{
    PlayToTheEnd(Stream());
    m_application.Announce("BROADCASTDATA");
    auto const size = [this](char const* mode) {
        return Number(
            m_application.Ask("BROADCASTDATA", {{"functionname", "SizeOfISDBText"}, {"mode", mode}}), "size");
    };
    EXPECT_EQ(size("0"), "0");
    EXPECT_EQ(size("1"), "1");
}

} // namespace
} // namespace zviptv::test

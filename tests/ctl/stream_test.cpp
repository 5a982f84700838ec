// SPDX-License-Identifier: MIT
#include "Files.h"
#include "StreamFixture.h"

namespace zviptv::test {
namespace {

using testing::HasSubstr;
using testing::MatchesRegex;

TEST_F(StreamTest, PesPacketsAreLines)
{
    auto const child = StartSubscribed({"pes", "--count", "3"});
    PushPes("2", "257", "133200", PatternBytes(2048));
    PushPes("1", "65535", "8589934591", "x");
    PushPes("77", "32", "0", "");
    CtlResult const result = Finish(*child);
    EXPECT_EQ(result.code, 0);
    EXPECT_EQ(result.output, "audio pid=0x0101 pts=133200 size=2048\n"
                             "video pid=0xffff pts=4294967295 size=1\n"
                             "77 pid=0x0020 pts=0 size=0\n");
    EXPECT_THAT(result.errors,
                MatchesRegex("zviptvctl: 3 packets, 2049 bytes in [0-9.]+ s \\([0-9.]+ kB/s\\)\n"));
    EXPECT_TRUE(IsUnsubscribed());
    EXPECT_TRUE(m_service.WaitForAnnouncement("IPTVDATASUBSCRIBER", "n"));
}

TEST_F(StreamTest, JsonIsOneObjectALine)
{
    auto const child = StartSubscribed({"pes", "--json", "--count", "2"});
    PushPes("2", "257", "133200", "abc");
    PushPes("3", "258", "4294967295", "");
    EXPECT_EQ(Finish(*child).code, 0);
    EXPECT_EQ(child->Output(), "{\"pid\":257,\"pts\":133200,\"size\":3,\"type\":2}\n"
                               "{\"pid\":258,\"pts\":4294967295,\"size\":0,\"type\":3}\n");
}

TEST_F(StreamTest, OtherPidsAreNotCounted)
{
    auto const child = StartSubscribed({"pes", "--pid", "0x102", "--count", "1"});
    PushPes("1", "256", "1", "other");
    PushPes("2", "258", "2", "mine");
    EXPECT_EQ(Finish(*child).code, 0);
    EXPECT_EQ(child->Output(), "audio pid=0x0102 pts=2 size=4\n");
    EXPECT_THAT(child->Errors(), HasSubstr("1 packet, 4 bytes"));
}

TEST_F(StreamTest, CaptionsHaveTypeAndSize)
{
    auto const child = StartSubscribed({"caption", "--count", "1"}, "requestCaptionCB");
    PushCaption("5", "text");
    EXPECT_EQ(Finish(*child).code, 0);
    EXPECT_EQ(child->Output(), "caption size=4\n");
    EXPECT_TRUE(IsUnsubscribed("requestCaptionCB"));

    auto const json = StartSubscribed({"--json", "caption", "--count", "1"}, "requestCaptionCB");
    PushCaption("-3", "");
    EXPECT_EQ(Finish(*json).code, 0);
    EXPECT_EQ(json->Output(), "{\"size\":0,\"type\":-3}\n");
}

TEST_F(StreamTest, WritesPayloadsToAFile)
{
    std::string const path = m_bus.Directory() + "/payloads";
    std::ofstream(path) << "what was there before";
    auto const child = StartSubscribed({"pes", "--count", "2", "--out", path});
    std::string const first = PatternBytes(100000);
    std::string const second("\0\xff\n\0", 4);
    PushPes("1", "256", "1", first);
    PushPes("1", "256", "2", second);
    EXPECT_EQ(Finish(*child).code, 0);
    EXPECT_EQ(child->Output(), "video pid=0x0100 pts=1 size=100000\nvideo pid=0x0100 pts=2 size=4\n");
    EXPECT_EQ(ReadFile(path), first + second);
}

TEST_F(StreamTest, WritesPayloadsToStandardOutputWithoutLines)
{
    auto const child = StartSubscribed({"caption", "--count", "2", "--out", "-"}, "requestCaptionCB");
    PushCaption("5", std::string("a\0", 2));
    PushCaption("5", "b");
    EXPECT_EQ(Finish(*child).code, 0);
    EXPECT_EQ(child->Output(), std::string("a\0b", 3));
}

} // namespace
} // namespace zviptv::test

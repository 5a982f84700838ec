// SPDX-License-Identifier: MIT
#include "Json.h"
#include "ReplayTest.h"

namespace zviptv::test {
namespace {

using testing::HasSubstr;
using testing::Not;

class Unrecorded : public Replaying
{
protected:
    void Replay(std::vector<std::string> const& options = {})
    {
        Recording().Exchange(0, "BROADCASTDATA", AskAudio("0"), Answered("recorded"));
        Replaying::Replay(options);
        m_application.Announce("BROADCASTDATA");
    }

    WireMessage Ask(std::initializer_list<TextEntry> entries)
    {
        return m_application.Ask("BROADCASTDATA", entries);
    }

    WireMessage AskForAudio(std::string const& index)
    {
        return Ask({{"functionname", "GetAudio"}, {"handleID", "256"}, {"index", index}});
    }

    Application m_application;
};

TEST_F(Unrecorded, RequestsAreAnsweredWithAnError)
{
    Replay();
    WireMessage const error = AskForAudio("3");
    EXPECT_EQ(error.errorName, "org.corvel.zviptvapi.Error.NotRecorded");
    EXPECT_THAT(error.strings,
                testing::ElementsAre(
                    "Not in the recording: GetAudio index=3; record this request, or see --unrecorded"));
}

TEST_F(Unrecorded, RequestsAreRefusedInTheFormOfTheFunction)
{
    Replay({"--unrecorded", "false"});
    EXPECT_EQ(AskForAudio("3").entries,
              Entries({{"result_internal", "0"}, {"audio", std::string(32, '\0')}}));
    EXPECT_EQ(Ask({{"functionname", "GetCaptionLanguage"}, {"handleID", "256"}, {"service", "1"}}).entries,
              Entries({{"result_internal", "0"}, {"landCode", "0"}, {"koreanCode", "0"}}));
    EXPECT_EQ(Ask({{"functionname", "GetRatingInfo"}, {"handleID", "256"}}).entries,
              Entries({{"result_internal", "0"}, {"ratingInfoSize", "0"}}));
    EXPECT_EQ(Ask({{"functionname", "GetNothing"}, {"handleID", "256"}}).entries,
              Entries({{"result_internal", "0"}}));
    m_application.Announce("PLAYERCONTROL");
    EXPECT_EQ(
        m_application.Ask("PLAYERCONTROL", {{"functionname", "GetSourceState"}, {"handleID", "256"}}).entries,
        Entries({{"result_internal", "0"}, {"sourcestate", "-1"}}));
    m_application.Announce("IPGUTIL");
    EXPECT_EQ(m_application.Ask("IPGUTIL", {{"functionname", "GetProgram"}, {"index", "0"}}).entries,
              Entries({{"result_internal", "0"}, {"data", ""}}));
}

TEST_F(Unrecorded, RequestsAreAnsweredFromTheStream)
{
    Replay({"--unrecorded", "stream", "--ts", ZVIPTV_SAMPLE_FILE, "--loop"});
    EXPECT_EQ(AskForAudio("0").Value("audio"), "recorded");
    EXPECT_EQ(Ask({{"functionname", "SizeOfAudio"}, {"handleID", "256"}}).Value("size"), "2");
    m_application.Announce("IPTVDATASUBSCRIBER");
    m_application.Ask("IPTVDATASUBSCRIBER",
                      {{"functionname", "requestPESCB"}, {"handleID", "256"}, {"on", "1"}});
    EXPECT_TRUE(m_application.WaitForPackets("257", 1));
}

TEST_F(Unrecorded, StreamsDoNotRepeatRecordedPushes)
{
    Recording().Ask(1, "IPTVDATASUBSCRIBER",
                    Entries({{"functionname", "requestPESCB"}, {"handleID", "256"}, {"on", "1"}}));
    Recording().Reply(1, Entries({{"result_internal", "1"}}));
    for (int const time : {2, 500}) {
        Recording().Add(time, MadeNotification(Entries({{"functionname", "PESCB"},
                                                        {"pesDataSize", "4"},
                                                        {"pesType", "2"},
                                                        {"pesPID", "4000"},
                                                        {"pesPTS", "0"},
                                                        {"pesData", "data"}})));
    }
    Replay({"--unrecorded", "stream", "--ts", ZVIPTV_SAMPLE_FILE, "--loop"});
    m_application.Announce("IPTVDATASUBSCRIBER");
    m_application.Ask("IPTVDATASUBSCRIBER",
                      {{"functionname", "requestPESCB"}, {"handleID", "256"}, {"on", "1"}});
    ASSERT_TRUE(m_application.WaitForPackets("4000", 2));
    EXPECT_EQ(m_application.Packets("257").size(), 0U);
}

TEST_F(Unrecorded, RequestsAreListedAtTheEnd)
{
    Replay();
    AskForAudio("0");
    AskForAudio("3");
    AskForAudio("3");
    ASSERT_EQ(m_remote->Call("Restart"), Done); // those of a service that died count, too
    m_application.Announce("BROADCASTDATA");
    Ask({{"functionname", "SizeOfTTX"}, {"handleID", "256"}});
    std::string const errors = End();
    EXPECT_THAT(errors, HasSubstr("zviptv-sim: requests that were not recorded:\n"
                                  "  2 x GetAudio index=3\n"
                                  "  1 x SizeOfTTX\n"));
}

TEST_F(Unrecorded, RequestsAreMarkedInTheRequestLog)
{
    Replay({"--json"});
    AskForAudio("0");
    AskForAudio("3");
    ASSERT_TRUE(m_simulator->WaitForOutput("not recorded", Patience));
    std::string const output = m_simulator->Output();
    EXPECT_THAT(output, HasSubstr("\"replay\":\"\""));
    EXPECT_THAT(output, HasSubstr("\"replay\":\"not recorded\""));
    EXPECT_EQ(output.find("not recorded"), output.rfind("not recorded"));
    End();
}

TEST_F(Unrecorded, NothingIsListedIfAllWasRecorded)
{
    Replay();
    AskForAudio("0");
    EXPECT_THAT(End(), Not(HasSubstr("not recorded")));
}

} // namespace
} // namespace zviptv::test

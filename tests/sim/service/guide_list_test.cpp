// SPDX-License-Identifier: MIT
#include "SimulatorTest.h"

namespace zviptv::test {
namespace {

/// The applications that have a separate list for GetProgram. The others count through the whole guide,
/// whose programmes are more than the list's two.
class GuideList : public Simulator
{
protected:
    GuideList()
    {
        Start({"--ts", ZVIPTV_SAMPLE_FILE, "--loop", "--guide", ZVIPTV_SAMPLE_GUIDE});
        m_service = m_application.Announce(GuideWord);
    }

    void MakeList()
    {
        EXPECT_EQ(Ask({{"functionname", "GetProgramListSize"},
                       {"inID", "1"},
                       {"startTime", "1774733400"},
                       {"duration", "10801"}}),
                  "2");
    }

    bool HasList() { return Ask({{"functionname", "GetProgram"}, {"index", "2"}}).empty(); }

    std::string Ask(std::initializer_list<TextEntry> entries)
    {
        return m_application.Ask(GuideWord, entries).Value("data");
    }

    Application m_application;
    std::string m_service;
};

TEST_F(GuideList, EndsWithItsApplication)
{
    EXPECT_FALSE(HasList());
    MakeList();
    EXPECT_TRUE(HasList());
    m_application.Announce(GuideWord, "n");
    m_application.Announce(GuideWord);
    EXPECT_FALSE(HasList());
}

/// Other channels of the application stay.
TEST_F(GuideList, EndsWithItsChannel)
{
    m_application.Announce("PLAYERCONTROL");
    MakeList();
    m_application.Announce(GuideWord, "n");
    m_application.Announce(GuideWord);
    EXPECT_FALSE(HasList());
}

TEST_F(GuideList, StaysWhenAnotherChannelEnds)
{
    m_application.Announce("PLAYERCONTROL");
    MakeList();
    m_application.Announce("PLAYERCONTROL", "n");
    EXPECT_TRUE(HasList());
}

/// The list would be kept forever, because the end of such an application is not reported.
TEST_F(GuideList, IsNotKeptWithoutAnAnnouncement)
{
    WirePeer stranger;
    auto const ask = [&](std::initializer_list<TextEntry> entries) {
        return stranger
            .Call({m_service, ChannelPath(GuideWord), "org.corvel.zviptvapi.DbusCommunication", "Send"},
                  Entries(entries))
            .Value("data");
    };
    EXPECT_EQ(ask({{"functionname", "GetProgramListSize"},
                   {"inID", "1"},
                   {"startTime", "1774733400"},
                   {"duration", "10801"}}),
              "2");
    EXPECT_NE(ask({{"functionname", "GetProgram"}, {"index", "2"}}), "");
}

} // namespace
} // namespace zviptv::test

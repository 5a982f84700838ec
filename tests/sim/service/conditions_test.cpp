// SPDX-License-Identifier: MIT
#include "Crowd.h"
#include "WaitUntil.h"

namespace zviptv::test {
namespace {

/// The conditions that applications have reported, as in the status.
class ReportedConditions : public Crowd
{
protected:
    ReportedConditions() { Play({}, {"--json", "--lock-service"}); }

    bool Shows(char const* member, Json::Value const& value)
    {
        return WaitUntil([&] { return Status()[member] == value; }, Patience);
    }

    void Ask(char const* type, std::initializer_list<TextEntry> entries)
    {
        m_application.Announce(type);
        EXPECT_EQ(Number(m_application.Ask(type, entries), "result_internal"), "1");
    }

    Application m_application;
};

TEST_F(ReportedConditions, AreShownInTheStatus)
{
    EXPECT_TRUE(Shows("appId", ""));
    EXPECT_TRUE(Shows("locked", true));
    EXPECT_TRUE(Shows("audioMuted", false));
    Ask("PLAYERCONTROL", {{"functionname", "MuteAudio"}, {"onoff", "1"}});
    EXPECT_TRUE(Shows("audioMuted", true));
    EXPECT_TRUE(Shows("videoMuted", false));
    Ask("PLAYERCONTROL", {{"functionname", "MuteVideo"}, {"onoff", "1"}});
    Ask("PLAYERCONTROL", {{"functionname", "SetAppID"}, {"AppID", "com.example.player"}});
    Ask("BROADCASTDATA", {{"functionname", "SetUnlockedInfo"}, {"ratingInfo", "3"}});
    EXPECT_TRUE(Shows("videoMuted", true));
    EXPECT_TRUE(Shows("appId", "com.example.player"));
    EXPECT_TRUE(Shows("locked", false));
}

} // namespace
} // namespace zviptv::test

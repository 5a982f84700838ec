// SPDX-License-Identifier: MIT
#include "CtlFixture.h"

namespace zviptv::test {
namespace {

using testing::HasSubstr;
using testing::Not;

TEST_F(CtlTest, WritesNoLogUnlessRequested)
{
    EXPECT_EQ(RunCtl({"mute", "audio", "on"}).errors, "");
    EXPECT_EQ(RunCtl({"mute", "audio", "on"}, {{"ZV_IPTV_LOG", ""}}).errors, "");
    EXPECT_EQ(RunCtl({"mute", "audio", "on"}, {{"ZV_IPTV_LOG", "none"}}).errors, "");
}

TEST_F(CtlTest, TheEnvironmentSendsTheLogToStandardError)
{
    CtlResult const result = RunCtl({"mute", "audio", "on"}, {{"ZV_IPTV_LOG", "stderr"}});
    EXPECT_EQ(result.code, 0);
    EXPECT_THAT(result.errors, HasSubstr("ZV_IPTV_API debug: "));
    EXPECT_THAT(result.errors, HasSubstr("Sending sync message with 3 key-value pairs"));
}

TEST_F(CtlTest, TheEnvironmentSetsTheLevelOfTheLog)
{
    CtlResult const result =
        RunCtl({"mute", "audio", "on"}, {{"ZV_IPTV_LOG", "stderr"}, {"ZV_IPTV_LOG_LEVEL", "error"}});
    EXPECT_THAT(result.errors, HasSubstr(" error: "));
    EXPECT_THAT(result.errors, Not(HasSubstr(" debug: ")));
}

TEST_F(CtlTest, TheOptionOverridesTheEnvironment)
{
    CtlResult const result = RunCtl({"--log", "mute", "audio", "on"}, {{"ZV_IPTV_LOG", "none"}});
    EXPECT_THAT(result.errors, HasSubstr("[debug] "));
}

} // namespace
} // namespace zviptv::test

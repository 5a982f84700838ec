// SPDX-License-Identifier: MIT
#include "PolicyTools.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testing::AllOf;
using testing::HasSubstr;

namespace zviptv::test {

namespace {

constexpr char const* helperName = "org.corvel.zviptvapi.dbushelper";

} // namespace

TEST_F(PolicyToolsTest, ApplicationsUseTheServiceAndStrangersAreTurnedAway)
{
    auto const simulator = RunSimulator(m_bus->Address(), service);
    ASSERT_TRUE(m_bus->Connect(application)->WaitForOwner(helperName, true)) << simulator->Errors();

    auto const call = Run(application, {ZVIPTV_CTL, "call", "MuteAudio", "true"});
    EXPECT_EQ(call->Wait(patience), (ExitStatus{0, 0})) << call->Errors();
    auto const pushed = Run(secondApplication, {ZVIPTV_CTL, "pes", "--count", "3"});
    EXPECT_EQ(pushed->Wait(patience), (ExitStatus{0, 0})) << pushed->Errors();
    auto const asRoot = Run(root, {ZVIPTV_CTL, "call", "GetSourceState"});
    EXPECT_EQ(asRoot->Wait(patience), (ExitStatus{0, 0})) << asRoot->Errors();

    auto const refused = Run(stranger, {ZVIPTV_CTL, "call", "MuteAudio", "true"});
    EXPECT_EQ(refused->Wait(patience), (ExitStatus{4, 0})) << refused->Errors();
    EXPECT_THAT(refused->Errors(), AllOf(HasSubstr("AccessDenied"), HasSubstr("policy")));
}

/// It confirms each push by a call to the application, which the policy has to allow, too.
TEST_F(PolicyToolsTest, AServiceWithoutTheLibraryWorksTheSame)
{
    auto const python = Run(service, {ZVIPTV_PYTHON_SERVICE});
    ASSERT_TRUE(m_bus->Connect(application)->WaitForOwner(helperName, true)) << python->Errors();

    auto const call = Run(application, {ZVIPTV_CTL, "call", "MuteAudio", "true"});
    EXPECT_EQ(call->Wait(patience), (ExitStatus{0, 0})) << call->Errors();
    auto const pushed = Run(application, {ZVIPTV_CTL, "pes", "--count", "3"});
    EXPECT_EQ(pushed->Wait(patience), (ExitStatus{0, 0})) << pushed->Errors();

    auto const refused = Run(stranger, {ZVIPTV_PYTHON_SERVICE});
    EXPECT_EQ(refused->Wait(patience), (ExitStatus{1, 0}));
    EXPECT_THAT(refused->Errors(), AllOf(HasSubstr(helperName), HasSubstr("policy")));
}

TEST_F(PolicyToolsTest, TheSimulatorSaysThatItMayNotOwnTheName)
{
    auto const simulator = RunSimulator(m_bus->Address(), stranger);
    EXPECT_EQ(simulator->Wait(patience), (ExitStatus{1, 0}));
    EXPECT_THAT(simulator->Errors(), AllOf(HasSubstr(helperName), HasSubstr("policy")));
}

} // namespace zviptv::test

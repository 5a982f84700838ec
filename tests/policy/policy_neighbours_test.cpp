// SPDX-License-Identifier: MIT
#include "FakeService.h"
#include "PolicyBus.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>

using testing::IsEmpty;

namespace zviptv::test {

namespace {

class PolicyOtherServiceTest : public testing::Test
{
protected:
    void SetUp() override
    {
        if (auto const reason = ReasonToSkip(); !reason.empty()) {
            GTEST_SKIP() << reason;
        }
    }
};

} // namespace

TEST_F(PolicyOtherServiceTest, AnotherServiceCanBeCalledWithoutAnInterface)
{
    PolicyBus const bus("<policy context=\"default\">"
                        "<allow own=\"org.example.Neighbour\"/>"
                        "<allow send_destination=\"org.example.Neighbour\"/>"
                        "</policy>");
    auto const neighbour = bus.Connect(stranger);
    neighbour->SetHandler([](WireMessage const&) { return WireAnswer(WireEntries{}); });
    ASSERT_TRUE(neighbour->OwnName("org.example.Neighbour"));
    EXPECT_THAT(bus.Connect(application)->Call({"org.example.Neighbour", "/", "", "Open"}).errorName,
                IsEmpty());
}

} // namespace zviptv::test

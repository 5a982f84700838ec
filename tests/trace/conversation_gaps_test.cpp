// SPDX-License-Identifier: MIT
#include "Bytes.h"
#include "MadeMessage.h"
#include "trace/Conversation.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace zviptv::test;
using namespace zviptv::trace;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

Problems ProblemsOf(MadeMessage const& message)
{
    Conversation conversation;
    auto const event = conversation.Add(message.At(1));
    return event ? event->problems : Problems{"no event"};
}

} // namespace

TEST(ConversationGapsTest, ShowsAReplyToARequestBeforeTheRecording)
{
    Conversation conversation;
    auto const reply =
        conversation.Add(MadeReply(12, Entries({{"result_internal", "1"}, {"size", "2"}})).At(10));
    ASSERT_TRUE(reply);
    EXPECT_EQ(reply->kind, EventKind::Reply);
    EXPECT_EQ(reply->function, "");
    EXPECT_EQ(reply->result, true);
    EXPECT_FALSE(reply->latency);
    EXPECT_EQ(reply->request, 0U);
    EXPECT_THAT(reply->problems, ElementsAre("its request was not recorded"));
    EXPECT_EQ(conversation.Count().unasked, 1U);
}

TEST(ConversationGapsTest, OtherTrafficIsOnlyCounted)
{
    Conversation conversation;
    MadeMessage foreign = MadeRequest("PLAYERCONTROL", 1, WireBody::Strings({"x"}));
    foreign.interface = "org.example.Other";
    EXPECT_FALSE(conversation.Add(foreign.At(1)));
    EXPECT_FALSE(conversation.Add(MadeReply(1, WireBody::Strings({"result_internal"})).At(2)));
    MadeMessage error = MadeReply(99, WireBody::Strings({"x"}));
    error.type = DBUS_MESSAGE_TYPE_ERROR;
    error.errorName = "a.b";
    EXPECT_FALSE(conversation.Add(error.At(3)));
    EXPECT_FALSE(conversation.Add(MadeReply(2, Entries({{"Version", "1"}})).At(4)));
    EXPECT_EQ(conversation.Count().messages, 4U);
    EXPECT_EQ(conversation.Count().foreign, 4U);
    EXPECT_EQ(conversation.Count().malformed, 0U);
}

TEST(ConversationGapsTest, MalformedMessagesAreCountedAndTheFirstIsReported)
{
    Conversation conversation;
    conversation.Add(MadeReply(2, Entries({{"Version", "1"}})).At(4));
    EXPECT_FALSE(conversation.Add({1, "hello"}));
    EXPECT_FALSE(conversation.Add({2, ""}));
    EXPECT_EQ(conversation.Count().malformed, 2U);
    EXPECT_EQ(conversation.Count().firstMalformed, "message 2: it does not begin with a byte order");
    EXPECT_EQ(conversation.Count().foreign, 1U);
}

TEST(ConversationGapsTest, DropsOldRequestsWithoutReplies)
{
    Conversation conversation;
    for (std::uint32_t serial = 1; serial <= 32'770; ++serial) {
        conversation.Add(MadeRequest("IPGUTIL", serial, Entries({{"functionname", "ExistXmlForIPG"}})).At(1));
    }
    EXPECT_EQ(conversation.Count().forgotten, 2U);
    auto const forgotten = conversation.Add(MadeReply(2, Entries({{"result_internal", "1"}})).At(10));
    auto const known = conversation.Add(MadeReply(3, Entries({{"result_internal", "1"}})).At(10));
    EXPECT_EQ(forgotten->function, "");
    EXPECT_EQ(known->function, "ExistXmlForIPG");
}

TEST(ConversationGapsTest, ExpectsNoReplyToARequestWithoutOne)
{
    Conversation conversation;
    MadeMessage request = MadeRequest("IPGUTIL", 1, Entries({{"functionname", "ExistXmlForIPG"}}));
    request.wantsReply = false;
    EXPECT_TRUE(conversation.Add(request.At(1)));
    EXPECT_EQ(conversation.Add(MadeReply(1, Entries({{"result_internal", "1"}})).At(2))->function, "");
}

TEST(ConversationGapsTest, ReportsProblemsInTheWordsOfTheDissector)
{
    EXPECT_THAT(ProblemsOf(MadeRequest(
                    "PLAYERCONTROL", 1,
                    Entries({{"functionname", "MuteAudio"}, {"handleID", "256"}, {"onoff", "1"}}))),
                IsEmpty());
    EXPECT_THAT(ProblemsOf(MadeRequest("PLAYERCONTROL", 1, Entries({{"functionname", "Who"}, {"a", "1"}}))),
                ElementsAre("unknown function Who", "unexpected key a"));
    EXPECT_THAT(ProblemsOf(MadeRequest("IPGUTIL", 1, Entries({{"functionname", "MuteAudio"}}))),
                ElementsAre("unknown function MuteAudio"));
    EXPECT_THAT(
        ProblemsOf(MadeRequest("PLAYERCONTROL", 1, WireBody::Variants({TextVariant("functionname", "x")}))),
        ElementsAre("functionname has the D-Bus type s, not ay"));
    EXPECT_THAT(ProblemsOf(MadeRequest("PLAYERCONTROL", 1,
                                       Entries({{"functionname", "MuteAudio"}, {"onoff", "on"}}))),
                ElementsAre("onoff is not a number"));
    EXPECT_THAT(ProblemsOf(MadeRequest("PLAYERCONTROL", 1, WireBody::Strings({"x"}))),
                ElementsAre("not a message of the protocol: it is cut or damaged"));
    MadeMessage announcement = MadeRequest("IPGUTIL", 1, Entries({{"type", "x"}}));
    announcement.interface = "org.corvel.zviptvapi.dbushelper";
    announcement.member = "SendSignal";
    EXPECT_THAT(ProblemsOf(announcement), ElementsAre("not a message of the protocol: it is cut or damaged"));
}

TEST(ConversationGapsTest, TheFirstOfSeveralEntriesWithAKeyCounts)
{
    Conversation conversation;
    auto const event = conversation.Add(MadeRequest("PLAYERCONTROL", 1,
                                                    Entries({{"functionname", "MuteAudio"},
                                                             {"onoff", "1"},
                                                             {"onoff", "0"},
                                                             {"functionname", "MuteVideo"}}))
                                            .At(1));
    EXPECT_EQ(event->function, "MuteAudio");
    EXPECT_EQ(ToJson(*event)["values"]["onoff"], Json::Value(true));
}

TEST(ConversationGapsTest, RemembersABoundedNumberOfApplications)
{
    Conversation conversation;
    MadeMessage request = MadeRequest("IPGUTIL", 1, Entries({{"functionname", "ExistXmlForIPG"}}));
    for (int number = 0; number < 10'100; ++number) {
        request.sender = ":7." + std::to_string(number);
        request.destination = ":8." + std::to_string(number);
        ASSERT_EQ(conversation.Add(request.At(1))->application->busName, request.sender);
    }
}

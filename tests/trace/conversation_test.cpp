// SPDX-License-Identifier: MIT
#include "Bytes.h"
#include "Json.h"
#include "MadeMessage.h"
#include "trace/Conversation.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace zviptv::test;
using namespace zviptv::trace;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

/// The messages as text, in which numbers have no types.
std::string JsonOf(std::optional<Event> const& event)
{
    return event ? ToJson(*event).toStyledString() : "no event";
}

std::string Same(char const* json)
{
    return ParseJson(json).toStyledString();
}

MadeMessage MadeAnnouncement(std::uint32_t serial, char const* type, char const* add)
{
    MadeMessage message =
        MadeRequest("", serial, Pairs({{"dbusname", ":1.5"}, {"type", type}, {"add", add}}));
    message.destination = "org.corvel.zviptvapi.dbushelper";
    message.path = "/org/corvel/zviptvapi/dbushelper";
    message.interface = "org.corvel.zviptvapi.dbushelper";
    message.member = "SendSignal";
    return message;
}

} // namespace

TEST(ConversationTest, ARequestAndItsReplyAreTwoEvents)
{
    Conversation conversation;
    auto const request = conversation.Add(
        MadeRequest("PLAYERCONTROL", 8,
                    Entries({{"functionname", "SetDigitalDualSound"}, {"handleID", "261"}, {"mode", "1"}}))
            .At(1'000'000));
    EXPECT_EQ(JsonOf(request), Same(R"({
        "number": 1, "time": 1000000, "message": "request", "application": {"bus": ":1.5"}, "service": ":1.2",
        "fromService": false, "endpoint": "PLAYERCONTROL", "function": "SetDigitalDualSound", "handle": 261,
        "serial": 8, "values": {"mode": 1, "modeName": "MAIN"}})"));
    auto const reply = conversation.Add(MadeReply(8, Entries({{"result_internal", "1"}})).At(1'000'250));
    EXPECT_EQ(JsonOf(reply), Same(R"({
        "number": 2, "time": 1000250, "message": "reply", "application": {"bus": ":1.5"}, "service": ":1.2",
        "fromService": true, "endpoint": "PLAYERCONTROL", "function": "SetDigitalDualSound", "serial": 1008,
        "request": 1, "result": true, "latency": 250})"));
    EXPECT_EQ(conversation.Count().messages, 2U);
    EXPECT_EQ(conversation.Count().foreign, 0U);
}

TEST(ConversationTest, RepliesAreMatchedByCallerAndSerialInAnyOrder)
{
    Conversation conversation;
    MadeMessage other = MadeRequest("BROADCASTDATA", 8, Entries({{"functionname", "SizeOfTTX"}}));
    other.sender = ":1.6";
    conversation.Add(MadeRequest("BROADCASTDATA", 8, Entries({{"functionname", "SizeOfAudio"}})).At(10));
    conversation.Add(other.At(20));
    conversation.Add(MadeRequest("BROADCASTDATA", 9, Entries({{"functionname", "GetAudioFormat"}})).At(30));
    MadeMessage otherReply = MadeReply(8, Entries({{"result_internal", "1"}, {"size", "3"}}));
    otherReply.destination = ":1.6";
    auto const third = conversation.Add(MadeReply(9, Entries({{"result_internal", "0"}})).At(40));
    auto const second = conversation.Add(otherReply.At(50));
    auto const first =
        conversation.Add(MadeReply(8, Entries({{"result_internal", "1"}, {"size", "2"}})).At(60));
    ASSERT_TRUE(first && second && third);
    EXPECT_EQ(first->function, "SizeOfAudio");
    EXPECT_EQ(first->values.at(0).text, "2");
    EXPECT_EQ(first->latency, 50);
    EXPECT_EQ(second->function, "SizeOfTTX");
    EXPECT_EQ(second->application->busName, ":1.6");
    EXPECT_EQ(third->function, "GetAudioFormat");
    EXPECT_EQ(third->result, false);
}

TEST(ConversationTest, AnErrorIsTheAnswerToARequest)
{
    Conversation conversation;
    conversation.Add(MadeRequest("PLAYERCONTROL", 3, Entries({{"functionname", "SetAppID"}})).At(10));
    MadeMessage error = MadeReply(3, WireBody::Strings({"no answer"}));
    error.type = DBUS_MESSAGE_TYPE_ERROR;
    error.sender = "org.freedesktop.DBus";
    error.errorName = "org.freedesktop.DBus.Error.NoReply";
    auto const event = conversation.Add(error.At(2'000'010));
    EXPECT_EQ(JsonOf(event), Same(R"({
        "number": 2, "time": 2000010, "message": "error", "application": {"bus": ":1.5"}, "service": ":1.2",
        "fromService": true, "endpoint": "PLAYERCONTROL", "function": "SetAppID", "serial": 1003, "request": 1,
        "latency": 2000000, "error": "org.freedesktop.DBus.Error.NoReply", "errorText": "no answer"})"));
}

TEST(ConversationTest, AnnouncementsDefineTheChannelsOfAnApplication)
{
    Conversation conversation;
    auto const joins = conversation.Add(MadeAnnouncement(4, "IPGUTIL", "y").At(10));
    EXPECT_EQ(JsonOf(joins), Same(R"({
        "number": 1, "time": 10, "message": "announcement", "application": {"bus": ":1.5"},
        "service": "org.corvel.zviptvapi.dbushelper", "fromService": false, "endpoint": "IPGUTIL", "serial": 4,
        "values": {"dbusname": ":1.5", "type": "IPGUTIL", "add": "y"}})"));
    EXPECT_THAT(joins->application->channels, ElementsAre("IPGUTIL"));
    auto const answer = conversation.Add(MadeReply(4, Pairs({{"dbusname", ":1.2"}})).At(25));
    EXPECT_EQ(JsonOf(answer), Same(R"({
        "number": 2, "time": 25, "message": "answer", "application": {"bus": ":1.5"}, "service": ":1.2",
        "fromService": true, "endpoint": "IPGUTIL", "serial": 1004, "request": 1, "latency": 15,
        "values": {"dbusname": ":1.2"}})"));
    auto const leaves = conversation.Add(MadeAnnouncement(5, "IPGUTIL", "n").At(30));
    EXPECT_THAT(leaves->application->channels, IsEmpty());
}

TEST(ConversationTest, PushesHavePidTimeStampAndSize)
{
    Conversation conversation;
    auto const packet = conversation.Add(MadeNotification(Entries({{"functionname", "PESCB"},
                                                                   {"pesDataSize", "5"},
                                                                   {"pesType", "2"},
                                                                   {"pesPID", "257"},
                                                                   {"pesPTS", "133200"},
                                                                   {"pesData", "12345"}}))
                                             .At(10));
    EXPECT_EQ(JsonOf(packet), Same(R"({
        "number": 1, "time": 10, "message": "notification", "application": {"bus": ":1.5"}, "service": ":1.2",
        "fromService": true, "endpoint": "IPTVDATASUBSCRIBER", "function": "PESCB", "serial": 77, "pid": 257,
        "pts": 133200, "size": 5, "values": {"pesDataSize": 5, "pesType": 2, "pesTypeName": "AUDIO",
        "pesPID": 257, "pesPTS": 133200, "pesData": 5}})"));
    auto const caption = conversation.Add(MadeNotification(Entries({{"functionname", "CaptionCB"},
                                                                    {"captionDataSize", "0"},
                                                                    {"captionType", "4"},
                                                                    {"captionData", ""}}))
                                              .At(20));
    EXPECT_EQ(caption->size, 0U);
    EXPECT_FALSE(caption->pid);
    EXPECT_EQ(caption->values.at(1).text, "TELETEXT");
}

/// The mistake of a service that emits a signal without naming the subscriber.
TEST(ConversationTest, APushWithoutADestinationIsAProblem)
{
    std::vector<std::string> asked;
    Conversation conversation([&asked](std::string const& busName) { asked.push_back(busName); });
    MadeMessage push = MadeNotification(Entries({{"functionname", "CaptionCB"}}));
    push.destination = "";
    auto const event = conversation.Add(push.At(10));
    EXPECT_THAT(event->problems,
                ElementsAre("no destination: every application with this endpoint receives it"));
    EXPECT_EQ(event->application->name, "every application");
    EXPECT_EQ(event->application->busName, "");
    EXPECT_THAT(asked, IsEmpty());
}

TEST(ConversationTest, ACallOfTheServiceWithoutEntriesIsASeparateEvent)
{
    Conversation conversation;
    conversation.Add(MadeNotification(Entries({{"functionname", "PESCB"}})).At(10));
    MadeMessage question = MadeRequest("IPTVDATASUBSCRIBER", 6, WireEntries());
    question.sender = ":1.2";
    question.destination = ":1.5";
    auto const asked = conversation.Add(question.At(20));
    EXPECT_TRUE(asked->isFromService);
    EXPECT_EQ(asked->application->busName, ":1.5");
    EXPECT_EQ(asked->service, ":1.2");
    MadeMessage answer = MadeReply(6, WireEntries());
    answer.sender = ":1.5";
    answer.destination = ":1.2";
    auto const answered = conversation.Add(answer.At(30));
    EXPECT_FALSE(answered->isFromService);
    EXPECT_EQ(answered->application->busName, ":1.5");
    EXPECT_EQ(answered->latency, 10);
}

TEST(ConversationTest, ApplicationsHaveTheirNameAndProcess)
{
    std::vector<std::string> seen;
    Conversation conversation([&seen](std::string const& name) { seen.push_back(name); });
    auto const first =
        conversation.Add(MadeRequest("IPGUTIL", 1, Entries({{"functionname", "ExistXmlForIPG"}})).At(10));
    conversation.SetProcess(":1.5", 42, "player");
    auto const named = conversation.Add(
        MadeRequest("PLAYERCONTROL", 2, Entries({{"functionname", "SetAppID"}, {"AppID", "org.example"}}))
            .At(20));
    EXPECT_THAT(seen, ElementsAre(":1.5"));
    EXPECT_EQ(ToJson(*named)["application"].toStyledString(),
              Same(R"({"bus": ":1.5", "name": "org.example", "process": 42, "program": "player"})"));
    EXPECT_EQ(ToJson(*first)["application"].toStyledString(), Same(R"({"bus": ":1.5"})"));
}

TEST(ConversationTest, LearnsProcessesFromAnswersOfTheBusToOthers)
{
    Conversation conversation;
    conversation.Add(MadeRequest("IPGUTIL", 1, Entries({{"functionname", "ExistXmlForIPG"}})).At(10));
    MadeMessage question;
    question.sender = ":1.9";
    question.destination = "org.freedesktop.DBus";
    question.path = "/org/freedesktop/DBus";
    question.interface = "org.freedesktop.DBus";
    question.member = "GetConnectionUnixProcessID";
    question.serial = 4;
    question.body = WireBody::Strings({":1.5"});
    EXPECT_FALSE(conversation.Add(question.At(20)));
    MadeMessage answer = MadeReply(4, WireBody::Raw([](DBusMessageIter* iter) {
                                       std::uint32_t const id = 4711;
                                       dbus_message_iter_append_basic(iter, DBUS_TYPE_UINT32, &id);
                                   }));
    answer.destination = ":1.9";
    EXPECT_FALSE(conversation.Add(answer.At(30)));
    auto const reply =
        conversation.Add(MadeReply(1, Entries({{"result_internal", "1"}, {"data", "0"}})).At(40));
    EXPECT_EQ(reply->application->processId, 4711);
    EXPECT_EQ(conversation.Count().foreign, 2U);
}

TEST(ConversationTest, TakesLossesAndArrivalsFromTheBus)
{
    Conversation conversation;
    auto const arrival =
        conversation.Add(MadeOwnerChange("org.corvel.zviptvapi.dbushelper", "", ":1.2").At(10));
    EXPECT_EQ(JsonOf(arrival), Same(R"({"number": 1, "time": 10, "message": "arrival", "service": ":1.2",
        "fromService": true, "serial": 1})"));
    conversation.Add(MadeRequest("IPGUTIL", 1, Entries({{"functionname", "ExistXmlForIPG"}})).At(20));
    auto const loss = conversation.Add(MadeOwnerChange(":1.5", ":1.5", "").At(30));
    EXPECT_EQ(JsonOf(loss), Same(R"({"number": 3, "time": 30, "message": "loss",
        "application": {"bus": ":1.5"}, "fromService": false, "serial": 1})"));
    auto const lost = conversation.Add(MadeOwnerChange("org.corvel.zviptvapi.dbushelper", ":1.2", "").At(40));
    EXPECT_EQ(JsonOf(lost), Same(R"({"number": 4, "time": 40, "message": "loss", "service": ":1.2",
        "fromService": true, "serial": 1})"));
    EXPECT_FALSE(conversation.Add(MadeOwnerChange(":1.2", ":1.2", "").At(50)));
    EXPECT_FALSE(conversation.Add(MadeOwnerChange(":1.77", "", ":1.77").At(60)));
    EXPECT_FALSE(conversation.Add(MadeOwnerChange("org.example", "", ":1.77").At(70)));
}

// SPDX-License-Identifier: MIT
#include "FaultTest.h"

#include <zviptv/ConnectionHelperDBusClient.h>

using namespace zviptv::test;

namespace {

std::string const NotUtf8 = "not \xff\xfe utf-8";

/// Texts that are not bus names or paths. Some are not even valid UTF-8.
std::vector<std::string> BadNames()
{
    return {"",
            ".",
            "undotted",
            ":",
            "org..test",
            "org.corvel.test.",
            "org.corvel." + std::string(245, 'x'), // 256 characters
            std::string(256, 'x'),
            std::string(100000, '.'),
            NotUtf8,
            "org.corvel." + NotUtf8,
            std::string("org.corvel.test\0.zero", 21),
            "%s%n"};
}

TEST_F(PartnerTest, F08_InvalidNames)
{
    PeerProcess partner;
    WirePeer service;
    service.SetRecording(false);
    ASSERT_TRUE(service.OwnName("org.corvel.zviptvapi.dbushelper"));
    service.SetHandler([](WireMessage const&) { return Pairs({{"dbusname", "undotted"}}); });
    Repeat(ShortOrLong(10, 1000), [&] {
        TestChannel channel;
        for (std::string const& name : BadNames()) {
            ASSERT_EQ(channel->Connect(name), 0) << name;
            ASSERT_FALSE(channel->IsConnectionReady());
            CConnectionHelperDBusClient().Connect(name, name);
            CConnectionHelperDBusClient().Disconnect(name, name);
        }
        ASSERT_EQ(channel->Connect(partner.Name()), 1);
        ASSERT_EQ(Ask(channel, {{"id", "1"}}).GetValue("id"), "1");
    });
}

TEST_F(PartnerTest, F08_ChannelNamesWithoutAPath)
{
    PeerProcess partner;
    Repeat(ShortOrLong(10, 1000), [&] {
        for (std::string const& name : BadNames()) {
            if (name == "undotted" || name == std::string(256, 'x')) {
                continue; // these are a valid path
            }
            CProxyDBusHelper channel(name);
            CMessageBuffer message;
            CMessageBuffer reply;
            ASSERT_EQ(channel.Connect(partner.Name()), 0) << name;
            ASSERT_EQ(channel.SendMessage(message, reply, 0), 0);
            ASSERT_EQ(channel.SendNotification(message), 0);
        }
        RunPending();
    });
}

TEST_F(PartnerTest, F08_TextsThatAreNullOrNotUtf8)
{
    PeerProcess partner;
    TestChannel channel;
    ASSERT_EQ(channel->Connect(partner.Name()), 1);
    Repeat(ShortOrLong(10, 1000), [&] {
        CMessageBuffer badKey = Message({{NotUtf8, "v"}});
        CMessageBuffer reply = Message({{"id", "former"}});
        ASSERT_EQ(channel->SendMessage(badKey, reply, 0), 0);
        ASSERT_EQ(channel->SendMessage(badKey, reply, 1), 0);
        ASSERT_EQ(channel->SendNotification(badKey), 0);
        ASSERT_EQ(reply.GetValue("id"), "former");
        CMessageBuffer nulls;
        nulls.AddValue(nullptr, "v");
        nulls.AddValue("k", nullptr);
        ASSERT_EQ(nulls.Size(), 0);
        ASSERT_EQ(channel->SendMessage(nulls, reply, 0), 1);
        ASSERT_EQ(Ask(channel, {{"id", NotUtf8}}).GetValue("id"), NotUtf8) << "bytes travel as they are";
    });
}

TEST_F(PartnerTest, F08_WrongTypesInRepliesSignalsAndCalls)
{
    PeerProcess partner;
    TestChannel channel;
    int signals = 0;
    int calls = 0;
    std::vector<int> sizes;
    channel.onNotification = [&](CMessageBuffer& message) {
        ++signals;
        sizes.push_back(message.Size());
    };
    channel.onMessage = [&](CMessageBuffer&) {
        ++calls;
        return CMessageBuffer();
    };
    ASSERT_EQ(channel->Connect(partner.Name()), 1);
    Repeat(ShortOrLong(10, 1000), [&] {
        signals = 0;
        calls = 0;
        sizes.clear();
        ASSERT_EQ(Order(channel, {{"do", "answer"}, {"kind", "strings"}}), 0);
        ASSERT_EQ(Order(channel, {{"do", "answer"}, {"kind", "none"}}), 0);
        CMessageBuffer const variants = Ask(channel, {{"do", "answer"}, {"kind", "variants"}});
        ASSERT_EQ(EntriesOf(variants), Entries({{"k", "v"}})) << "the only byte array";
        for (char const* const kind : {"strings", "none", "variants"}) {
            OrderEvents(channel, "SendSignal", {{"count", "1"}, {"kind", kind}});
            OrderEvents(channel, "Send", {{"kind", kind}});
        }
        OrderEvents(channel, "SendSignal", {{"count", "1"}});
        ASSERT_TRUE(RunUntil([&] { return signals == 2; }));
        RunPending();
        ASSERT_EQ(sizes, (std::vector<int>{1, 0})) << "that of the variants, and the last one";
        ASSERT_EQ(calls, 1) << "that of the variants";
    });
}

} // namespace

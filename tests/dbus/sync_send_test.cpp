// SPDX-License-Identifier: MIT
#include "BusLink.h"
#include "BusMonitor.h"
#include "ChannelFixture.h"

#include <atomic>
#include <thread>
#include <vector>

using namespace zviptv::test;
using namespace std::chrono_literals;
using testing::ElementsAre;

namespace {

using Clock = std::chrono::steady_clock;

/// A channel whose partner gives the answers of the test. No loop runs, because sends do not need one.
class SyncSend : public ChannelTest
{
protected:
    SyncSend()
    {
        EXPECT_EQ(m_channel->Connect(m_partner.Name()), 1);
        m_log.Clear();
    }

    int Send(CMessageBuffer request = CMessageBuffer())
    {
        return m_channel->SendMessage(request, m_reply, 0);
    }

    void AnswerWith(WireAnswer const& answer)
    {
        m_partner.SetHandler([answer](WireMessage const&) { return answer; });
    }

    TestChannel m_channel{"PLAYERCONTROL"};
    CMessageBuffer m_reply = Message({{"old", "1"}, {"older", "2"}});
    WireEntries const m_untouched = Entries({{"old", "1"}, {"older", "2"}});
};

TEST_F(SyncSend, CallsSendOnThePartnersObject)
{
    BusMonitor monitor(m_bus.Address());
    AnswerWith(WireEntries());
    CMessageBuffer request;
    request.AddValue("functionname", "GetSTCCount");
    request.AddValue("handleID", "3");
    EXPECT_EQ(Send(request), 1);
    WireMessage expected;
    expected.kind = WireKind::Call;
    expected.sender = m_channel->GetPublicName();
    expected.destination = m_partner.Name();
    expected.path = "/org/corvel/zviptvapi/DbusCommunication/PLAYERCONTROL";
    expected.interface = "org.corvel.zviptvapi.DbusCommunication";
    expected.member = "Send";
    expected.signature = "a{sv}";
    expected.entries = {{"functionname", "ay", "GetSTCCount"}, {"handleID", "ay", "3"}};
    auto const seen = monitor.WaitFor(IsCall("Send"));
    ASSERT_TRUE(seen);
    EXPECT_EQ(*seen, expected);
    EXPECT_EQ(seen->entries[0].bytes.size(), 11U);
    EXPECT_EQ(seen->entries[1].bytes.size(), 1U);
}

TEST_F(SyncSend, KeepsOrderDuplicatesEmptyValuesAndZeroBytes)
{
    AnswerWith(WireEntries());
    std::string const record("\0\1\0\2\0\3\0\0", 8);
    WireEntries const entries =
        Entries({{"z", "1"}, {"a", ""}, {"z", "2"}, {"r", record}, {"", "empty key"}});
    CMessageBuffer request = Message({{"z", "1"}, {"a", ""}, {"z", "2"}, {"r", record}, {"", "empty key"}});
    EXPECT_EQ(Send(request), 1);
    auto const call = m_partner.WaitFor(IsCall("Send"));
    ASSERT_TRUE(call);
    EXPECT_EQ(call->entries, entries);
    EXPECT_TRUE(call->HasOnlyByteArrays());
    EXPECT_EQ(EntriesOf(request), entries) << "the request is not changed";
}

TEST_F(SyncSend, AnEmptyMessageIsAnEmptyDictionary)
{
    AnswerWith(WireEntries());
    EXPECT_EQ(Send(), 1);
    auto const call = m_partner.WaitFor(IsCall("Send"));
    ASSERT_TRUE(call);
    EXPECT_EQ(call->signature, "a{sv}");
    EXPECT_EQ(call->entries, WireEntries());
    EXPECT_EQ(m_reply.Size(), 0) << "the former entries are discarded";
}

TEST_F(SyncSend, KeysAreUtf8)
{
    AnswerWith(WireEntries());
    EXPECT_EQ(Send(Message({{"schl\xc3\xbcssel", "\xff"}})), 1);
    EXPECT_EQ(m_partner.WaitFor(IsCall("Send"))->entries, Entries({{"schl\xc3\xbcssel", "\xff"}}));
}

TEST_F(SyncSend, RefusesAKeyThatIsNotUtf8)
{
    AnswerWith(WireEntries());
    EXPECT_EQ(Send(Message({{"fine", "1"}, {"\xff", "1"}})), 0);
    EXPECT_THAT(m_log.Messages(ZV_LOG_ERROR),
                ElementsAre(testing::StartsWith("Error while sending message [")));
    EXPECT_EQ(EntriesOf(m_reply), m_untouched);
    EXPECT_EQ(Send(), 1) << "the connection is open";
    EXPECT_EQ(m_partner.Received().Count(IsCall("Send")), 1U);
}

TEST_F(SyncSend, ReplyReplacesEverything)
{
    std::string const record("\0\1\0\2\0\3\0\0", 8);
    AnswerWith(Entries({{"result_internal", "1"}, {"r", record}, {"d", "1"}, {"d", "2"}}));
    EXPECT_EQ(Send(), 1);
    EXPECT_EQ(EntriesOf(m_reply), Entries({{"result_internal", "1"}, {"r", record}, {"d", "1"}, {"d", "2"}}));
    EXPECT_EQ(m_reply.GetResult(), 1);
    EXPECT_EQ(m_reply.GetValueOfSize(1), 8);
    EXPECT_EQ(m_reply.GetValue("d"), "1");
}

TEST_F(SyncSend, OmitsEmptyValues)
{
    AnswerWith(Entries({{"a", ""}, {"b", "1"}, {"c", ""}}));
    EXPECT_EQ(Send(), 1);
    EXPECT_EQ(EntriesOf(m_reply), Entries({{"b", "1"}}));
}

TEST_F(SyncSend, OmitsVariantsThatAreNotByteArrays)
{
    AnswerWith(WireBody::Variants(
        {TextVariant("s", "text"), BytesVariant("k", "v"), NumberVariant("n", 5), BytesVariant("l", "w")}));
    EXPECT_EQ(Send(), 1);
    EXPECT_EQ(EntriesOf(m_reply), Entries({{"k", "v"}, {"l", "w"}}));
}

TEST_F(SyncSend, AReplyOfAnotherTypeIsAFailure)
{
    for (WireBody const& body : {WireBody(), WireBody::Strings({"a"}), WireBody(Pairs({{"a", "b"}}))}) {
        m_log.Clear();
        AnswerWith(body);
        EXPECT_EQ(Send(), 0);
        EXPECT_THAT(m_log.Messages(ZV_LOG_ERROR),
                    ElementsAre(testing::StartsWith("Error while sending message [")));
        EXPECT_EQ(EntriesOf(m_reply), m_untouched);
    }
}

TEST_F(SyncSend, RequestAndReplyMayBeTheSameBuffer)
{
    AnswerWith(Entries({{"answer", "1"}}));
    CMessageBuffer both = Message({{"question", "?"}});
    EXPECT_EQ(m_channel->SendMessage(both, both, 0), 1);
    EXPECT_EQ(EntriesOf(both), Entries({{"answer", "1"}}));
    EXPECT_EQ(m_partner.WaitFor(IsCall("Send"))->entries, Entries({{"question", "?"}}));
}

TEST_F(SyncSend, LogsEachStep)
{
    AnswerWith(WireEntries());
    EXPECT_EQ(Send(Message({{"a", "1"}, {"b", ""}})), 1);
    EXPECT_THAT(LoggedLines(m_log),
                ElementsAre(Debug("m_SendSyncMessage", "Sending sync message with 2 key-value pairs"),
                            Debug("m_SendSyncMessage", "Replyed")));
}

TEST_F(SyncSend, AnErrorIsAFailure)
{
    AnswerWith(WireAnswer::Error("org.corvel.Failed", "because 100%s"));
    EXPECT_EQ(Send(), 0);
    EXPECT_THAT(LoggedLines(m_log),
                ElementsAre(Debug("m_SendSyncMessage", "Sending sync message with 0 key-value pairs"),
                            Failed("m_SendSyncMessage", "Error while sending message [36] "
                                                        "GDBus.Error:org.corvel.Failed: because 100%s")));
    EXPECT_EQ(EntriesOf(m_reply), m_untouched);
    EXPECT_TRUE(m_channel->IsConnectionReady());
}

TEST_F(SyncSend, APartnerWithoutOwnerIsAFailure)
{
    m_partner.Disconnect();
    WirePeer other;
    ASSERT_TRUE(other.WaitForOwner(m_partner.Name(), false));
    EXPECT_EQ(Send(), 0);
    EXPECT_THAT(m_log.Messages(ZV_LOG_ERROR),
                ElementsAre(testing::StartsWith("Error while sending message [2] "
                                                "GDBus.Error:org.freedesktop.DBus.Error.ServiceUnknown: ")));
    EXPECT_EQ(EntriesOf(m_reply), m_untouched);
}

TEST_F(SyncSend, GivesUpAfterTwoSeconds)
{
    AnswerWith(WireAnswer::Nothing());
    auto const start = Clock::now();
    EXPECT_EQ(Send(), 0);
    auto const waited = Clock::now() - start;
    EXPECT_GE(waited, 1990ms);
    EXPECT_LT(waited, 10s);
    EXPECT_THAT(
        LoggedLines(m_log),
        ElementsAre(Debug("m_SendSyncMessage", "Sending sync message with 0 key-value pairs"),
                    Failed("m_SendSyncMessage", "Error while sending message [24] Timeout was reached")));
    EXPECT_EQ(EntriesOf(m_reply), m_untouched);
}

TEST_F(SyncSend, ALateReplyIsIgnored)
{
    BusMonitor monitor(m_bus.Address());
    m_partner.SetHandler([](WireMessage const& call) {
        WireAnswer const answer(Entries({{"to", call.Value("n")}}));
        return call.Value("n") == "1" ? answer.After(2300ms) : answer;
    });
    EXPECT_EQ(Send(Message({{"n", "1"}})), 0);
    ASSERT_TRUE(monitor.WaitFor([](WireMessage const& seen) { return seen.Value("to") == "1"; }));
    EXPECT_EQ(Send(Message({{"n", "2"}})), 1);
    EXPECT_EQ(EntriesOf(m_reply), Entries({{"to", "2"}}));
}

TEST_F(SyncSend, EndsAtOnceWhenThePartnerDies)
{
    AnswerWith(WireAnswer::Nothing());
    int losses = 0;
    m_channel.onDisconnect = [&](std::string const&, std::string const&) { ++losses; };
    std::thread killer([this] {
        m_partner.WaitFor(IsCall("Send"));
        m_partner.Disconnect();
    });
    auto const start = Clock::now();
    EXPECT_EQ(Send(), 0);
    EXPECT_LT(Clock::now() - start, 1900ms);
    killer.join();
    EXPECT_EQ(losses, 0) << "the loss is told by the loop";
    EXPECT_EQ(EntriesOf(m_reply), m_untouched);
    ASSERT_TRUE(RunUntil([&] { return losses > 0; }));
    RunPending();
    EXPECT_EQ(losses, 1);
    EXPECT_EQ(m_log.Count("Connection lost with partner id=" + m_partner.Name()), 1U);
}

/// Sends a stranger's answer to a call. When this returns, the bus is delivering it to the victim.
void Forge(int type, std::string const& victim, std::uint32_t serial)
{
    BusLink link;
    MessageHandle const message(dbus_message_new(type));
    dbus_message_set_destination(message.get(), victim.c_str());
    dbus_message_set_reply_serial(message.get(), serial);
    dbus_message_set_path(message.get(), "/");
    dbus_message_set_interface(message.get(), "org.corvel.test");
    dbus_message_set_member(message.get(), "Forged");
    dbus_message_set_error_name(message.get(), "org.corvel.test.Forged");
    WireBody(Entries({{"from", "stranger"}})).AppendTo(message.get());
    link.Send(message);
    link.Sync();
}

/// Strangers cannot answer even if they know the serial of the call.
TEST_F(SyncSend, StrangersDoNotAnswer)
{
    for (int const type : {DBUS_MESSAGE_TYPE_METHOD_CALL, DBUS_MESSAGE_TYPE_METHOD_RETURN,
                           DBUS_MESSAGE_TYPE_ERROR, DBUS_MESSAGE_TYPE_SIGNAL}) {
        m_partner.SetHandler([type](WireMessage const& call) {
            Forge(type, call.sender, call.serial);
            return Entries({{"from", "partner"}});
        });
        EXPECT_EQ(Send(), 1);
        EXPECT_EQ(EntriesOf(m_reply), Entries({{"from", "partner"}})) << dbus_message_type_to_string(type);
    }
}

/// Answers arrive in another order than the calls were made, and each goes to the thread that waits for it.
TEST_F(SyncSend, ThreadsThatWaitTogetherGetTheirOwnAnswers)
{
    m_partner.SetHandler([](WireMessage const& call) {
        int const number = std::stoi(call.Value("n"));
        return WireAnswer(Entries({{"to", call.Value("n")}}))
            .After(std::chrono::milliseconds(number * 7 % 5));
    });
    std::vector<std::thread> threads;
    std::atomic<int> own{0};
    for (int first = 0; first < 800; first += 100) {
        threads.emplace_back([this, first, &own] {
            for (int number = first; number < first + 100; ++number) {
                CMessageBuffer request = Message({{"n", std::to_string(number)}});
                CMessageBuffer reply;
                m_channel->SendMessage(request, reply, 0);
                own += reply.GetValue("to") == std::to_string(number) ? 1 : 0;
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(own, 800);
}

} // namespace

// SPDX-License-Identifier: MIT
#include "ClientFaultTest.h"

#include <stdexcept>
#include <thread>

using namespace zviptv;
using namespace zviptv::test;
using namespace std::chrono_literals;

namespace {

using Kinds = std::vector<std::string>;

BusOptions OpenBus()
{
    BusOptions options;
    options.openPolicy = false;
    options.extraConfig = R"(<policy context="default">
        <allow user="*"/><allow own="*"/><allow send_destination="*"/><allow receive_sender="*"/>
        </policy>)";
    return options;
}

class ClientDataFault : public ClientFault
{
protected:
    ClientDataFault() : ClientFault(OpenBus()) {}

    std::unique_ptr<FakeService> m_service = std::make_unique<FakeService>(m_bus.Address());
};

TEST_F(ClientDataFault, F03_DestroyedDuringAFloodOfPackets)
{
    m_service->Peer().SetRecording(false); // what it keeps would grow
    RepeatFor(ShortOrLong(1000ms, 20000ms), [&] {
        auto television = std::make_unique<Television>();
        std::size_t packets = 0;
        Subscription subscription = television->SubscribePes({}, [&](PesPacket const&) { ++packets; });
        ASSERT_TRUE(RunUntil([&] { return m_service->WaitForRequest("requestPESCB", 0ms).has_value(); }));
        std::string const client = m_service->ClientOf(Subscriber());
        std::atomic<bool> goesOn{true};
        std::thread flood([&] {
            WireEntries const packet = Packet();
            for (int i = 0; i < 3000 && goesOn; ++i) {
                m_service->Notify(client, Subscriber(), packet);
            }
        });
        bool const came = RunUntil([&] { return packets >= 50; });
        television.reset();
        std::size_t const atEnd = packets;
        RunPending();
        goesOn = false;
        flood.join();
        RunPending();
        m_service->ClearRecords();
        ASSERT_TRUE(came);
        ASSERT_EQ(packets, atEnd);
    });
}

TEST_F(ClientDataFault, F07_BusAbsentAndDying)
{
    Television television;
    Repeat(ShortOrLong(2, 40), [&] {
        ASSERT_TRUE(AwaitAvailable(television, true));
        Kinds kinds;
        m_service->AnswerNothing("MuteAudio");
        Mute(television, kinds);
        ASSERT_TRUE(RunUntil([&] { return m_service->WaitForRequest("MuteAudio", 0ms).has_value(); }));
        m_bus.Kill();
        ASSERT_TRUE(AwaitAvailable(television, false));
        ASSERT_TRUE(RunUntil([&] { return kinds.size() == 1; }));
        ASSERT_THAT(kinds[0], testing::AnyOf("no bus", "no service"));
        ASSERT_EQ(KindOf(television.Player().MuteAudio(true)), "no bus");
        {
            Television other;
            ASSERT_EQ(KindOf(other.Guide().ExistXmlForIPG()), "no bus");
            Mute(other, kinds);
        }
        ASSERT_EQ(kinds.back(), "gone");
        m_service.reset();
        m_bus.Restart();
        m_service = std::make_unique<FakeService>(m_bus.Address());
    });
}

TEST_F(ClientDataFault, F08_WrongNamesTextsAndTypes)
{
    Television television;
    Repeat(ShortOrLong(3, 200), [&] {
        for (std::string const& name : {std::string(), std::string("no dots"), std::string(256, 'a'),
                                        std::string(":1"), std::string("\xff")}) {
            Television stranger;
            ASSERT_TRUE(AwaitAvailable(stranger, true));
            m_service->SetPartnerName(name);
            ASSERT_NE(KindOf(stranger.Player().MuteAudio(true)), "success") << name;
        }
        m_service->SetPartnerName(m_service->Name());
        ASSERT_NE(KindOf(television.Player().SetAppID(std::string(3, '\0'))), "");
        m_service->AnswerWith("GetSourceState", WireBody());
        ASSERT_EQ(KindOf(television.Player().GetSourceState()), "malformed reply");
        m_service->Answer("GetSourceState", {{"result_internal", "1"}, {"sourcestate", "\xff"}});
        ASSERT_EQ(KindOf(television.Player().GetSourceState()), "malformed reply");
        m_service->Answer("GetAudio", {{"result_internal", "1"}, {"audio", ""}});
        ASSERT_NE(KindOf(television.Broadcast().GetAudio(0)), "");
        m_service->Answer("SizeOfAudio", {{"result_internal", "1"}, {"size", "-1"}});
        ASSERT_EQ(KindOf(television.Broadcast().AudioTracks()), "malformed reply");
        ASSERT_EQ(KindOf(television.Player().MuteAudio(true)), "success");
    });
}

TEST_F(ClientDataFault, F09_SizesBeyondTheBus)
{
    AllowMemory(300 * 1024);
    Television television;
    std::vector<std::size_t> sizes;
    Subscription const subscription =
        television.SubscribePes({}, [&](PesPacket const& packet) { sizes.push_back(packet.Data().Size()); });
    ASSERT_TRUE(RunUntil([&] { return m_service->WaitForRequest("requestPESCB", 0ms).has_value(); }));
    std::size_t const MiB = 1024 * 1024;
    Repeat(1, [&] {
        m_service->ClearRecords();
        Kinds kinds; // a busy machine may need more than the 2 s of a call that blocks
        television.Player().SetAppID(std::string(31 * MiB, 'a'),
                                     [&](Result<void> result) { kinds.push_back(KindOf(result)); }, {20s});
        ASSERT_TRUE(RunUntil([&] { return !kinds.empty(); }));
        ASSERT_EQ(kinds, Kinds{"success"});
        for (std::size_t const size : {32 * MiB, 64 * MiB, 129 * MiB}) {
            ASSERT_EQ(KindOf(television.Player().SetAppID(std::string(size, 'a'))), "too large");
        }
        ASSERT_EQ(KindOf(television.Player().MuteAudio(true)), "success");
        ASSERT_TRUE(television.IsAvailable());
    });
    m_service.reset();
    m_service = std::make_unique<FakeService>(m_bus.Address());
    ASSERT_TRUE(RunUntil([&] { return m_service->WaitForRequest("requestPESCB", 0ms).has_value(); }));
    m_service->Notify(m_service->ClientOf(Subscriber()), Subscriber(), Packet(31 * MiB));
    ASSERT_TRUE(RunUntil([&] { return !sizes.empty(); }));
    EXPECT_EQ(sizes, std::vector<std::size_t>{31 * MiB});
}

TEST_F(ClientDataFault, F10_TwentyExceptionsOutOfEachCallback)
{
    Television television;
    int reported = 0;
    int packets = 0;
    int states = 0;
    int calls = 0;
    television.OnError([&](Failure const& failure) {
        reported += failure.kind == FailureKind::CallbackThrew ? 1 : 0;
        throw std::runtime_error("also this one");
    });
    Subscription const subscription = television.SubscribePes({}, [&](PesPacket const&) {
        ++packets;
        throw std::runtime_error("packet");
    });
    StateWatcher const watcher(television, {1ms, 1}, [&](StateEvent const&) {
        ++states;
        throw 42;
    });
    Listener const listener =
        television.OnAvailability([](bool) { throw std::runtime_error("availability"); });
    ASSERT_TRUE(RunUntil([&] { return m_service->WaitForRequest("requestPESCB", 0ms).has_value(); }));
    ASSERT_TRUE(RunUntil([&] { return states == 1; }));
    ASSERT_GE(reported, 2);
    reported = 0;
    Repeat(20, [&] {
        m_service->Notify(m_service->ClientOf(Subscriber()), Subscriber(), Packet());
        television.Player().MuteAudio(true, [&](Result<void> const&) {
            ++calls;
            throw std::runtime_error("completion");
        });
        int const before = packets + calls;
        ASSERT_TRUE(RunUntil([&] { return packets + calls == before + 2; }));
    });
    EXPECT_EQ(packets, 22); // two rounds to get warm
    EXPECT_EQ(calls, 22);
    EXPECT_EQ(reported, 44);
}

TEST_F(ClientDataFault, F11_StrangersSignalsCallsAndForgeries)
{
    Television television;
    int packets = 0;
    int failures = 0;
    television.OnError([&](Failure const&) { ++failures; });
    Subscription const subscription = television.SubscribePes({}, [&](PesPacket const&) { ++packets; });
    ASSERT_TRUE(RunUntil([&] { return m_service->WaitForRequest("requestPESCB", 0ms).has_value(); }));
    std::string const client = m_service->ClientOf(Subscriber());
    Repeat(ShortOrLong(1, 40), [&] {
        packets = 0;
        PeerProcess const stranger({"stranger", client, ChannelPath(Subscriber()), m_service->Name()});
        ASSERT_TRUE(stranger.WaitForDone());
        WirePeer forger(m_bus.Address());
        forger.Emit(
            {client, ChannelPath(Subscriber()), "org.corvel.zviptvapi.DbusCommunication", "SendSignal"},
            Packet());
        forger.Sync();
        m_service->Notify(client, Subscriber(), Packet());
        ASSERT_TRUE(RunUntil([&] { return packets > 0; }));
        RunPending();
        ASSERT_EQ(packets, 1) << "the service's own";
        ASSERT_EQ(failures, 0);
        ASSERT_TRUE(television.IsAvailable());
        ASSERT_EQ(KindOf(television.Player().MuteAudio(true)), "success");
    });
}

} // namespace

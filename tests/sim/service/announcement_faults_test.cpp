// SPDX-License-Identifier: MIT
#include "FaultTest.h"

#include <algorithm>

namespace zviptv::test {
namespace {

/// The simulator whose answers to announcements are faulty.
class AnnouncementFaults : public FaultInjection
{
protected:
    /// Unlike Begin(), announces nothing.
    void BeginWith(std::vector<std::string> const& faults)
    {
        std::vector<std::string> options{"--ts", ZVIPTV_SAMPLE_FILE, "--loop"};
        for (std::string const& fault : faults) {
            options.insert(options.end(), {"--fault", fault});
        }
        Start(options);
        m_service = m_watcher.GetNameOwner(Helper);
    }

    WireMessage Announce(std::chrono::milliseconds timeout = patience, std::string const& add = "y")
    {
        return m_application.Peer().Call(
            {Helper, "/org/corvel/zviptvapi/dbushelper", Helper, "SendSignal"},
            Pairs({{"dbusname", m_application.Peer().Name()}, {"type", Subscriber}, {"add", add}}),
            CallOptions{timeout, false});
    }

    /// The result of a subscription, at the service's real name.
    std::string Subscribe()
    {
        return Number(m_application.Peer().Call({m_service, ChannelPath(Subscriber),
                                                 "org.corvel.zviptvapi.DbusCommunication", "Send"},
                                                Entries({{"functionname", "requestPESCB"}, {"on", "1"}})),
                      "result_internal");
    }

    static constexpr char Helper[] = "org.corvel.zviptvapi.dbushelper";
    static constexpr char Subscriber[] = "IPTVDATASUBSCRIBER";

    std::string m_service; ///< unique name
};

TEST_F(AnnouncementFaults, NoAnswer)
{
    BeginWith({"Announcement=drop,count=1"});
    EXPECT_EQ(Announce(std::chrono::milliseconds(300)).errorName, NoReply);
    EXPECT_EQ(Subscribe(), "1") << "the announcement took effect";
    EXPECT_EQ(Announce().pairs, Pairs({{"dbusname", m_service}}));
}

TEST_F(AnnouncementFaults, AnEmptyAnswer)
{
    BeginWith({"Announcement=empty,count=1"});
    EXPECT_EQ(Announce().pairs, Pairs({{"dbusname", ""}}));
    EXPECT_EQ(Announce().pairs, Pairs({{"dbusname", m_service}}));
}

TEST_F(AnnouncementFaults, ADeadName)
{
    BeginWith({"Announcement=dead"});
    WireMessage const answer = Announce();
    EXPECT_EQ(answer.pairs, Pairs({{"dbusname", ":0.1"}}));
    std::vector<std::string> const names = m_watcher.ListNames();
    EXPECT_EQ(std::find(names.begin(), names.end(), ":0.1"), names.end());
}

TEST_F(AnnouncementFaults, AnErrorALateAnswerAndACorruptAnswer)
{
    BeginWith({"Announcement=error,count=1"});
    EXPECT_EQ(Announce().errorName, InjectedError);
    m_simulator.reset();
    ASSERT_TRUE(m_watcher.WaitForOwner(Helper, false));

    BeginWith({"Announcement=delay:300"});
    auto const begin = std::chrono::steady_clock::now();
    EXPECT_EQ(Announce().pairs, Pairs({{"dbusname", m_service}}));
    EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(300));
    m_simulator.reset();
    ASSERT_TRUE(m_watcher.WaitForOwner(Helper, false));

    BeginWith({"Announcement=garbage:dbusname,count=1", "Announcement=missing:dbusname,from=0.5,count=1"});
    EXPECT_EQ(Announce().pairs, Pairs({{"dbusname", "garbage"}}));
    WireMessage late;
    EXPECT_TRUE(m_application.Peer().IsConnected());
    do {
        late = Announce();
        EXPECT_EQ(late.kind, WireKind::Reply);
    } while (late.pairs == Pairs({{"dbusname", m_service}}));
    EXPECT_EQ(late.signature, "a(ss)");
    EXPECT_EQ(late.pairs, WirePairs());
}

TEST_F(AnnouncementFaults, WithoutEffectTheApplicationIsNotKnown)
{
    BeginWith({"Announcement=delay:1,effect=no,count=1"});
    EXPECT_EQ(Announce().pairs, Pairs({{"dbusname", ""}}));
    EXPECT_EQ(Subscribe(), "0");
    EXPECT_EQ(Announce().pairs, Pairs({{"dbusname", m_service}}));
    EXPECT_EQ(Subscribe(), "1");
}

/// The fault also applies to the announcement of an end, and the application still ends.
TEST_F(AnnouncementFaults, AreAppliedToDepartures)
{
    BeginWith({"Announcement=drop,from=0,application=org.example.nobody", "Announcement=empty"});
    Announce();
    EXPECT_EQ(Subscribe(), "1");
    EXPECT_EQ(Announce(patience, "n").pairs, Pairs({{"dbusname", ""}}));
    EXPECT_EQ(Subscribe(), "0");
}

} // namespace
} // namespace zviptv::test

// SPDX-License-Identifier: MIT
#include "FailureText.h"
#include "ProxyKinds.h"
#include "ProxyTest.h"

#include <zviptv/ConnectionHelperDBusClient.h>

#include <cstdlib>

using namespace zviptv::test;

namespace {

constexpr char NoAnnouncementAnswer[] = "no answer to the announcement within 2000 ms; check that the "
                                        "service does not hang and is not overloaded";

/// Why objects cannot be made, connected or destroyed: the same for all of them.
class FactoryFailure : public ServiceTest, public testing::WithParamInterface<ProxyKind>
{
protected:
    static ProxyKind const& Kind() { return GetParam(); }
    static void* Create() { return Kind().create(IPTV_PROFILE_DEFAULT, 0); }
    static bool IsGuide() { return Kind().type == std::string("IPGUTIL"); }
    static std::string CreateName() { return IsGuide() ? "CreateIPGUtil" : Named("Create"); }
    static std::string DestroyName() { return IsGuide() ? "DestroyIPGUtil" : Named("Destroy"); }

private:
    static std::string Named(std::string const& verb)
    {
        bool const isSubscriber = Kind().type == std::string("IPTVDATASUBSCRIBER");
        return verb + (isSubscriber ? "IPTVDataSubscriber" : Kind().name);
    }
};

INSTANTIATE_TEST_SUITE_P(Proxies, FactoryFailure, testing::ValuesIn(AllKinds()), KindName);

TEST_P(FactoryFailure, IsNoneOnSuccess)
{
    void* const object = Create();
    EXPECT_EQ(LastFailure(), NoFailure(CreateName()));
    Create();
    EXPECT_EQ(LastFailure(), NoFailure(CreateName()));
    Kind().request(object);
    EXPECT_EQ(LastFailure(), NoFailure(Kind().method));
    Kind().destroy();
    EXPECT_EQ(LastFailure(), NoFailure(DestroyName()));
    Kind().destroy();
    EXPECT_EQ(LastFailure(), NoFailure(DestroyName()));
}

TEST_P(FactoryFailure, NoServiceRuns)
{
    m_service.Vanish();
    void* const object = Create();
    EXPECT_EQ(object == nullptr, !IsGuide());
    if (IsGuide()) {
        std::string const reason =
            " |  | org.freedesktop.DBus.Error.NameHasNoOwner | the service is not on the bus; start it, then "
            "destroy the object and create it again";
        EXPECT_EQ(LastFailure(), "no service | " + CreateName() + reason);
        EXPECT_FALSE(Kind().call(object));
        EXPECT_EQ(LastFailure(), std::string("no service | ") + Kind().method + reason);
    } else {
        EXPECT_EQ(LastFailure(),
                  "no service | " + CreateName() + " |  |  | no service runs on this bus; start it");
    }
}

TEST_P(FactoryFailure, NoBusCanBeReached)
{
    m_bus.Kill();
    void* const object = Create();
    EXPECT_EQ(object == nullptr, !IsGuide());
    std::string const failure = LastFailure();
    EXPECT_EQ(failure.rfind("no bus | " + CreateName() + " |  |  | ", 0), 0U) << failure;
    EXPECT_NE(failure.find("; start the bus, or set DBUS_SYSTEM_BUS_ADDRESS to one that runs"),
              std::string::npos)
        << failure;
    if (object != nullptr) {
        EXPECT_NE(failure.find("runs, then destroy the object and create it again"), std::string::npos);
        EXPECT_FALSE(Kind().call(object));
        EXPECT_EQ(ZVGetLastFailure().kind, ZV_FAILURE_NO_BUS);
    }
}

TEST_P(FactoryFailure, ServiceReturnsNoEndpoint)
{
    m_service.SetPartnerName("");
    void* const object = Create();
    ASSERT_NE(object, nullptr);
    std::string const reason = std::string(" | dbusname |  | the service has no endpoint for ") + Kind().type;
    EXPECT_EQ(LastFailure(), "no service | " + CreateName() + reason);
    Create();
    EXPECT_EQ(LastFailure(), "no service | " + CreateName() + reason);
    Kind().call(object);
    EXPECT_EQ(LastFailure(), std::string("no service | ") + Kind().method + reason);
}

TEST_P(FactoryFailure, ServiceReturnsAnInvalidBusName)
{
    m_service.SetPartnerName("not a bus name");
    void* const object = Create();
    ASSERT_NE(object, nullptr);
    EXPECT_EQ(LastFailure(), MalformedFailure(CreateName(), "dbusname", "a bus name", "\"not a bus name\""));
    Kind().call(object);
    EXPECT_EQ(LastFailure(), MalformedFailure(Kind().method, "dbusname", "a bus name", "\"not a bus name\""));
}

TEST_P(FactoryFailure, ServiceReturnsAMissingEndpoint)
{
    m_service.SetPartnerName("org.corvel.test.Nobody");
    void* const object = Create();
    ASSERT_NE(object, nullptr);
    Kind().call(object);
    EXPECT_EQ(LastFailure(),
              std::string("no service | ") + Kind().method +
                  " |  |  | the service is not on the bus; start it, then destroy the object and "
                  "create it again");
}

TEST_P(FactoryFailure, AnnouncementIsNotAnswered)
{
    m_service.AnswerAnnouncements([](Announcement const&) { return WireAnswer::Nothing(); });
    void* const object = Create();
    ASSERT_NE(object, nullptr);
    EXPECT_EQ(LastFailure(), "timed out | " + CreateName() + " |  |  | " + NoAnnouncementAnswer);
    Kind().call(object);
    EXPECT_EQ(LastFailure(),
              std::string("timed out | ") + Kind().method + " |  |  | " + NoAnnouncementAnswer);
    Kind().destroy();
    EXPECT_EQ(LastFailure(), "timed out | " + DestroyName() + " |  |  | " + NoAnnouncementAnswer);
}

TEST_P(FactoryFailure, AnnouncementIsAnsweredWithAnotherType)
{
    m_service.AnswerAnnouncements([](Announcement const&) { return WireAnswer(WireEntries{}); });
    std::string const reason =
        " |  |  | the answer to the announcement is malformed: expected the type (a(ss)), got (a{sv})";
    void* const object = Create();
    ASSERT_NE(object, nullptr);
    EXPECT_EQ(LastFailure(), "malformed reply | " + CreateName() + reason);
    Kind().call(object);
    EXPECT_EQ(LastFailure(), std::string("malformed reply | ") + Kind().method + reason);
}

TEST_P(FactoryFailure, AnnouncementIsDenied)
{
    m_service.AnswerAnnouncements([](Announcement const&) {
        return WireAnswer::Error("org.freedesktop.DBus.Error.AccessDenied", "not you");
    });
    Create();
    EXPECT_EQ(LastFailure(),
              "bus error | " + CreateName() + " |  | org.freedesktop.DBus.Error.AccessDenied | not you");
}

TEST_P(FactoryFailure, ServiceLeavesWhileTheObjectLives)
{
    WirePeer observer(m_bus.Address());
    void* const object = Create();
    m_service.Vanish();
    ASSERT_TRUE(observer.WaitForOwner("org.corvel.zviptvapi.dbushelper", false));
    Kind().call(object); // before the loss is handled
    EXPECT_EQ(LastFailure(),
              std::string("no service | ") + Kind().method +
                  " |  | org.freedesktop.DBus.Error.ServiceUnknown | the service is not on the "
                  "bus; start it, then destroy the object and create it again");
    Kind().destroy();
    EXPECT_EQ(ZVGetLastFailure().kind, ZV_FAILURE_NO_SERVICE); // no service received the announcement
}

/// Threads that wait for another thread's attempt get its failure.
TEST_P(FactoryFailure, IsSharedByThreadsOfOneAttempt)
{
    m_service.AnswerAnnouncements([](Announcement const&) { return WireAnswer::Nothing(); });
    std::string const expected = "timed out | " + CreateName() + " |  |  | " + NoAnnouncementAnswer;
    std::vector<std::future<std::string>> threads;
    for (int i = 0; i < 4; ++i) {
        threads.push_back(std::async(std::launch::async, [] {
            Create();
            return LastFailure();
        }));
    }
    for (std::future<std::string>& thread : threads) {
        EXPECT_EQ(thread.get(), expected);
    }
}

TEST_P(FactoryFailure, IsSharedByThreadsOfOneDestroy)
{
    ASSERT_NE(Create(), nullptr);
    m_service.AnswerAnnouncements([](Announcement const&) { return WireAnswer::Nothing(); });
    std::string const expected = "timed out | " + DestroyName() + " |  |  | " + NoAnnouncementAnswer;
    std::vector<std::future<std::string>> threads;
    for (int i = 0; i < 4; ++i) {
        threads.push_back(std::async(std::launch::async, [] {
            Kind().destroy();
            return LastFailure();
        }));
    }
    for (std::future<std::string>& thread : threads) {
        EXPECT_EQ(thread.get(), expected);
    }
    Kind().destroy();
    EXPECT_EQ(LastFailure(), NoFailure(DestroyName())) << "nothing was there to end";
}

/// The endpoint leaves. The service, another process, does not answer the announcement of the object's end.
TEST_F(ServiceTest, DestroySharesTheFailureOfAnEndingObject)
{
    LoopThread loop;
    WirePeer endpoint(m_bus.Address());
    m_service.SetPartnerName(endpoint.Name());
    IPlayerControl* player = nullptr;
    CIPTVServiceAPI::CreatePlayerControl(IPTV_PROFILE_DEFAULT, 0, &player);
    ASSERT_EQ(LastFailure(), NoFailure("CreatePlayerControl"));
    loop.Run([] { CIPTVServiceAPI::CreatePlayerControl(IPTV_PROFILE_DEFAULT, 0, nullptr); });
    m_service.AnswerAnnouncements([](Announcement const&) { return WireAnswer::Nothing(); });
    endpoint.Disconnect();
    ASSERT_TRUE(m_service.WaitForAnnouncement("PLAYERCONTROL", "n"));
    CIPTVServiceAPI::DestroyPlayerControl();
    EXPECT_EQ(LastFailure(), std::string("timed out | DestroyPlayerControl |  |  | ") + NoAnnouncementAnswer);
    std::string callers;
    loop.Run([&callers] { callers = LastFailure(); });
    EXPECT_EQ(callers,
              "invalid argument | CreatePlayerControl |  |  | there is no pointer to store the object in");
}

using FailureWithoutService = ProxyTest;

TEST_F(FailureWithoutService, ReportsAMissingOutputPointer)
{
    CIPTVServiceAPI::CreatePlayerControl(IPTV_PROFILE_DEFAULT, 0, nullptr);
    EXPECT_EQ(LastFailure(),
              "invalid argument | CreatePlayerControl |  |  | there is no pointer to store the "
              "object in");
    CIPTVServiceAPI::CreateConnectionHelper(nullptr);
    EXPECT_EQ(ZVGetLastFailure().kind, ZV_FAILURE_INVALID_ARGUMENT);
}

TEST_F(FailureWithoutService, ReportsThatTheHelperBusIsGone)
{
    IConnectionHelper* helper = nullptr;
    CIPTVServiceAPI::CreateConnectionHelper(&helper);
    EXPECT_EQ(LastFailure(), NoFailure("CreateConnectionHelper"));
    helper->SetDbusSignalCb(nullptr, nullptr);
    EXPECT_EQ(LastFailure(), NoFailure("SetDbusSignalCb"));
    CIPTVServiceAPI::DestroyConnectionHelper();
    EXPECT_EQ(LastFailure(), NoFailure("DestroyConnectionHelper"));
    helper->SetDbusSignalCb(nullptr, nullptr);
    EXPECT_EQ(LastFailure(), GoneFailure("SetDbusSignalCb"));
}

TEST_F(FailureWithoutService, ReportsWhyTheHelperBusDoesNotAnswer)
{
    setenv("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/nonexistent/bus", 1);
    for (int i = 0; i < 2; ++i) { // made, and found
        IConnectionHelper* helper = nullptr;
        CIPTVServiceAPI::CreateConnectionHelper(&helper);
        ASSERT_NE(helper, nullptr);
        EXPECT_EQ(
            LastFailure(),
            "no bus | CreateConnectionHelper |  |  | Could not connect: No such file or directory; start the "
            "bus, or set DBUS_SYSTEM_BUS_ADDRESS to one that runs, then destroy the object and create it "
            "again");
    }
    CIPTVServiceAPI::DestroyConnectionHelper();
}

TEST_F(FailureWithoutService, CheckConnectionReportsWhatIsMissing)
{
    EXPECT_FALSE(CConnectionHelperDBusClient::CheckConnection());
    EXPECT_EQ(LastFailure(), "no service | CheckConnection |  |  | no service runs on this bus; start it");
    {
        FakeService const service;
        EXPECT_TRUE(CConnectionHelperDBusClient::CheckConnection());
        EXPECT_EQ(LastFailure(), NoFailure("CheckConnection"));
    }
    setenv("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/nonexistent/bus", 1);
    EXPECT_FALSE(CConnectionHelperDBusClient::CheckConnection());
    EXPECT_EQ(
        LastFailure(),
        "no bus | CheckConnection |  |  | Failed to connect to socket /nonexistent/bus: No such file or "
        "directory; start the bus, or set DBUS_SYSTEM_BUS_ADDRESS to one that runs");
}

} // namespace

// SPDX-License-Identifier: MIT
#include "HelperFixture.h"

#include <gio/gio.h>

#include <atomic>
#include <future>

using namespace zviptv::test;
using testing::ElementsAre;

namespace {

/// A running server; the test's partner announces to it.
class HelperServer : public LoopedChannelTest
{
protected:
    HelperServer()
    {
        Server().SetDbusSignalCb(Handled::Handle, &m_handled);
        EXPECT_TRUE(m_partner.WaitForOwner(HelperName, true));
    }

    static CConnectionHelperDBusServer& Server() { return *CConnectionHelperDBusServer::Instance(); }

    WireMessage Announce(WireBody const& body) { return m_partner.Call(HelperTarget(), body); }

    Handled m_handled;
    ServerEnd m_end;
};

TEST_F(HelperServer, ConstantsMatchTheProtocol)
{
    EXPECT_STREQ(CConnectionHelperDBusServer::CONNECTION_NAME, "org.corvel.zviptvapi.dbushelper");
    EXPECT_STREQ(CConnectionHelperDBusServer::INTERFACE_XML,
                 "\t\t<node name='/org/corvel/zviptvapi/dbushelper'>\n"
                 "\t\t\t<interface name='org.corvel.zviptvapi.dbushelper'>\n"
                 "\t\t\t\t<method name='SendSignal'>\n"
                 "\t\t\t\t<arg type='a(ss)' name='data' direction='in'/>\n"
                 "\t\t\t\t<arg type='a(ss)' name='response' direction='out'/>\n"
                 "\t\t\t\t</method>\n"
                 "\t\t\t</interface>\n"
                 "\t\t</node>");
    EXPECT_NE(CConnectionHelperDBusServer::m_vtable.method_call, nullptr);
    EXPECT_EQ(CConnectionHelperDBusServer::m_vtable.get_property, nullptr);
    EXPECT_EQ(CConnectionHelperDBusServer::m_vtable.set_property, nullptr);
}

TEST_F(HelperServer, PassesAnnouncementsToTheHandlerAndReturnsItsAnswer)
{
    WireMessage const reply = Announce(Pairs({{"dbusname", ":1.7"}, {"type", "IPGUTIL"}, {"add", "y"}}));
    EXPECT_EQ(reply.kind, WireKind::Reply);
    EXPECT_EQ(reply.signature, "a(ss)");
    EXPECT_EQ(reply.pairs, Pairs({{"dbusname", ":1.42"}}));
    Announce(Pairs({{"dbusname", ":1.7"}, {"type", "IPGUTIL"}, {"add", "n"}}));
    EXPECT_THAT(m_handled.announced,
                ElementsAre(ElementsAre(":1.7", "IPGUTIL", "y"), ElementsAre(":1.7", "IPGUTIL", "n")));
}

TEST_F(HelperServer, LogsEachAnnouncement)
{
    ASSERT_TRUE(WaitUntilLogged(ZV_LOG_DEBUG, "Name acquired: org.corvel.zviptvapi.dbushelper"));
    m_log.Clear();
    Announce(Pairs({{"type", "IPGUTIL"}, {"dbusname", "100%s"}}));
    EXPECT_THAT(LoggedLines(m_log),
                ElementsAre(Info("m_MethodCallback",
                                 "m_MethodCallback sender=" + m_partner.Name() +
                                     " obj_path=/org/corvel/zviptvapi/dbushelper "
                                     "iface_name=org.corvel.zviptvapi.dbushelper method_name=SendSignal"),
                            Info("m_MethodCallback", "Received data : 100%s")));
}

TEST_F(HelperServer, MissingKeysAreEmptyTexts)
{
    Announce(Pairs({{"dbusname", ":1.7"}}));
    Announce(WirePairs());
    Announce(Pairs({{"add", "y"}, {"other", "x"}}));
    EXPECT_THAT(m_handled.announced,
                ElementsAre(ElementsAre(":1.7", "", ""), ElementsAre("", "", ""), ElementsAre("", "", "y")));
}

TEST_F(HelperServer, TheFirstOfEqualKeysIsUsed)
{
    Announce(Pairs({{"dbusname", ""}, {"dbusname", ":1.7"}, {"type", "A"}, {"type", "B"}}));
    EXPECT_THAT(m_handled.announced, ElementsAre(ElementsAre("", "A", "")));
}

TEST_F(HelperServer, WithoutHandlerTheAnswerIsAnEmptyName)
{
    Server().SetDbusSignalCb(nullptr, nullptr);
    EXPECT_EQ(Announce(Pairs({{"dbusname", ":1.7"}, {"type", "IPGUTIL"}, {"add", "y"}})).pairs,
              Pairs({{"dbusname", ""}}));
    EXPECT_THAT(m_handled.announced, ElementsAre());
}

TEST_F(HelperServer, SendsAnEmptyAnswer)
{
    m_handled.answer.clear();
    EXPECT_EQ(Announce(WirePairs()).pairs, Pairs({{"dbusname", ""}}));
}

TEST_F(HelperServer, AnAnswerIsCutAtItsFirstZeroByte)
{
    m_handled.answer = std::string(":1.9\0junk", 9);
    EXPECT_EQ(Announce(WirePairs()).pairs, Pairs({{"dbusname", ":1.9"}}));
}

TEST_F(HelperServer, AnAnswerThatIsNotUtf8IsAnError)
{
    m_handled.answer = "\xff";
    EXPECT_EQ(Announce(WirePairs()).kind, WireKind::Error);
    m_handled.answer = "fine";
    EXPECT_EQ(Announce(WirePairs()).Value("dbusname"), "fine");
}

TEST_F(HelperServer, AnAnswerTooLargeForTheBusIsAnErrorAndTheServerContinues)
{
    m_handled.answer = std::string(33 * 1024 * 1024, 'x');
    EXPECT_EQ(Announce(WirePairs()).kind, WireKind::Error);
    m_handled.answer = "fine";
    EXPECT_EQ(Announce(WirePairs()).Value("dbusname"), "fine");
}

TEST_F(HelperServer, ANewHandlerReplacesTheFormerOne)
{
    Handled second;
    second.answer = "second";
    Server().SetDbusSignalCb(Handled::Handle, &second);
    EXPECT_EQ(Announce(WirePairs()).Value("dbusname"), "second");
    EXPECT_EQ(m_handled.announced.size(), 0U);
    EXPECT_EQ(second.announced.size(), 1U);
}

TEST_F(HelperServer, IgnoresOtherMethodsTypesAndPaths)
{
    WireTarget target = HelperTarget();
    target.member = "Send";
    EXPECT_EQ(m_partner.Call(target, WirePairs()).errorName, "org.freedesktop.DBus.Error.UnknownMethod");
    for (WireBody const& body : {WireBody(), WireBody::Strings({"a"}), WireBody(WireEntries())}) {
        EXPECT_EQ(Announce(body).errorName, "org.freedesktop.DBus.Error.InvalidArgs");
    }
    target = HelperTarget();
    target.path = "/org/corvel/zviptvapi";
    EXPECT_EQ(m_partner.Call(target, WirePairs()).errorName, "org.freedesktop.DBus.Error.UnknownMethod");
    EXPECT_THAT(m_handled.announced, ElementsAre());
}

TEST_F(HelperServer, DestroyFromTheHandlerStillAnswers)
{
    Server().SetDbusSignalCb(
        [](std::string, std::string, std::string, void*) {
            CConnectionHelperDBusServer::Destroy();
            return std::string("last");
        },
        nullptr);
    TestChannel const other; // keeps the connection
    EXPECT_EQ(Announce(WirePairs()).Value("dbusname"), "last");
    EXPECT_TRUE(m_partner.WaitForOwner(HelperName, false));
}

TEST_F(HelperServer, DestroyFromAnotherThreadWaitsForTheHandler)
{
    struct Gate
    {
        std::promise<void> entered;
        std::promise<void> leave;
        std::atomic<bool> left{false};
    } gate;
    Server().SetDbusSignalCb(
        [](std::string, std::string, std::string, void* data) {
            auto& self = *static_cast<Gate*>(data);
            self.entered.set_value();
            self.leave.get_future().wait();
            self.left = true;
            return std::string();
        },
        &gate);
    m_partner.CallWithoutReply(HelperTarget(), WirePairs());
    ASSERT_EQ(gate.entered.get_future().wait_for(patience), std::future_status::ready);
    auto leftBefore = std::async(std::launch::async, [&gate] {
        CConnectionHelperDBusServer::Destroy();
        return gate.left.load();
    });
    gate.leave.set_value();
    EXPECT_TRUE(leftBefore.get());
}

TEST_F(HelperServer, InstanceIsTheSameForAllThreads)
{
    CConnectionHelperDBusServer::Destroy();
    m_log.Clear();
    std::vector<std::future<CConnectionHelperDBusServer*>> instances;
    for (int i = 0; i < 8; ++i) {
        instances.push_back(std::async(std::launch::async, CConnectionHelperDBusServer::Instance));
    }
    CConnectionHelperDBusServer* const first = &Server();
    for (auto& instance : instances) {
        EXPECT_EQ(instance.get(), first);
    }
    EXPECT_EQ(m_log.Count("XML parsed"), 1U);
}

} // namespace

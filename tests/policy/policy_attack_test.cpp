// SPDX-License-Identifier: MIT
#include "FakeService.h"
#include "LoopRunner.h"
#include "PolicyBus.h"
#include "WaitUntil.h"

#include <zviptv/ConnectionHelperDBusClient.h>
#include <zviptv/IPTVServiceAPI.h>

#include <gtest/gtest.h>

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <set>

namespace zviptv::test {

namespace {

using namespace std::chrono_literals;

std::ptrdiff_t OpenFiles()
{
    return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
}

/// A signal's body that passes eight descriptors.
WireBody Descriptors()
{
    return WireBody::Raw([](DBusMessageIter* arguments) {
        int const file = open("/dev/null", O_RDONLY | O_CLOEXEC);
        for (int i = 0; i < 8; ++i) {
            dbus_message_iter_append_basic(arguments, DBUS_TYPE_UNIX_FD, &file);
        }
        close(file);
    });
}

/// An application with a connected object on the stock bus, and the user `nobody`, who sends to every
/// connection that the application has or may have.
class PolicyAttack : public testing::Test
{
protected:
    void SetUp() override
    {
        if (auto const reason = ReasonToSkip(); !reason.empty()) {
            GTEST_SKIP() << reason;
        }
        m_bus = std::make_unique<PolicyBus>();
        // Must precede any change of the user: after it, libdbus no longer reads the environment.
        EXPECT_FALSE(CConnectionHelperDBusClient::CheckConnection());
        m_service = m_bus->Connect(service);
        m_stranger = m_bus->Connect(stranger);
        m_service->SetRecording(false);
        m_service->SetHandler([name = m_service->Name()](WireMessage const& call) {
            return call.signature == "a(ss)" ? WireAnswer(WirePairs{{"dbusname", name}})
                                             : WireAnswer(Entries({{"result_internal", "1"}}));
        });
        ASSERT_TRUE(m_service->OwnName("org.corvel.zviptvapi.dbushelper"));
        CreateAndCall();
    }

    void TearDown() override { CIPTVServiceAPI::DestroyPlayerControl(); }

    /// The application finds the service, in less time than one failing step would take.
    static void CreateAndCall()
    {
        auto const start = std::chrono::steady_clock::now();
        EXPECT_TRUE(CConnectionHelperDBusClient::CheckConnection()); // any user may call it
        PolicyBus::As(application, [] {
            CIPTVServiceAPI::DestroyPlayerControl();
            IPlayerControl* player = nullptr;
            CIPTVServiceAPI::CreatePlayerControl(IPTV_PROFILE_DEFAULT, 0, &player);
            ASSERT_NE(player, nullptr);
            EXPECT_TRUE(player->MuteAudio(true));
        });
        EXPECT_LT(std::chrono::steady_clock::now() - start, 1900ms);
    }

    /// Sends the body `count` times to every connection but the test's own, and has the application look for
    /// the service meanwhile, as it does between two objects.
    void SendToAll(WireBody const& body, int count)
    {
        std::set<std::string> const own{"org.freedesktop.DBus", "org.corvel.zviptvapi.dbushelper",
                                        m_service->Name(), m_stranger->Name()};
        for (int i = 0; i < count; ++i) {
            for (std::string const& name : m_stranger->ListNames()) {
                if (own.count(name) == 0) {
                    m_stranger->Emit({name, "/x", "x.y", "Z"}, body);
                }
            }
            if (i % 10 == 0) {
                m_stranger->Sync();
                CConnectionHelperDBusClient::CheckConnection();
            }
        }
        m_stranger->Sync();
    }

    std::unique_ptr<PolicyBus> m_bus;
    std::unique_ptr<WirePeer> m_service;
    std::unique_ptr<WirePeer> m_stranger;
    LoopThread m_loop;
};

} // namespace

TEST_F(PolicyAttack, AHundredMiBFromAStrangerDoNotDisconnectAnApplication)
{
    SendToAll(WireBody::Strings({std::string(1024 * 1024, 'z')}), 100);
    CreateAndCall();
    CreateAndCall();
}

TEST_F(PolicyAttack, DescriptorsFromAStrangerAreClosed)
{
    std::ptrdiff_t const before = OpenFiles();
    SendToAll(Descriptors(), 200);
    EXPECT_TRUE(WaitUntil([before] { return OpenFiles() <= before; }, patience))
        << OpenFiles() << " open files instead of " << before;
    CreateAndCall();
}

} // namespace zviptv::test

#include "ChildProcess.h"
#include "PolicyBus.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

using testing::AllOf;
using testing::HasSubstr;

namespace zviptv::test {

namespace {

constexpr char const* helperName = "org.corvel.zviptvapi.dbushelper";

/// False if some folder above the program is closed to other users.
bool IsOpenToAll(std::filesystem::path const& program)
{
    for (auto path = program; path.has_relative_path(); path = path.parent_path()) {
        auto const mode = std::filesystem::status(path).permissions();
        if ((mode & std::filesystem::perms::others_exec) == std::filesystem::perms::none)
            return false;
    }
    return true;
}

/// Simulator and command line in processes of different users.
class PolicyToolsTest : public testing::Test
{
protected:
    void SetUp() override
    {
        if (auto const reason = WhyNot(); !reason.empty())
            GTEST_SKIP() << reason;
        for (auto const program : {ZVIPTV_SIM, ZVIPTV_CTL})
            if (!IsOpenToAll(program))
                GTEST_SKIP() << "other users cannot reach " << program;
        m_bus = std::make_unique<PolicyBus>();
    }

    std::unique_ptr<ChildProcess> Run(Account const& account, std::vector<std::string> const& command) const
    {
        std::vector<std::string> words{
            "setpriv",    "--pdeathsig", "KILL",
            "--reuid",    account.name,  "--regid",
            account.name, "--groups",    account.application ? applicationGroup : account.name};
        if (account.name == std::string("nobody"))
            words[6] = words[8] = "nogroup";
        words.insert(words.end(), command.begin(), command.end());
        return std::make_unique<ChildProcess>(
            words, std::map<std::string, std::string>{{"DBUS_SYSTEM_BUS_ADDRESS", m_bus->Address()}});
    }

    std::unique_ptr<ChildProcess> RunSimulator(Account const& account) const
    {
        return Run(account, {ZVIPTV_SIM, "--ts", ZVIPTV_SAMPLE_FILE, "--loop", "--bus", "system"});
    }

    std::unique_ptr<PolicyBus> m_bus;
};

} // namespace

TEST_F(PolicyToolsTest, ApplicationsUseTheServiceAndStrangersAreTurnedAway)
{
    auto const simulator = RunSimulator(service);
    ASSERT_TRUE(m_bus->Connect(application)->WaitForOwner(helperName, true)) << simulator->Errors();

    auto const call = Run(application, {ZVIPTV_CTL, "call", "MuteAudio", "true"});
    EXPECT_EQ(call->Wait(patience), (ExitStatus{0, 0})) << call->Errors();
    auto const pushed = Run(secondApplication, {ZVIPTV_CTL, "pes", "--count", "3"});
    EXPECT_EQ(pushed->Wait(patience), (ExitStatus{0, 0})) << pushed->Errors();
    auto const asRoot = Run(root, {ZVIPTV_CTL, "call", "GetSourceState"});
    EXPECT_EQ(asRoot->Wait(patience), (ExitStatus{0, 0})) << asRoot->Errors();

    auto const refused = Run(stranger, {ZVIPTV_CTL, "call", "MuteAudio", "true"});
    EXPECT_EQ(refused->Wait(patience), (ExitStatus{4, 0})) << refused->Errors();
    EXPECT_THAT(refused->Errors(), AllOf(HasSubstr("AccessDenied"), HasSubstr("policy")));
}

TEST_F(PolicyToolsTest, TheSimulatorSaysThatItMayNotOwnTheName)
{
    auto const simulator = RunSimulator(stranger);
    EXPECT_EQ(simulator->Wait(patience), (ExitStatus{1, 0}));
    EXPECT_THAT(simulator->Errors(), AllOf(HasSubstr(helperName), HasSubstr("policy")));
}

} // namespace zviptv::test

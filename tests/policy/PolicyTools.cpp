// SPDX-License-Identifier: MIT
#include "PolicyTools.h"

#include <filesystem>
#include <map>

namespace zviptv::test {

namespace {

/// False if other users cannot enter a folder above the program.
bool IsOpenToAll(std::filesystem::path const& program)
{
    for (auto path = program; path.has_relative_path(); path = path.parent_path()) {
        auto const mode = std::filesystem::status(path).permissions();
        if ((mode & std::filesystem::perms::others_exec) == std::filesystem::perms::none) {
            return false;
        }
    }
    return true;
}

} // namespace

Credentials CredentialsOf(Account const& account)
{
    std::string const own = account.name == std::string("nobody") ? "nogroup" : account.name;
    return {account.name, own, account.application ? ApplicationGroup : own};
}

void PolicyToolsTest::SetUp()
{
    if (auto const reason = ReasonToSkip(); !reason.empty()) {
        GTEST_SKIP() << reason;
    }
    for (auto const program : {ZVIPTV_SIM, ZVIPTV_CTL, ZVIPTV_PYTHON_SERVICE}) {
        if (!IsOpenToAll(program)) {
            GTEST_SKIP() << "other users cannot reach " << program;
        }
    }
    m_bus = std::make_unique<PolicyBus>();
}

std::unique_ptr<ChildProcess> PolicyToolsTest::RunAs(std::string const& address,
                                                     Credentials const& credentials,
                                                     std::vector<std::string> const& command)
{
    std::vector<std::string> words{"setpriv",         "--pdeathsig",    "KILL",
                                   "--reuid",         credentials.user, "--regid",
                                   credentials.group, "--groups",       credentials.groups};
    words.insert(words.end(), command.begin(), command.end());
    return std::make_unique<ChildProcess>(
        words, std::map<std::string, std::string>{{"DBUS_SYSTEM_BUS_ADDRESS", address}});
}

std::unique_ptr<ChildProcess> PolicyToolsTest::RunSimulator(std::string const& address,
                                                            Account const& account)
{
    return RunAs(address, CredentialsOf(account),
                 {ZVIPTV_SIM, "--ts", ZVIPTV_SAMPLE_FILE, "--loop", "--bus", "system"});
}

} // namespace zviptv::test

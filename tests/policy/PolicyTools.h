// SPDX-License-Identifier: MIT
#pragma once

#include "ChildProcess.h"
#include "PolicyBus.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace zviptv::test {

/// The user and groups of a process, regardless of the user database.
struct Credentials
{
    std::string user;
    std::string group;
    std::string groups; ///< supplementary ones
};

Credentials CredentialsOf(Account const& account);

/// Simulator and command line in processes of different users.
class PolicyToolsTest : public testing::Test
{
protected:
    void SetUp() override;

    static std::unique_ptr<ChildProcess> RunAs(std::string const& address, Credentials const& credentials,
                                               std::vector<std::string> const& command);

    std::unique_ptr<ChildProcess> Run(Account const& account, std::vector<std::string> const& command) const
    {
        return RunAs(m_bus->Address(), CredentialsOf(account), command);
    }

    static std::unique_ptr<ChildProcess> RunSimulator(std::string const& address, Account const& account);

    std::unique_ptr<PolicyBus> m_bus;
};

} // namespace zviptv::test

// SPDX-License-Identifier: MIT
#pragma once

#include "PrivateBus.h"
#include "WirePeer.h"

#include <functional>
#include <memory>
#include <string>

namespace zviptv::test {

/// Accounts that every Debian has, in the roles of the policy's own.
struct Account
{
    char const* name;
    /// Whether it is in the group of applications.
    bool application;
};

constexpr Account service{"daemon", false};
constexpr Account application{"man", true};
constexpr Account secondApplication{"mail", true};
constexpr Account stranger{"nobody", false};
constexpr Account root{"root", false};

/// The group that stands for the group of applications.
constexpr char const* applicationGroup = "games";

/// A bus with the stock system configuration and the policy file of this project, whose account names are
/// replaced by the ones above. Needs root.
class PolicyBus
{
public:
    /// `more` is put behind the policy.
    explicit PolicyBus(std::string const& more = {}, char const* serviceUser = service.name);

    std::string const& Address() const { return m_bus.Address(); }
    std::string const& Directory() const { return m_bus.Directory(); }
    /// A connection whose credentials, as the kernel tells them to the daemon, are the account's.
    std::unique_ptr<WirePeer> Connect(Account const& account) const;
    /// Does `work` with the account's effective ids.
    static void As(Account const& account, std::function<void()> const& work);

private:
    PrivateBus m_bus;
};

/// Empty where these tests can run, else the reason why not.
std::string WhyNot();

} // namespace zviptv::test

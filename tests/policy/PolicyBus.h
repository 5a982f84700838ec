// SPDX-License-Identifier: MIT
#pragma once

#include "PrivateBus.h"
#include "WirePeer.h"

#include <functional>
#include <memory>
#include <string>

namespace zviptv::test {

constexpr char const* HelperName = "org.corvel.zviptvapi.dbushelper";
constexpr char const* ChannelInterface = "org.corvel.zviptvapi.DbusCommunication";
constexpr char const* PlayerChannelPath = "/org/corvel/zviptvapi/DbusCommunication/PLAYERCONTROL";

/// Accounts of every Debian, in the roles of the policy's accounts.
struct Account
{
    char const* name;
    /// Whether the account is in the group of applications.
    bool application;
};

constexpr Account service{"daemon", false};
constexpr Account application{"man", true};
constexpr Account SecondApplication{"mail", true};
constexpr Account stranger{"nobody", false};
constexpr Account root{"root", false};

/// Replaces the group of applications.
constexpr char const* ApplicationGroup = "games";

/// A bus with the stock system configuration and the policy file of this project, whose account names are
/// replaced by the ones above. Needs root.
class PolicyBus
{
public:
    /// `more` is appended to the policy.
    explicit PolicyBus(std::string const& more = {}, char const* ServiceUser = service.name);

    std::string const& Address() const { return m_bus.Address(); }
    std::string const& Directory() const { return m_bus.Directory(); }
    /// A connection for which the kernel reports the credentials of the account to the daemon.
    std::unique_ptr<WirePeer> Connect(Account const& account) const;
    /// Runs `work` with the effective ids of the account.
    static void As(Account const& account, std::function<void()> const& work);

private:
    PrivateBus m_bus;
};

/// The reason why these tests cannot run; empty if they can.
std::string ReasonToSkip();

} // namespace zviptv::test

// SPDX-License-Identifier: MIT
#include "PolicyBus.h"

#include "Files.h"

#include <grp.h>
#include <pwd.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <filesystem>
#include <stdexcept>
#include <system_error>

namespace zviptv::test {

namespace {

constexpr char const* StockConfiguration = "/usr/share/dbus-1/system.conf";

void Check(int result, char const* what)
{
    if (result != 0) {
        throw std::system_error(errno, std::generic_category(), what);
    }
}

std::string Replaced(std::string text, std::string const& what, std::string const& by)
{
    auto at = text.find(what);
    if (at == std::string::npos) {
        throw std::runtime_error("the policy does not say " + what);
    }
    for (; at != std::string::npos; at = text.find(what, at + by.size())) {
        text.replace(at, what.size(), by);
    }
    return text;
}

/// The contents of <busconfig>.
std::string Policies(char const* ServiceUser)
{
    std::string const file = ReadFile(ZVIPTV_POLICY_FILE);
    std::string const begin = "<busconfig>";
    auto const from = file.find(begin) + begin.size();
    std::string const policies = file.substr(from, file.find("</busconfig>") - from);
    return Replaced(Replaced(policies, "user=\"zviptv\"", "user=\"" + std::string(ServiceUser) + "\""),
                    "group=\"zviptv-apps\"", "group=\"" + std::string(ApplicationGroup) + "\"");
}

/// Gives the calling process another account's effective ids during the life of the object.
class ActingAs
{
public:
    explicit ActingAs(Account const& account)
    {
        passwd const* const user = getpwnam(account.name);
        group const* const applications = getgrnam(ApplicationGroup);
        if (user == nullptr || applications == nullptr) {
            throw std::runtime_error(std::string("no such account: ") + account.name);
        }
        std::array<gid_t, 2> const groups{user->pw_gid, applications->gr_gid};
        Check(setgroups(account.application ? 2 : 1, groups.data()), "setgroups");
        Check(setegid(user->pw_gid), "setegid");
        Check(seteuid(user->pw_uid), "seteuid");
    }

    ~ActingAs()
    {
        gid_t const none = 0;
        if (seteuid(0) != 0 || setegid(0) != 0 || setgroups(1, &none) != 0) {
            std::abort(); // later tests would run as the wrong user
        }
    }

    ActingAs(ActingAs const&) = delete;
    ActingAs& operator=(ActingAs const&) = delete;
};

} // namespace

PolicyBus::PolicyBus(std::string const& more, char const* ServiceUser)
    : m_bus([&] {
          BusOptions options;
          options.openPolicy = false;
          options.baseConfig = StockConfiguration;
          options.extraConfig = Policies(ServiceUser) + more;
          return options;
      }())
{
    // Other users must be able to reach the socket.
    std::filesystem::permissions(m_bus.Directory(), std::filesystem::perms(0711));
}

std::unique_ptr<WirePeer> PolicyBus::Connect(Account const& account) const
{
    ActingAs const acting(account);
    return std::make_unique<WirePeer>(Address());
}

void PolicyBus::As(Account const& account, std::function<void()> const& work)
{
    ActingAs const acting(account);
    work();
}

std::string ReasonToSkip()
{
    if (getuid() != 0) {
        return "connecting as different users needs root";
    }
    if (!std::filesystem::exists(StockConfiguration)) {
        return std::string("no stock configuration of the system bus at ") + StockConfiguration;
    }
    return {};
}

} // namespace zviptv::test

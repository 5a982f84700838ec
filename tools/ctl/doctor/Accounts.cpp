// SPDX-License-Identifier: MIT
#include "doctor/Accounts.h"

#include <algorithm>

#include <grp.h>
#include <pwd.h>
#include <unistd.h>

namespace zviptv::ctl::doctor {

namespace {

/// The supplementary groups of this process, and its effective group.
std::vector<gid_t> OwnGroups()
{
    std::vector<gid_t> groups(static_cast<std::size_t>(std::max(getgroups(0, nullptr), 0)));
    int const count = getgroups(static_cast<int>(groups.size()), groups.data());
    groups.resize(static_cast<std::size_t>(std::max(count, 0)));
    groups.push_back(getegid());
    return groups;
}

/// The groups that a new login would get.
std::vector<gid_t> ListedGroups(passwd const& user)
{
    int count = 64;
    std::vector<gid_t> groups(static_cast<std::size_t>(count));
    if (getgrouplist(user.pw_name, user.pw_gid, groups.data(), &count) < 0) {
        groups.resize(static_cast<std::size_t>(count));
        static_cast<void>(getgrouplist(user.pw_name, user.pw_gid, groups.data(), &count));
    }
    groups.resize(static_cast<std::size_t>(count));
    return groups;
}

bool Has(std::vector<gid_t> const& groups, gid_t group)
{
    return std::find(groups.begin(), groups.end(), group) != groups.end();
}

} // namespace

std::string UserName(unsigned id)
{
    passwd const* const user = getpwuid(id);
    return user == nullptr ? std::to_string(id) : user->pw_name;
}

AccountFacts LookUpAccounts(Names const& names)
{
    AccountFacts accounts;
    accounts.names = names;
    if (passwd const* const user = getpwnam(names.user.c_str())) {
        accounts.userId = user->pw_uid;
    }
    accounts.hasGroup = getgrnam(names.group.c_str()) != nullptr;
    return accounts;
}

CallerFacts LookUpCaller(AccountFacts const& accounts)
{
    CallerFacts caller;
    uid_t const self = geteuid(); // the user that the bus sees
    caller.name = UserName(self);
    caller.isRoot = self == 0;
    caller.isServiceUser = accounts.userId == self;
    if (group const* const found = getgrnam(accounts.names.group.c_str())) {
        gid_t const group = found->gr_gid;
        caller.isMember = Has(OwnGroups(), group);
        passwd const* const user = getpwuid(self);
        caller.isListed = user != nullptr && Has(ListedGroups(*user), group);
    }
    return caller;
}

} // namespace zviptv::ctl::doctor

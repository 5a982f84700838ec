// SPDX-License-Identifier: MIT
#include "doctor/JudgePolicy.h"

namespace zviptv::ctl::doctor {

namespace {

std::string Files(Facts const& facts)
{
    std::string text;
    for (std::string const& file : facts.policy.files) {
        text += (text.empty() ? "" : ", ") + file;
    }
    return text;
}

std::vector<std::string> MakeAccounts(Facts const& facts)
{
    std::vector<std::string> commands;
    Names const& names = facts.accounts.names;
    Names const own;
    if (facts.machine.hasSysusers && names.user == own.user && names.group == own.group) {
        commands.push_back(AsRoot(facts, "systemd-sysusers"));
    } else {
        if (!facts.accounts.userId) {
            commands.push_back(AsRoot(facts, "adduser --system --group " + Quoted(names.user)));
        }
        if (!facts.accounts.hasGroup) {
            commands.push_back(AsRoot(facts, "addgroup --system " + Quoted(names.group)));
        }
    }
    commands.push_back(ReloadBus(facts));
    return commands;
}

Finding NotLoaded(Facts const& facts)
{
    constexpr char Meaning[] = "Nobody may run the service on this bus, and nobody may call it.";
    if (!facts.policy.files.empty()) {
        return Wrong("policy", ExitCode::NoAnswer, "the bus has not loaded " + Files(facts), Meaning,
                     {ReloadBus(facts)}, OtherNames);
    }
    return Wrong("policy", ExitCode::NoAnswer,
                 "the bus has loaded no policy for the service, and none is installed", Meaning,
                 {AsRoot(facts, "apt-get install libzv-iptv-service-api1")},
                 "From the source's folder: ./run package, then " +
                     AsRoot(facts, "apt-get install ./build/packages/*.deb"));
}

} // namespace

Finding JudgeAccounts(Facts const& facts)
{
    if (auto const finding = PolicyNotApplicable(facts, "accounts")) {
        return *finding;
    }
    Names const& names = facts.accounts.names;
    std::string const user = "user " + names.user;
    std::string const group = "group " + names.group;
    if (facts.accounts.userId && facts.accounts.hasGroup) {
        return Ok("accounts", user + " and " + group + " exist");
    }
    std::string const missing = facts.accounts.userId     ? group
                                : facts.accounts.hasGroup ? user
                                                          : user + " and no " + group;
    return Wrong("accounts", ExitCode::NoAnswer, "there is no " + missing,
                 "The bus ignores its policy's rules for them, and refuses the service or its applications.",
                 MakeAccounts(facts), OtherNames);
}

Finding JudgePolicy(Facts const& facts)
{
    if (auto const finding = PolicyNotApplicable(facts, "policy")) {
        return *finding;
    }
    PolicyFacts const& policy = facts.policy;
    Names const& names = facts.accounts.names;
    if (!policy.isLoaded) {
        return Unknown("policy", "the bus does not report whether it is loaded");
    }
    if (!*policy.isLoaded) {
        return IsLetThrough(facts)
                   ? Ok("policy", "the packages' policy is not loaded, but another policy lets user " +
                                      facts.caller.name + " call the service")
                   : NotLoaded(facts);
    }
    if (policy.isServiceAllowed && !*policy.isServiceAllowed) {
        return Wrong("policy", ExitCode::NoAnswer,
                     "the bus has loaded the policy, but not for user " + names.user,
                     "The bus does not let the service own its name. The user was created after the bus read "
                     "the policy.",
                     {ReloadBus(facts)}, OtherNames);
    }
    bool const mayCall = facts.caller.isRoot || facts.caller.isMember;
    if (facts.service.outcome == Outcome::Forbidden && mayCall) {
        std::string const who =
            facts.caller.isRoot ? "root" : "user " + facts.caller.name + " of the group " + names.group;
        return Wrong(
            "policy", ExitCode::NoAnswer,
            "the bus has loaded the policy, but does not let " + who + " call the service",
            "An application gets no answer: " + facts.service.error, {ReloadBus(facts)},
            "The group may have been created after the bus read the policy. If this does not help, another "
            "policy in /etc/dbus-1/system.d forbids it.");
    }
    return Ok("policy", "loaded" + (policy.files.empty() ? "" : " (" + Files(facts) + ")"));
}

Finding JudgeGroup(Facts const& facts)
{
    constexpr char Meaning[] = "The bus refuses every call that an application of this user makes.";
    if (auto const finding = PolicyNotApplicable(facts, "group")) {
        return *finding;
    }
    CallerFacts const& caller = facts.caller;
    std::string const& group = facts.accounts.names.group;
    std::string const user = "user " + caller.name;
    if (caller.isRoot) {
        return Ok("group", "root needs no group");
    }
    if (caller.isMember) {
        return Ok("group", user + " belongs to the group " + group);
    }
    if (IsLetThrough(facts)) {
        return Ok("group", "not needed: the bus lets " + user + " call the service");
    }
    if (caller.isServiceUser) {
        return NotChecked("group", user + " runs the service, not applications");
    }
    if (!facts.accounts.hasGroup) {
        return NotChecked("group", "there is no group " + group);
    }
    if (caller.isListed) {
        return Wrong("group", ExitCode::NoAnswer,
                     user + " was added to the group " + group + " after this process's login", Meaning,
                     {"newgrp " + Quoted(group)},
                     "This applies to one shell only. For all programs, log out and in again.");
    }
    return Wrong(
        "group", ExitCode::NoAnswer, user + " does not belong to the group " + group, Meaning,
        {AsRoot(facts, "adduser " + Quoted(caller.name) + " " + Quoted(group)), "newgrp " + Quoted(group)},
        "The second command applies to one shell only. For all programs, log out and in again.");
}

} // namespace zviptv::ctl::doctor

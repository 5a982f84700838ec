// SPDX-License-Identifier: MIT
#include "doctor/JudgeService.h"

namespace zviptv::ctl::doctor {

namespace {

constexpr char Name[] = "org.corvel.zviptvapi.dbushelper";

std::string Owner(Facts const& facts)
{
    std::string const process = ProcessText(facts.service);
    return facts.service.owner + (process.empty() ? "" : ", " + process);
}

/// The finding for a service that does not answer applications.
constexpr char NoAnswer[] = "An application waits 2 seconds for an answer; then its calls return false.";

Finding ServiceSilent(Facts const& facts)
{
    ServiceFacts const& service = facts.service;
    std::string const process =
        service.process == 0 ? "the process of " + service.owner : ProcessText(service);
    if (service.isStopped) {
        return Wrong("main loop", ExitCode::NoAnswer, process + " is stopped", NoAnswer,
                     {ContinueService(facts)});
    }
    if (service.isConnectionAlive) {
        return Wrong("main loop", ExitCode::NoAnswer,
                     process + " answers a ping, but does not answer applications within 2 seconds", NoAnswer,
                     RestartService(facts),
                     "In a service with GLib, the main loop is blocked: another thread answers pings.");
    }
    return Wrong("main loop", ExitCode::NoAnswer,
                 process + " does not answer within 2 seconds, not even a ping", NoAnswer,
                 RestartService(facts));
}

} // namespace

Finding JudgeService(Facts const& facts)
{
    if (facts.bus.reach != Reach::Reached || !facts.service.isOwned) {
        return *NoOwner(facts, "service");
    }
    if (*facts.service.isOwned) {
        return Ok("service", std::string(Name) + " is " + Owner(facts));
    }
    return Wrong("service", ExitCode::NoService, std::string("nobody owns the name ") + Name,
                 "An application finds no service and gets null instead of objects.", StartService(facts));
}

Finding JudgeOwner(Facts const& facts)
{
    if (auto const finding = NoOwner(facts, "owner")) {
        return *finding;
    }
    ServiceFacts const& service = facts.service;
    Names const& names = facts.accounts.names;
    if (!service.userId) {
        return Unknown("owner", "the bus does not report which user runs the service");
    }
    if (!facts.policy.deniesByDefault) {
        return Unknown("owner",
                       "user " + service.userName + "; the bus does not report whether it needs a policy");
    }
    if (!*facts.policy.deniesByDefault) {
        return Ok("owner", "user " + service.userName + "; on this bus any user may run the service");
    }
    if (!facts.accounts.userId) {
        return NotChecked("owner", "there is no user " + names.user);
    }
    if (*service.userId != *facts.accounts.userId) {
        Fix const fix = ChangeServiceUser(facts);
        return Wrong("owner", ExitCode::NoAnswer,
                     "the service runs as user " + service.userName + ", not as " + names.user,
                     "The policy lets only " + names.user +
                         " push data: packets and captions do not arrive, even if calls succeed.",
                     fix.commands, fix.note + " " + OtherNames);
    }
    return Ok("owner", "user " + service.userName);
}

Finding JudgeLoop(Facts const& facts)
{
    constexpr char Check[] = "main loop";
    if (auto const finding = NoOwner(facts, Check)) {
        return *finding;
    }
    switch (facts.service.outcome) {
    case Outcome::Answered:
    case Outcome::Unreadable:
        return Ok(Check, "the service answers");
    case Outcome::Silent:
        return ServiceSilent(facts);
    case Outcome::Gone:
        return Wrong(Check, ExitCode::NoService, "the service left the bus when it was called",
                     "An application's call returns false, and its objects are gone.",
                     StartServiceAgain(facts));
    case Outcome::Failed:
        return Unknown(Check, "the service answered with an error, which does not show whether it works");
    case Outcome::Forbidden:
        return facts.caller.isServiceUser
                   ? NotChecked(Check,
                                "the bus does not let the service's user call it; run the command as root")
                   : NotChecked(Check,
                                "the bus does not let user " + facts.caller.name + " call the service");
    case Outcome::NotAsked:
        break;
    }
    return NotChecked(Check, "the service was not called");
}

} // namespace zviptv::ctl::doctor

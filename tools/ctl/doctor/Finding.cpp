// SPDX-License-Identifier: MIT
#include "doctor/Finding.h"

#include <utility>

namespace zviptv::ctl::doctor {

Finding Ok(char const* check, std::string const& text)
{
    return {check, State::Ok, text, {}, {}, {}, ExitCode::Accepted};
}

Finding Unknown(char const* check, std::string const& why)
{
    return {check, State::Unknown, why, {}, {}, {}, ExitCode::Accepted};
}

Finding NotChecked(char const* check, std::string const& why)
{
    return Unknown(check, "not checked: " + why);
}

Finding Wrong(char const* check, ExitCode code, std::string const& text, std::string const& meaning,
              std::vector<std::string> commands, std::string const& note)
{
    return {check, State::Wrong, text, meaning, std::move(commands), note, code};
}

Finding Wrong(char const* check, ExitCode code, std::string const& text, std::string const& meaning,
              Fix const& fix, std::string const& note)
{
    char const* const between = note.empty() || fix.note.empty() ? "" : " ";
    return Wrong(check, code, text, meaning, fix.commands, note + between + fix.note);
}

bool IsLetThrough(Facts const& facts)
{
    Outcome const outcome = facts.service.outcome;
    return outcome == Outcome::Answered || outcome == Outcome::Unreadable || outcome == Outcome::Failed ||
           outcome == Outcome::Silent;
}

std::optional<Finding> PolicyNotApplicable(Facts const& facts, char const* check)
{
    if (facts.bus.reach != Reach::Reached) {
        return NotChecked(check, "there is no connection to a bus");
    }
    if (!facts.policy.deniesByDefault) {
        return Unknown(check, "the bus does not report whether it needs a policy");
    }
    if (!*facts.policy.deniesByDefault) {
        return Ok(check, "not needed: this bus lets everybody call everybody");
    }
    return std::nullopt;
}

std::optional<Finding> NoOwner(Facts const& facts, char const* check)
{
    if (facts.bus.reach != Reach::Reached) {
        return NotChecked(check, "there is no connection to a bus");
    }
    if (!facts.service.isOwned) {
        return Unknown(check, "the bus does not report whether there is a service");
    }
    if (!*facts.service.isOwned) {
        return NotChecked(check, "there is no service");
    }
    return std::nullopt;
}

} // namespace zviptv::ctl::doctor

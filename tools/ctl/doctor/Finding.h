#pragma once

#include "doctor/Facts.h"
#include "session/ExitCode.h"

#include <string>
#include <vector>

namespace zviptv::ctl::doctor {

enum class State
{
    Ok,
    Wrong,
    Unknown ///< not looked at, since something else is wrong, or not told
};

/// One line of the report, and what is below it.
struct Finding
{
    std::string check; ///< "bus"
    State state = State::Ok;
    std::string text;

    // Of what is wrong.
    std::string meaning;               ///< for an application
    std::vector<std::string> commands; ///< that mend it, in this order
    std::string note;                  ///< what else to do, or to do instead
    ExitCode code = ExitCode::Accepted;
};

/// One finding a check, in the order in which they depend on each other.
std::vector<Finding> Judge(Facts const& facts);

// The checks, in this order.
Finding JudgeBus(Facts const& facts);
Finding JudgeAccounts(Facts const& facts);
Finding JudgePolicy(Facts const& facts);
Finding JudgeGroup(Facts const& facts);
Finding JudgeService(Facts const& facts);
Finding JudgeOwner(Facts const& facts);
Finding JudgeLoop(Facts const& facts);
Finding JudgeProtocol(Facts const& facts);
Finding JudgeVersion(Facts const& facts);

} // namespace zviptv::ctl::doctor

// SPDX-License-Identifier: MIT
#pragma once

#include "Failure.h"
#include "Print.h"

#include <json/value.h>

#include <ostream>
#include <string>
#include <vector>

namespace zviptv::ctl {

/// The answer of a command: the same facts as lines of text and as members of one JSON object.
struct Answer
{
    bool result = true;
    std::string text;
    Json::Value json = Json::Value(Json::objectValue);
    std::string warning;           ///< for standard error
    std::vector<Failure> failures; ///< of calls that failed without ending the command

    template <typename Value>
    void Add(std::string const& name, Value const& value)
    {
        AddLines(text, name, value);
        AddMember(json, name, value);
    }

    ExitCode Code() const;
};

/// The text on one line, without control characters, also at its end.
std::string Compact(Json::Value const& json);

/// The members of the answer with "result", which is false after failures, and "error".
Json::Value JsonOf(Answer const& answer);

/// The members for a command that failed: "result" false, and the message under "error".
Json::Value JsonOfError(std::string const& message);

/// The text, or the JSON object with "result" on one line, which is false after failures, and "error".
void Print(std::ostream& out, Answer const& answer, bool asJson);

/// The JSON object of a command that failed: "result" false, and the message under "error".
void PrintError(std::ostream& out, std::string const& message);

} // namespace zviptv::ctl

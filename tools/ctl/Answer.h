#pragma once

#include "ExitCode.h"
#include "Print.h"

#include <json/value.h>

#include <ostream>
#include <string>

namespace zviptv::ctl {

/// What a command has to say: the same facts as lines of text and as members of one JSON object.
struct Answer
{
    bool result = true;
    std::string text;
    Json::Value json = Json::Value(Json::objectValue);
    std::string warning; ///< for standard error

    template <typename Value>
    void Add(std::string const& name, Value const& value)
    {
        AddLines(text, name, value);
        AddMember(json, name, value);
    }

    ExitCode Code() const { return result ? ExitCode::Accepted : ExitCode::Refused; }
};

/// One line, without trailing line break.
std::string Compact(Json::Value const& json);

/// The text, or the JSON object with "result" on one line.
void Print(std::ostream& out, Answer const& answer, bool asJson);

/// The JSON object of a command that failed: "result" false, and the message under "error".
void PrintError(std::ostream& out, std::string const& message);

} // namespace zviptv::ctl

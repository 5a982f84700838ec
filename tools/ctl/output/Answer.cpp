// SPDX-License-Identifier: MIT
#include "Answer.h"

#include <json/writer.h>

namespace zviptv::ctl {

std::string Compact(Json::Value const& json)
{
    Json::StreamWriterBuilder builder;
    builder["indentation"] = "";
    builder["emitUTF8"] = true;
    return Json::writeString(builder, json);
}

ExitCode Answer::Code() const
{
    return !failures.empty() ? failures.front().Code() : result ? ExitCode::Accepted : ExitCode::Refused;
}

void Print(std::ostream& out, Answer const& answer, bool asJson)
{
    if (!asJson) {
        out << answer.text;
        return;
    }
    Json::Value json = answer.json;
    json["result"] = answer.Code() == ExitCode::Accepted;
    for (Failure const& failure : answer.failures) {
        std::string const former = json["error"].asString();
        json["error"] = ToJson((former.empty() ? "" : former + "; ") + failure.what());
    }
    out << Compact(json) << '\n';
}

void PrintError(std::ostream& out, std::string const& message)
{
    Json::Value json(Json::objectValue);
    json["result"] = false;
    json["error"] = ToJson(message);
    out << Compact(json) << '\n';
}

} // namespace zviptv::ctl

// SPDX-License-Identifier: MIT
#include "Answer.h"

#include <json/writer.h>

namespace zviptv::ctl {

namespace {

/// JsonCpp writes delete and U+0080 to U+009F unescaped, and terminals interpret them.
std::string EscapeControls(std::string const& json)
{
    std::string escaped;
    for (std::string_view rest = json; !rest.empty(); rest.remove_prefix(1)) {
        bool const isLate =
            rest.size() > 1 && rest[0] == '\xC2' && static_cast<unsigned char>(rest[1]) < 0xA0;
        if (isLate) {
            rest.remove_prefix(1); // whose second byte is the character's number
        }
        auto const code = static_cast<unsigned char>(rest[0]);
        escaped += isLate || code == 0x7F ? "\\u" + ToHex(code, 4).substr(2) : std::string(1, rest[0]);
    }
    return escaped;
}

} // namespace

std::string Compact(Json::Value const& json)
{
    Json::StreamWriterBuilder builder;
    builder["indentation"] = "";
    builder["emitUTF8"] = true;
    return EscapeControls(Json::writeString(builder, json));
}

ExitCode Answer::Code() const
{
    return !failures.empty() ? failures.front().Code() : result ? ExitCode::Accepted : ExitCode::Refused;
}

Json::Value JsonOf(Answer const& answer)
{
    Json::Value json = answer.json;
    json["result"] = answer.Code() == ExitCode::Accepted;
    for (Failure const& failure : answer.failures) {
        std::string const former = json["error"].asString();
        json["error"] = ToJson((former.empty() ? "" : former + "; ") + failure.what());
    }
    return json;
}

Json::Value JsonOfError(std::string const& message)
{
    Json::Value json(Json::objectValue);
    json["result"] = false;
    json["error"] = ToJson(message);
    return json;
}

void Print(std::ostream& out, Answer const& answer, bool asJson)
{
    out << (asJson ? Compact(JsonOf(answer)) + "\n" : answer.text);
}

void PrintError(std::ostream& out, std::string const& message)
{
    out << Compact(JsonOfError(message)) << '\n';
}

} // namespace zviptv::ctl

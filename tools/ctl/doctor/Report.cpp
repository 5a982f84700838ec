// SPDX-License-Identifier: MIT
#include "doctor/Report.h"

#include "common/PrintableText.h"
#include "output/Print.h"

#include <algorithm>

namespace zviptv::ctl::doctor {

namespace {

char const* Word(State state)
{
    return state == State::Ok ? "ok" : state == State::Wrong ? "wrong" : "unknown";
}

std::string Padded(std::string text, std::size_t width)
{
    text.resize(std::max(text.size() + 1, width), ' ');
    return text;
}

std::string Line(Finding const& finding)
{
    return Padded(Word(finding.state), 9) + Padded(finding.check, 11) + EscapeText(finding.text) + "\n";
}

/// Commands are on separate lines, so that they can be copied. There may be a note without commands.
std::string Below(Finding const& finding)
{
    std::string text =
        "    " + EscapeText(finding.meaning) + (finding.commands.empty() ? "\n" : " To fix it:\n");
    for (std::string const& command : finding.commands) {
        text += "        " + command + "\n";
    }
    return text + (finding.note.empty() ? "" : "    " + EscapeText(finding.note) + "\n");
}

/// "group, service"
std::string Checks(std::vector<Finding> const& findings, State state)
{
    std::string names;
    for (Finding const& finding : findings) {
        if (finding.state == state) {
            names += (names.empty() ? "" : ", ") + finding.check;
        }
    }
    return names;
}

std::string Summary(std::vector<Finding> const& findings)
{
    std::string const unknown = Checks(findings, State::Unknown);
    auto const wrong = std::count_if(findings.begin(), findings.end(),
                                     [](Finding const& finding) { return finding.state == State::Wrong; });
    if (wrong == 0) {
        return unknown.empty() ? "nothing is wrong" : "no problem was found; unknown: " + unknown;
    }
    std::string const names = Checks(findings, State::Wrong);
    return wrong == 1 ? "wrong: " + names
                      : std::to_string(wrong) + " things are wrong: " + names + "; fix the first one first";
}

Json::Value TextOrNull(std::string const& text)
{
    return text.empty() ? Json::Value() : ToJson(text);
}

} // namespace

std::string TextOf(std::vector<Finding> const& findings)
{
    std::string text;
    for (Finding const& finding : findings) {
        text += Line(finding) + (finding.state == State::Wrong ? Below(finding) : "");
    }
    return text + Summary(findings) + "\n";
}

Json::Value JsonOf(std::vector<Finding> const& findings)
{
    Json::Value json(Json::objectValue);
    json["result"] = CodeOf(findings) == ExitCode::Accepted;
    json["summary"] = Summary(findings);
    json["checks"] = Json::Value(Json::arrayValue);
    std::string error;
    for (Finding const& finding : findings) {
        Json::Value check(Json::objectValue);
        check["check"] = finding.check;
        check["state"] = Word(finding.state);
        check["text"] = ToJson(finding.text);
        check["meaning"] = TextOrNull(finding.meaning);
        check["note"] = TextOrNull(finding.note);
        check["commands"] = Json::Value(Json::arrayValue);
        for (std::string const& command : finding.commands) {
            check["commands"].append(ToJson(command));
        }
        json["checks"].append(check);
        if (finding.state == State::Wrong) {
            error += (error.empty() ? "" : "; ") + finding.text;
        }
    }
    if (!error.empty()) {
        json["error"] = ToJson(error);
    }
    return json;
}

ExitCode CodeOf(std::vector<Finding> const& findings)
{
    auto const wrong = std::find_if(findings.begin(), findings.end(),
                                    [](Finding const& finding) { return finding.state == State::Wrong; });
    return wrong == findings.end() ? ExitCode::Accepted : wrong->code;
}

} // namespace zviptv::ctl::doctor

// SPDX-License-Identifier: MIT
#pragma once

#include "CtlFixture.h"

#include <map>

namespace zviptv::test {

/// A run of the command, understood.
struct Diagnosis
{
    CtlResult result;
    std::map<std::string, Json::Value> checks;

    std::string State(std::string const& check) const { return checks.at(check)["state"].asString(); }
    std::string Text(std::string const& check) const { return checks.at(check)["text"].asString(); }
    std::string Command(std::string const& check, Json::ArrayIndex index = 0) const
    {
        return checks.at(check)["commands"][index].asString();
    }
    /// The names of the problems: "service", or "group service".
    std::string Wrong() const
    {
        std::string names;
        for (auto const& [name, check] : checks) {
            if (check["state"].asString() == "wrong") {
                names += (names.empty() ? "" : " ") + name;
            }
        }
        return names;
    }
};

inline Diagnosis Understood(CtlResult const& result)
{
    Diagnosis diagnosis{result, {}};
    Json::Value const json = ParseJson(result.output);
    for (Json::Value const& check : json["checks"]) {
        diagnosis.checks[check["check"].asString()] = check;
    }
    return diagnosis;
}

inline Diagnosis Diagnose(std::map<std::string, std::string> const& environment = {})
{
    return Understood(RunCtl({"doctor", "--json"}, environment));
}

/// A service that answers the requests of the doctor.
class DoctorOfAService : public CtlTest
{
protected:
    DoctorOfAService()
    {
        m_service.Answer("GetSourceState", {{"result_internal", "1"}, {"sourcestate", "2"}});
        m_service.Answer("SizeOfAudio", {{"result_internal", "1"}, {"size", "0"}});
        m_service.Answer("ExistXmlForIPG", {{"data", "0"}});
    }
};

} // namespace zviptv::test

// SPDX-License-Identifier: MIT
#include "doctor/JudgeEndpoints.h"

#include <zviptv/Protocol.h>

#include <algorithm>

namespace zviptv::ctl::doctor {

namespace {

constexpr char NamingNote[] =
    "In a service that you write: answer each announcement with one pair, \"dbusname\" "
    "and the unique name of the connection that has the endpoint. The name is empty for an "
    "interface that the service leaves out on purpose.";
constexpr char ReplyNote[] = "In a service that you write: answer each request with a{sv}, each value as a "
                             "variant of ay, with \"result_internal\" and every value of the function.";

/// A problem, and the places where it was found.
struct Problem
{
    std::string text;
    ExitCode code;
    std::vector<std::string> places;
};

void Add(std::vector<Problem>& problems, std::string const& text, ExitCode code, std::string const& place)
{
    auto const same = std::find_if(problems.begin(), problems.end(),
                                   [&](Problem const& problem) { return problem.text == text; });
    if (same == problems.end()) {
        problems.push_back({text, code, {place}});
    } else {
        same->places.push_back(place);
    }
}

std::string TextOf(Problem const& problem)
{
    std::string text = problem.text + ": ";
    for (std::string const& place : problem.places) {
        text += (&place == &problem.places.front() ? "" : ", ") + place;
    }
    return text;
}

std::string TextOf(std::vector<Problem> const& problems)
{
    std::string text;
    for (Problem const& problem : problems) {
        text += (text.empty() ? "" : "; ") + TextOf(problem);
    }
    return text;
}

/// The problem; empty if there is none.
std::string NamingProblem(EndpointFacts const& endpoint)
{
    std::string const key = std::string("\"") + protocol::key::DBusName + "\"";
    switch (endpoint.naming) {
    case Naming::NotAsked:
    case Naming::Owned:
        break;
    case Naming::Dead:
        return key + " is " + endpoint.named + ", which nobody owns, in the answer to announcements";
    case Naming::Invalid:
        return key + " is \"" + endpoint.named +
               "\", which is not a bus name, in the answer to announcements";
    case Naming::Empty:
        return key + " is empty in the answer to announcements";
    case Naming::OtherKey:
        return key + " is missing in the answer to announcements, which has \"" + endpoint.named + "\"";
    case Naming::EmptyList:
        return key + " is missing in the answer to announcements, which is empty";
    case Naming::Unanswered:
        return "announcements get " + endpoint.named;
    }
    return {};
}

std::string ReplyProblem(EndpointFacts const& endpoint)
{
    std::string const key = "\"" + endpoint.key + "\"";
    switch (endpoint.answering) {
    case Answering::NotAsked:
    case Answering::Readable:
        break;
    case Answering::Failed:
        return "requests get the error " + endpoint.detail;
    case Answering::Silent:
        return "requests get no answer within 2 seconds";
    case Answering::OtherType:
        return "replies have the type " + endpoint.detail + " instead of (a{sv})";
    case Answering::OtherValue:
        return key + " has the type " + endpoint.detail + " instead of ay";
    case Answering::Missing:
        return key + " is missing";
    case Answering::NoNumber:
        return key + " is \"" + endpoint.detail + "\" instead of a number";
    }
    return {};
}

bool IsUnanswered(EndpointFacts const& endpoint)
{
    return endpoint.naming == Naming::Dead || endpoint.naming == Naming::Empty ||
           endpoint.naming == Naming::Unanswered || endpoint.answering == Answering::Failed ||
           endpoint.answering == Answering::Silent;
}

std::vector<Problem> ProblemsOf(Facts const& facts, std::string (*problemOf)(EndpointFacts const&),
                                std::string EndpointFacts::*place)
{
    std::vector<Problem> problems;
    for (EndpointFacts const& endpoint : facts.service.endpoints) {
        std::string const text = problemOf(endpoint);
        if (!text.empty()) {
            Add(problems, text, IsUnanswered(endpoint) ? ExitCode::NoAnswer : ExitCode::Malformed,
                endpoint.*place);
        }
    }
    return problems;
}

/// Why there is nothing to judge; empty otherwise.
std::optional<Finding> NoEndpointAsked(Facts const& facts, char const* check)
{
    if (auto const finding = NoOwner(facts, check)) {
        return finding;
    }
    if (facts.service.endpoints.empty()) {
        return NotChecked(check, "the service has not answered");
    }
    return std::nullopt;
}

} // namespace

Finding JudgeEndpoints(Facts const& facts)
{
    constexpr char Check[] = "endpoints";
    if (auto const finding = NoEndpointAsked(facts, Check)) {
        return *finding;
    }
    std::vector<Problem> const problems = ProblemsOf(facts, NamingProblem, &EndpointFacts::type);
    if (problems.empty()) {
        return Ok(Check, "the service has one for each interface");
    }
    return Wrong(Check, problems.front().code, TextOf(problems),
                 "An application gets objects, but their calls reach no endpoint and return false.",
                 CorrectService(facts), NamingNote);
}

Finding JudgeRequests(Facts const& facts)
{
    constexpr char Check[] = "requests";
    if (auto const finding = NoEndpointAsked(facts, Check)) {
        return *finding;
    }
    std::vector<Problem> const problems = ProblemsOf(facts, ReplyProblem, &EndpointFacts::function);
    if (!problems.empty()) {
        return Wrong(Check, problems.front().code, TextOf(problems),
                     "An application's calls return false, or throw an exception.", CorrectService(facts),
                     ReplyNote);
    }
    bool const isAsked =
        std::any_of(facts.service.endpoints.begin(), facts.service.endpoints.end(),
                    [](EndpointFacts const& endpoint) { return endpoint.answering != Answering::NotAsked; });
    return isAsked ? Ok(Check, "the endpoints answer them") : NotChecked(Check, "no endpoint is known");
}

} // namespace zviptv::ctl::doctor

// SPDX-License-Identifier: MIT
#include "Scenarios.h"

#include "ScenarioFile.h"
#include "glib/Utf8.h"
#include "scenario/Parser.h"
#include "scenario/Report.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace zviptv::sim {

namespace {

constexpr std::size_t MaxStarted = 100;
constexpr double LongestWait = 1e6; // seconds

} // namespace

Scenarios::Scenarios(ScenarioOptions options, Control& control)
    : m_control(control), m_first(std::move(options), control)
{
    m_control.SetScenarios(
        [this](std::string const& method, GVariant* parameters, ServiceLink::Reply reply,
               std::string const& client) { Call(method, parameters, std::move(reply), client); },
        [this](std::string const& client) { Forget(client); });
}

Scenarios::~Scenarios()
{
    auto const refuse = [](std::string const&, GVariant*, ServiceLink::Reply const&, std::string const&) {
        throw std::runtime_error("the simulator ends");
    };
    m_control.SetScenarios(refuse, {});
}

void Scenarios::Call(std::string const& method, GVariant* parameters, ServiceLink::Reply reply,
                     std::string const& client)
{
    Owned<GVariant> const owned(g_variant_ref_sink(parameters));
    if (method == "StartScenario") {
        char const* text = nullptr;
        char const* file = nullptr;
        g_variant_get(parameters, "(&s&s)", &text, &file);
        Owned<GVariant> const number(g_variant_ref_sink(g_variant_new("(u)", StartFor(client, text, file))));
        reply(number.get(), nullptr);
    } else {
        guint32 number = 0;
        double within = 0;
        g_variant_get(parameters, "(ud)", &number, &within);
        EndFor(client, number, within, std::move(reply));
    }
}

Scenarios::Number Scenarios::StartFor(std::string const& client, char const* text, char const* file)
try {
    if (m_started.size() == MaxStarted) {
        throw std::runtime_error("100 scenarios have been started and not ended; call EndScenario for them");
    }
    Number const number = ++m_last;
    ScenarioOptions options;
    options.scenario = LoadScenarioText(text, *file == '\0' ? "scenario" : file);
    options.onOver = [this, number](Play const& play) { OnOver(number, play); };
    Started& started = m_started[number];
    started.client = client;
    started.runner = std::make_unique<ScenarioRunner>(std::move(options), m_control);
    started.runner->Start();
    return number;
} catch (ScenarioError const& failure) {
    throw std::invalid_argument(failure.what());
}

void Scenarios::EndFor(std::string const& client, Number number, double within, ServiceLink::Reply reply)
{
    auto const found = m_started.find(number);
    if (found == m_started.end() || found->second.client != client || found->second.reply) {
        throw std::invalid_argument("no scenario " + std::to_string(number) +
                                    " of this client runs; use a number that StartScenario has returned");
    }
    if (!(within >= 0 && within <= LongestWait)) {
        throw std::invalid_argument("the time is not a number of seconds, 0 to 1000000");
    }
    found->second.reply = std::move(reply);
    found->second.limit = Signals::Clock::now() + std::chrono::duration_cast<Signals::Clock::duration>(
                                                      std::chrono::duration<double>(within));
}

Signals::Clock::time_point Scenarios::Change() const
{
    Signals::Clock::time_point next = m_first.Change();
    for (auto const& [number, started] : m_started) {
        bool const isAnswered = started.runner->IsOver() && started.reply;
        next = std::min({next, started.runner->Change(), started.limit,
                         isAnswered ? Signals::Clock::now() : Signals::Never});
    }
    return next;
}

void Scenarios::Advance()
{
    m_first.Advance();
    for (auto place = m_started.begin(); place != m_started.end();) {
        Started& started = place->second;
        started.runner->Advance();
        if (started.runner->IsOver() && started.reply) {
            Owned<GVariant> const result(g_variant_ref_sink(
                g_variant_new("(bs)", started.isMet ? TRUE : FALSE, started.report.c_str())));
            started.reply(result.get(), nullptr);
            place = m_started.erase(place);
        } else {
            if (started.limit <= Signals::Clock::now()) {
                EndLate(place->first);
            }
            ++place;
        }
    }
}

/// A report of the service comes after all requests that it has answered before.
void Scenarios::EndLate(Number number)
{
    m_started.at(number).limit = Signals::Never;
    m_control.Read([self = std::weak_ptr<Scenarios>(m_self), number](GVariant*) {
        auto const scenarios = self.lock();
        if (scenarios && scenarios->m_started.count(number) == 1) {
            ScenarioRunner& runner = *scenarios->m_started.at(number).runner;
            if (!runner.IsOver()) {
                runner.End("the test ended");
            }
        }
    });
}

void Scenarios::OnOver(Number number, Play const& play)
{
    Started& started = m_started.at(number);
    started.isMet = !play.HasFailed();
    started.report = ValidUtf8(TextReport(play));
}

void Scenarios::Forget(std::string const& client)
{
    for (auto& [number, started] : m_started) {
        if (started.client == client) {
            started.reply = [](GVariant*, GError const*) {};
            started.limit = Signals::Clock::now();
        }
    }
}

int Scenarios::Finish(int status, std::string const& why, Signals const& signals)
{
    m_started.clear();
    return m_first.Finish(status, why, signals);
}

} // namespace zviptv::sim

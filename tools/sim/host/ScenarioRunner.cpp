// SPDX-License-Identifier: MIT
#include "ScenarioRunner.h"

#include "ControlErrors.h"
#include "common/PrintableText.h"
#include "control/Link.h"
#include "control/Report.h"
#include "glib/Utf8.h"
#include "scenario/Report.h"
#include "scenario/Seconds.h"

#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <memory>
#include <utility>

namespace zviptv::sim {

namespace {

constexpr std::chrono::seconds RequestTimeout{2};

SeenRequest ToRequest(GVariant* body)
{
    SeenRequest request;
    char const* function = nullptr;
    GVariantIter* arguments = nullptr;
    g_variant_get(body, "(&s&s&sa{ss}i&s)", nullptr, nullptr, &function, &arguments, nullptr, nullptr);
    request.function = function;
    char const* key = nullptr;
    char const* value = nullptr;
    while (g_variant_iter_next(arguments, "{&s&s}", &key, &value) != FALSE) {
        if (std::strcmp(key, "handleID") != 0) { // selects the object, is not an argument
            request.arguments[key] = value;
        }
    }
    g_variant_iter_free(arguments);
    return request;
}

bool Write(int file, std::string const& text)
{
    for (std::size_t done = 0; done < text.size();) {
        ssize_t const count = write(file, text.data() + done, text.size() - done);
        if (count < 0 && errno != EINTR) {
            return false;
        }
        done += count < 0 ? 0 : static_cast<std::size_t>(count);
    }
    return true;
}

/// Whether the verb affects the service's process: the service must first answer all earlier calls.
bool EndsService(verbs::Verb const& verb)
{
    return std::strcmp(verb.method, "Die") == 0 || std::strcmp(verb.method, "Restart") == 0 ||
           std::strcmp(verb.method, "Quit") == 0;
}

} // namespace

ScenarioRunner::ScenarioRunner(ScenarioOptions options, Control& control)
    : m_options(std::move(options)), m_control(control)
{
    if (m_options.scenario) {
        m_play.emplace(*m_options.scenario, [this](std::size_t step) { m_queue.push_back(step); });
        m_control.SetFollower(this, {[this](GVariant* body) {
                                         if (m_hasStarted) {
                                             m_play->OnRequest(ToRequest(body), m_clock.Seconds());
                                         }
                                     },
                                     [this](bool isSought) { Follow(isSought); }});
    }
}

ScenarioRunner::~ScenarioRunner()
{
    m_control.SetFollower(this, {});
}

void ScenarioRunner::Follow(bool isSought)
{
    std::optional<SimulatedClock::State> const state = ClockOf(m_control.Service().Kept());
    if (m_hasStarted && state) {
        m_clock.Follow(*state, isSought);
    }
}

void ScenarioRunner::Start()
{
    std::optional<SimulatedClock::State> const state = ClockOf(m_control.Service().Kept());
    m_clock.Start(state.value_or(SimulatedClock(1.0, {}).Keep()));
    m_hasStarted = true;
    Advance();
}

Signals::Clock::time_point ScenarioRunner::Change() const
{
    std::optional<double> const next = m_play && m_hasStarted ? m_play->Next() : std::nullopt;
    std::optional<std::chrono::nanoseconds> const wait = next ? m_clock.Until(*next) : std::nullopt;
    return wait ? Signals::Clock::now() + *wait : Signals::Never;
}

void ScenarioRunner::Advance()
{
    if (!m_play || !m_hasStarted || m_hasReported) {
        return;
    }
    m_play->Advance(m_clock.Seconds());
    PerformQueued();
    if (m_play->IsOver() && m_queue.empty() && m_unanswered == 0) {
        Report();
    }
}

/// Runs the steps in the order of their times. Must not run in a callback of the service, which a verb may
/// kill.
void ScenarioRunner::PerformQueued()
{
    while (!m_queue.empty()) {
        std::size_t const number = m_queue.front();
        verbs::Command const command = verbs::Parse(m_options.scenario->steps[number].verb);
        if (EndsService(*command.verb) && m_unanswered > 0 && m_control.Service().IsRunning()) {
            return;
        }
        m_queue.pop_front();
        Perform(number, command);
    }
}

void ScenarioRunner::Perform(std::size_t step, verbs::Command const& command)
try {
    std::string const text = PrintableText(m_options.scenario->steps[step].text);
    if (m_options.showsSteps) {
        std::fprintf(stderr, "zviptv-sim: second %s: %s\n", SecondsText(m_clock.Seconds()).c_str(),
                     text.c_str());
    }
    if (std::strcmp(command.verb->method, "Pause") == 0) {
        m_clock.NotePause();
    }
    std::string const place = ValidUtf8(ToText(m_options.scenario->steps[step].place));
    m_control.SetProperty("ScenarioStep", g_variant_new_string(place.c_str()));
    ++m_unanswered;
    auto const answered = [self = std::weak_ptr<ScenarioRunner>(m_self), step](GVariant*,
                                                                               GError const* error) {
        if (auto const runner = self.lock()) {
            runner->OnAnswered(step, error);
        }
    };
    m_control.Do(command.verb->method, command.parameters.get(), answered);
} catch (std::exception const& failure) {
    --m_unanswered;
    Fail(step, failure.what());
}

void ScenarioRunner::OnAnswered(std::size_t step, GError const* error)
{
    --m_unanswered;
    if (error != nullptr) {
        Fail(step, ErrorText(error, m_control.Service().Pid()).c_str());
    }
}

void ScenarioRunner::Fail(std::size_t step, char const* why)
{
    m_play->Fail(step, why);
    std::string const text = ToText(m_options.scenario->steps[step].place) + ": " + why;
    std::fprintf(stderr, "zviptv-sim: %s\n", PrintableText(text).c_str());
}

/// An answer of the service arrives after all its earlier messages.
void ScenarioRunner::AwaitRequests(Signals const& signals)
{
    auto const isAnswered = std::make_shared<bool>(false);
    if (!m_control.Service().IsRunning()) {
        return;
    }
    Owned<GVariant> whose(g_variant_ref_sink(g_variant_new("(s)", verbs::Interface)));
    m_control.Service().Call({link::Properties,
                              "GetAll",
                              std::move(whose),
                              RequestTimeout,
                              {},
                              [isAnswered](GVariant*, GError const*) { *isAnswered = true; }});
    auto const deadline = Signals::Clock::now() + RequestTimeout;
    while (!*isAnswered && Signals::Clock::now() < deadline) {
        signals.Next(deadline);
    }
}

int ScenarioRunner::Finish(int status, std::string const& why, Signals const& signals)
{
    if (!m_play) {
        return status;
    }
    if (!m_hasReported) {
        AwaitRequests(signals);
        End(why);
    }
    return status == 0 && (m_play->HasFailed() || !m_isWritten) ? EXIT_FAILURE : status;
}

void ScenarioRunner::End(std::string const& why)
{
    m_play->End(m_hasStarted ? m_clock.Seconds() : -1, why);
    Report();
}

void ScenarioRunner::Report()
{
    m_hasReported = true;
    if (m_options.onOver) {
        m_options.onOver(*m_play);
        return;
    }
    std::fputs(TextReport(*m_play).c_str(), stderr);
    if (m_options.junit.Get() < 0) {
        return;
    }
    double const seconds = m_hasStarted ? m_clock.Seconds() : 0;
    m_isWritten = Write(m_options.junit.Get(), JUnitReport(*m_play, seconds));
    if (!m_isWritten) {
        std::fprintf(stderr, "zviptv-sim: cannot write %s: %s; free some space and run the scenario again\n",
                     m_options.junitName.c_str(), std::strerror(errno));
    }
}

} // namespace zviptv::sim

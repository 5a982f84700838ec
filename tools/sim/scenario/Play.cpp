// SPDX-License-Identifier: MIT
#include "Play.h"

#include "Seconds.h"

#include <algorithm>
#include <utility>

namespace zviptv::sim {

namespace {

constexpr std::size_t MaxShown = 3;

bool IsPending(Outcome const& outcome)
{
    return outcome.state == Outcome::State::Waiting || outcome.state == Outcome::State::Open;
}

std::string After(double seconds)
{
    return "after " + SecondsText(seconds) + " s";
}

} // namespace

Play::Play(Scenario const& scenario, Perform perform)
    : m_scenario(scenario), m_perform(std::move(perform)), m_outcomes(scenario.steps.size()),
      m_windows(scenario.steps.size())
{
    for (std::size_t i = 0; i < scenario.steps.size(); ++i) {
        if (!scenario.steps[i].after) {
            m_timetable.push_back(i);
        }
    }
    std::stable_sort(m_timetable.begin(), m_timetable.end(),
                     [&scenario](std::size_t left, std::size_t right) {
                         return scenario.steps[left].second < scenario.steps[right].second;
                     });
}

void Play::Advance(double now)
{
    for (; m_next < m_timetable.size(); ++m_next) {
        std::size_t const step = m_timetable[m_next];
        if (m_scenario.steps[step].second > now) {
            break;
        }
        Run(step, now);
    }
    for (std::size_t i = 0; i < m_outcomes.size(); ++i) {
        if (m_outcomes[i].state == Outcome::State::Open && m_windows[i].end <= now) {
            Close(i);
        }
    }
}

/// Begins an expectation, or performs the verb.
void Play::Run(std::size_t step, double now)
{
    Outcome& outcome = m_outcomes[step];
    outcome.begin = now;
    if (std::optional<Expectation> const& expectation = m_scenario.steps[step].expectation) {
        outcome.state = Outcome::State::Open;
        m_windows[step].end = now + expectation->seconds;
    } else {
        outcome.state = Outcome::State::Met;
        m_perform(step);
    }
}

void Play::OnRequest(SeenRequest const& request, double now)
{
    Advance(now);
    for (std::size_t i = 0; i < m_outcomes.size(); ++i) {
        Step const& step = m_scenario.steps[i];
        if (m_outcomes[i].state == Outcome::State::Open) {
            Judge(i, request, now);
        } else if (m_outcomes[i].state == Outcome::State::Waiting && step.after &&
                   step.after->Matches(request)) {
            Run(i, now);
        }
    }
}

void Play::Judge(std::size_t step, SeenRequest const& request, double now)
{
    Expectation const& expectation = *m_scenario.steps[step].expectation;
    Window& window = m_windows[step];
    double const took = now - m_outcomes[step].begin;
    if (expectation.request.Matches(request)) {
        Decide(step, expectation.isWanted ? Outcome::State::Met : Outcome::State::Unmet, now,
               "seen " + After(took) + ": " + ToText(request));
    } else if (expectation.request.Function() != request.function) {
        ++window.others;
    } else if (window.similar.size() < MaxShown) {
        window.similar.push_back(ToText(request) + " " + After(took));
    }
}

void Play::Decide(std::size_t step, Outcome::State state, double now, std::string const& seen)
{
    m_outcomes[step].state = state;
    m_outcomes[step].took = now - m_outcomes[step].begin;
    m_outcomes[step].seen = seen;
}

std::string Play::SeenRequests(std::size_t step) const
{
    Window const& window = m_windows[step];
    if (window.similar.empty()) {
        return window.others == 0 ? "no request came"
                                  : std::to_string(window.others) + " other request" +
                                        (window.others == 1 ? "" : "s") + " came";
    }
    std::string text;
    for (std::string const& request : window.similar) {
        text += (text.empty() ? "instead " : ", ") + request;
    }
    return text;
}

/// Closes an expectation whose time is over.
void Play::Close(std::size_t step)
{
    Expectation const& expectation = *m_scenario.steps[step].expectation;
    std::string const duration = SecondsText(expectation.seconds) + " s";
    if (expectation.isWanted) {
        Decide(step, Outcome::State::Unmet, m_windows[step].end,
               "not seen within " + duration + "; " + SeenRequests(step));
    } else {
        Decide(step, Outcome::State::Met, m_windows[step].end, "not seen for " + duration);
    }
}

void Play::Fail(std::size_t step, std::string const& why)
{
    m_outcomes[step].state = Outcome::State::Failed;
    m_outcomes[step].seen = why;
}

/// At the end, an open expectation without a request is met; an expectation that never began was not checked.
void Play::End(double now, std::string const& why)
{
    Advance(now);
    for (std::size_t i = 0; i < m_outcomes.size(); ++i) {
        if (!m_scenario.steps[i].expectation || !IsPending(m_outcomes[i])) {
            continue;
        }
        if (m_outcomes[i].state == Outcome::State::Waiting) {
            m_outcomes[i].begin = now;
            Decide(i, Outcome::State::Unmet, now,
                   "never began: " + why + (now >= 0 ? " at second " + SecondsText(now) : ""));
        } else if (m_scenario.steps[i].expectation->isWanted) {
            Decide(i, Outcome::State::Unmet, now,
                   "not seen before " + why + ", " + SecondsText(now - m_outcomes[i].begin) + " s later; " +
                       SeenRequests(i));
        } else {
            Decide(i, Outcome::State::Met, now,
                   "not seen before " + why + ", " + SecondsText(now - m_outcomes[i].begin) + " s later");
        }
    }
}

std::optional<double> Play::Next() const
{
    std::optional<double> next;
    auto const consider = [&next](double time) { next = next ? std::min(*next, time) : time; };
    if (m_next < m_timetable.size()) {
        consider(m_scenario.steps[m_timetable[m_next]].second);
    }
    for (std::size_t i = 0; i < m_outcomes.size(); ++i) {
        if (m_outcomes[i].state == Outcome::State::Open) {
            consider(m_windows[i].end);
        }
    }
    return next;
}

bool Play::IsOver() const
{
    return std::none_of(m_outcomes.begin(), m_outcomes.end(), IsPending);
}

bool Play::HasFailed() const
{
    return std::any_of(m_outcomes.begin(), m_outcomes.end(), [](Outcome const& outcome) {
        return outcome.state == Outcome::State::Unmet || outcome.state == Outcome::State::Failed;
    });
}

} // namespace zviptv::sim

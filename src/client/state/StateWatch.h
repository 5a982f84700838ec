// SPDX-License-Identifier: MIT
#pragma once

#include "client/link/Link.h"

#include <zviptv/client/StateWatcher.h>
#include <zviptv/client/Television.h>

#include <set>
#include <vector>

namespace zviptv::client {

/// Queries the state of a television in rounds. For the context's thread.
class StateWatch : public std::enable_shared_from_this<StateWatch>
{
public:
    using Callback = std::function<void(StateEvent const&)>;

    /// `television` must live until the link has ended.
    StateWatch(std::shared_ptr<Link> link, Television& television, StateOptions options, Callback callback);

    /// Call it once, before any other function.
    void Begin();
    /// Stops all events.
    void End();
    void Refresh();
    TelevisionState const& State() const { return m_state; }

private:
    void StartRound();
    void AskForTexts();
    void EndRound();
    void StartRoundAfter(std::chrono::milliseconds time);

    void Report(StateEvent const& event);
    template <auto Value>
    void ReportChange(TelevisionState const& before, TelevisionState const& after);
    template <auto... Values>
    void ReportChanges(std::variant<TelevisionState, StateChange<Values>...> const* event,
                       TelevisionState const& before, TelevisionState const& after);

    /// The completion of the next question, which puts the answer into `value` of m_next.
    template <class Answer, class T>
    Completion<Answer> Expect(T TelevisionState::*value);
    /// Whether the failure means that there is no value. `question` is its number within the round.
    bool IsNothing(std::size_t question, Failure const& failure);

    std::shared_ptr<Link> const m_link;
    Television& m_television;
    StateOptions const m_options;
    Callback const m_callback;
    TelevisionState m_state;
    bool m_isEnded = false;
    bool m_isKnown = false; ///< the whole state has been reported

    // The current round.
    TelevisionState m_next;
    std::vector<Pending> m_calls;
    std::size_t m_open = 0;    ///< questions without an answer
    bool m_isAnswered = false; ///< at least one question was answered
    bool m_isAbsent = false;   ///< the service was absent during a question
    bool m_isDue = false;      ///< the next round is to start at once
    std::chrono::steady_clock::time_point m_start;

    std::set<std::size_t> m_failing; ///< questions whose failure has been reported
    Timer m_timer;
    Listener m_onAvailability;
};

} // namespace zviptv::client

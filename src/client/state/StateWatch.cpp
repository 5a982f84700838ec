// SPDX-License-Identifier: MIT
#include "client/state/StateWatch.h"

#include <algorithm>

namespace zviptv::client {

namespace {

template <class T, class Answer>
void Store(T& value, Answer& answer)
{
    value = std::move(answer);
}

/// The answers about selections.
template <class Answer>
void Store(std::optional<std::int32_t>& selected, Answer& answer)
{
    selected = answer.index < 0 ? std::nullopt : std::optional(answer.index);
}

bool IsAbsence(FailureKind kind)
{
    return kind == FailureKind::NoBus || kind == FailureKind::NoService;
}

} // namespace

StateWatch::StateWatch(std::shared_ptr<Link> link, Television& television, StateOptions options,
                       Callback callback)
    : m_link(std::move(link)), m_television(television), m_options(options), m_callback(std::move(callback))
{
}

void StateWatch::Begin()
{
    m_onAvailability = m_link->OnAvailability([weak = weak_from_this()](bool isAvailable) {
        std::shared_ptr<StateWatch> const self = weak.lock();
        if (self != nullptr && isAvailable) {
            self->Refresh();
        }
    });
    StartRoundAfter(std::chrono::milliseconds(0));
}

void StateWatch::End()
{
    m_isEnded = true;
    m_timer = Timer();
    m_onAvailability.Withdraw();
    for (Pending const& call : std::exchange(m_calls, {})) {
        call.Cancel();
    }
}

void StateWatch::Refresh()
{
    if (m_isEnded) {
        return;
    }
    if (m_open != 0) {
        m_isDue = true;
    } else {
        StartRoundAfter(std::chrono::milliseconds(0));
    }
}

void StateWatch::StartRoundAfter(std::chrono::milliseconds time)
{
    m_timer = Timer(m_link->Context(), time, [this] { StartRound(); });
}

template <class Answer, class T>
Completion<Answer> StateWatch::Expect(T TelevisionState::*value)
{
    std::size_t const question = m_open++;
    return [weak = weak_from_this(), value, question](Result<Answer> answer) {
        std::shared_ptr<StateWatch> const self = weak.lock();
        if (self == nullptr || self->m_isEnded) {
            return;
        }
        if (answer) {
            self->m_isAnswered = true;
            self->m_failing.erase(question);
            Store(self->m_next.*value, *answer);
        } else if (self->IsNothing(question, answer.GetFailure())) {
            self->m_next.*value = T();
        }
        if (!self->m_isEnded && --self->m_open == 0) {
            self->EndRound();
        }
    };
}

void StateWatch::StartRound()
{
    if (m_link->IsEnded()) {
        End();
        return;
    }
    if (!m_link->IsAvailable()) {
        return; // until the service is there
    }
    m_next = m_state;
    m_isAnswered = m_isAbsent = m_isDue = false;
    m_start = std::chrono::steady_clock::now();
    using State = TelevisionState;
    Broadcast& broadcast = m_television.Broadcast();
    m_calls = {
        m_television.Player().GetSourceState(Expect<SourceState>(&State::source)),
        broadcast.AudioTracks(Expect<std::vector<AudioTrack>>(&State::audioTracks)),
        broadcast.Subtitles(Expect<std::vector<Subtitle>>(&State::subtitles)),
        broadcast.TeletextPages(Expect<std::vector<TeletextPage>>(&State::pages)),
        broadcast.GetCurrentAudioInfo(Expect<CurrentAudioInfoAnswer>(&State::audio)),
        broadcast.GetCurrentHybridSBT(Expect<CurrentHybridSBTAnswer>(&State::subtitle)),
        broadcast.GetCurrentTTX(Expect<CurrentTTXAnswer>(&State::page)),
        broadcast.GetRatingLockState(Expect<bool>(&State::programmeLock)),
        broadcast.FlagServiceLocked(Expect<bool>(&State::serviceLock)),
        broadcast.IsdbTexts(IsdbTextKind::Caption, Expect<std::vector<IsdbText>>(&State::captions)),
        broadcast.IsdbTexts(IsdbTextKind::Superimpose, Expect<std::vector<IsdbText>>(&State::superimposes)),
        broadcast.GetCurrentISDBText(IsdbTextKind::Caption, Expect<CurrentISDBTextAnswer>(&State::caption)),
        broadcast.GetCurrentISDBText(IsdbTextKind::Superimpose,
                                     Expect<CurrentISDBTextAnswer>(&State::superimpose)),
    };
    if (m_options.serviceId) {
        m_calls.push_back(m_television.Guide().GetPresentProgram(
            *m_options.serviceId, Expect<std::optional<Programme>>(&State::present)));
    }
}

bool StateWatch::IsNothing(std::size_t question, Failure const& failure)
{
    if (failure.kind == FailureKind::Refused) {
        m_isAnswered = true;
        m_failing.erase(question);
        // A list whose element was refused has changed meanwhile: the next round gets it.
        bool const isElement = failure.function == "GetAudio" || failure.function == "GetHybridSBT" ||
                               failure.function == "GetTTX" || failure.function == "GetISDBText";
        return !isElement;
    }
    if (failure.kind == FailureKind::Gone) {
        End();
    } else if (IsAbsence(failure.kind)) {
        m_isAbsent = true;
    } else if (m_failing.insert(question).second) {
        m_link->Report(failure);
    }
    return false;
}

void StateWatch::EndRound()
{
    using std::chrono::milliseconds;
    m_calls.clear();
    auto const passed = std::chrono::duration_cast<milliseconds>(std::chrono::steady_clock::now() - m_start);
    milliseconds const interval = std::max(m_options.interval, milliseconds(1));
    StartRoundAfter(m_isDue ? milliseconds(0) : std::max(interval - passed, milliseconds(0)));
    if (m_isAbsent || !m_isAnswered) {
        return;
    }
    TelevisionState const before = std::exchange(m_state, m_next);
    if (!std::exchange(m_isKnown, true)) {
        Report(m_state);
        return;
    }
    ReportChanges(static_cast<StateEvent const*>(nullptr), before, TelevisionState(m_state));
}

template <auto... Values>
void StateWatch::ReportChanges(std::variant<TelevisionState, StateChange<Values>...> const* /*event*/,
                               TelevisionState const& before, TelevisionState const& after)
{
    (ReportChange<Values>(before, after), ...);
}

template <auto Value>
void StateWatch::ReportChange(TelevisionState const& before, TelevisionState const& after)
{
    if (before.*Value != after.*Value) {
        Report(StateChange<Value>{before.*Value, after.*Value});
    }
}

void StateWatch::Report(StateEvent const& event)
{
    if (!m_isEnded && m_callback) { // the callback may have ended the watcher, or the television
        m_link->Guard("StateWatcher", [&] { m_callback(event); });
    }
}

} // namespace zviptv::client

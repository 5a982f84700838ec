// SPDX-License-Identifier: MIT
#pragma once

#include "Recording.h"
#include "common/MainLoop.h"

#include <zviptv/MessageBuffer.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace zviptv::sim {

struct ReplayOptions
{
    /// The answer to a request that was not recorded.
    enum class Unrecorded
    {
        Error,  ///< a D-Bus error
        False,  ///< the reply with which the function refuses a request
        Stream, ///< the answer of the endpoint, from the transport stream
    };

    std::string file; ///< the recording; empty to replay nothing
    Unrecorded unrecorded = Unrecorded::Error;
    double speed = 1; ///< speed of pushes and deaths
};

/// An answer of the recorded service, or the one to a request that was not recorded.
struct ReplayedAnswer
{
    bool isRecorded = false;
    bool isMissing = false; ///< the service did not answer
    CMessageBuffer reply;   ///< the answer, unless it is missing or an error
    std::string errorName;  ///< D-Bus error that is sent instead; empty for none
    std::string errorText;
    std::chrono::milliseconds delay{0};
};

/// Answers as a recorded service did, and dies when it did. For the thread of the main loop.
class Replay
{
public:
    /// Called when the recorded service dies; `returnAfter` is the time in seconds until it returned, if it
    /// did.
    using OnDeath = std::function<void(std::optional<double> returnAfter)>;

    /// @throws std::runtime_error with a line for the user if the file cannot be replayed
    Replay(ReplayOptions const& options, MainLoop& loop);
    Replay(Replay const&) = delete;
    Replay& operator=(Replay const&) = delete;

    void SetDeathListener(OnDeath onDeath) { m_onDeath = std::move(onDeath); }

    /// Writes a line for each request that was not recorded to this descriptor.
    void ListUnrecordedIn(int descriptor) { m_list = descriptor; }

    /// Continues with a life of the recorded service; the last one if there are fewer.
    void Begin(std::size_t life);

    /// The life with which the next service begins.
    std::size_t NextLife() const { return m_life + 1; }

    /// The answer to a request; empty if it was not recorded and the endpoint has to answer.
    std::optional<ReplayedAnswer> Answer(std::string const& endpoint, CMessageBuffer const& request);

    /// The answer to an announcement, in which `partner` stands for the recorded service's name; empty if it
    /// was not recorded.
    std::optional<ReplayedAnswer> Announce(std::string const& type, bool comesUp, std::string const& partner);

    /// Whether the recording has pushes, or subscriptions, of the function that subscribes.
    bool HasPushes(std::string const& function) const;

    Recording& Recorded() { return *m_recording; }
    std::size_t Life() const { return m_life; }
    double Speed() const { return m_options.speed; }
    ReplayOptions::Unrecorded Unrecorded() const { return m_options.unrecorded; }

private:
    std::optional<ReplayedAnswer> Take(std::string const& key);
    std::optional<ReplayedAnswer> TakeFor(std::string const& endpoint, CMessageBuffer const& request);
    void NoteCall();
    void List(CMessageBuffer const& request) const;
    void PlanDeath(std::chrono::microseconds since);

    ReplayOptions const m_options;
    MainLoop& m_loop;
    std::unique_ptr<Recording> m_recording;
    OnDeath m_onDeath;
    int m_list = -1; ///< descriptor; negative if there is none
    std::size_t m_life = 0;
    std::uint64_t m_plan = 0; ///< number of the current plan of the death
    bool m_isPlanned = false;
};

} // namespace zviptv::sim

// SPDX-License-Identifier: MIT
#pragma once

#include "Applications.h"
#include "BroadcastDataService.h"
#include "DataSubscriberService.h"
#include "Endpoint.h"
#include "Faults.h"
#include "PlayerControlService.h"
#include "ProgrammeGuideService.h"
#include "ReplyDelivery.h"
#include "RequestLog.h"
#include "common/MainLoop.h"
#include "playback/DurationScan.h"
#include "playback/ParentalLock.h"
#include "playback/Player.h"
#include "playback/Selection.h"
#include "playback/SimulatedClock.h"
#include "playback/StreamTap.h"
#include "replay/PushReplay.h"
#include "replay/Replay.h"

#include <zviptv/DeferredReply.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace zviptv::sim {

struct ServiceOptions
{
    PlayerOptions playback;
    PesFilter filter;
    std::size_t awaitedSubscribers = 0; ///< playback begins after this number of applications has subscribed
    std::string guide;                  ///< XMLTV file; if empty, the stream's event information is used
    bool guideMayFail = false;          ///< if the file cannot be loaded, use the stream's information
    std::optional<std::int64_t> now;    ///< time of the guide's clock at the start; the real time if empty
    std::optional<int> ratingLimit;     ///< highest minimum age that plays without a PIN
    bool serviceLocked = false;
    bool isTapped = false;        ///< a decoder may show the stream
    bool lockStopsPushes = false; ///< nothing is pushed while the programme or the service is locked
    std::vector<FaultRule> faults;
    std::uint64_t faultSeed = 0; ///< seed of the faults with a probability
    RequestLog::Form log = RequestLog::Form::Quiet;
    ReplayOptions replay;
};

/// The parts of the television, for the control interface.
struct Television
{
    SimulatedClock& clock;
    Player& player;
    Selection& selection;
    ParentalLock& lock;
    Faults& faults;
    ProgrammeGuideService& guide;
    DataSubscriberService const& subscribers;
    Applications const& applications;
    StreamTap& tap;
};

/// The service on the bus: owns the helper bus, answers on the endpoints, plays the stream. Runs on one
/// thread, whose main context must be iterated.
class Service
{
public:
    /// After the constructor, applications cannot find the service yet. @throws StreamError like Player,
    /// GuideError if the guide cannot be read
    Service(ServiceOptions const& options, MainLoop& loop);
    ~Service();
    Service(Service const&) = delete;
    Service& operator=(Service const&) = delete;

    /// Whether the bus could be reached.
    bool IsOnBus() { return !m_playerControlEnd.GetPublicName().empty(); }

    /// Lets applications find it.
    void Announce();

    /// Begins to play and to show the status.
    void Start();

    /// Restores the state after Start(), at once. Applications keep their channels, but lose their
    /// subscriptions.
    /// @throws StreamError if the input of the options can no longer be read; then nothing has changed
    void Reset();

    /// The replay of a recorded service; null if nothing is replayed.
    Replay* Replayed() { return m_replay.get(); }

    Television Parts();

    /// Call it after the clock or the player was changed from outside.
    void Wake();

    /// Call it after another stream, or another programme of it, was selected.
    void FollowInput();

    /// Whether playback waits for more applications to subscribe.
    bool AwaitsApplications() const;
    void BeginAtOnce() { m_awaited = 0; }
    /// Opening options for an input with this URL.
    InputOptions InputNamed(std::string const& url) const { return {url, m_options.playback.input.follow}; }
    bool Loops() const { return m_options.playback.loop; }
    /// The file that is replayed; empty if none is.
    std::string const& Recording() const { return m_options.replay.file; }
    bool LockStopsPushes() const { return m_options.lockStopsPushes; }

    using RequestListener = std::function<void(RequestLog::Entry const&)>;
    /// `onRequest` gets every request that was answered, or not answered because of a fault. `onChange` is
    /// called after events on the bus and in the stream.
    void SetListeners(RequestListener onRequest, std::function<void()> onChange);

private:
    static constexpr std::chrono::milliseconds StatusPeriod{1000};

    using Answerer = std::function<std::optional<CMessageBuffer>(Request const&)>;

    /// A request that is being handled.
    struct Call
    {
        char const* type; ///< word of the endpoint
        std::string busName;
        CMessageBuffer message;
        std::chrono::steady_clock::time_point begin;
        Damage damage;
        Delivery delivery;                   ///< without faults
        std::string replayNote;              ///< note of the recording; empty if there is none
        std::optional<CDeferredReply> later; ///< set if the handler returns before the answer is known
    };

    static std::string Announced(std::string busName, std::string type, std::string add, void* self);
    std::string AnswerAnnouncement(std::string const& busName, std::string const& type, bool comesUp);
    std::string Partner(std::string const& busName, std::string const& type, bool comesUp);
    Endpoint::Handler HandlerOf(char const* type, Answerer answer);
    Damage FaultsOf(FaultRule::Target target, std::string const& function, std::string const& busName,
                    bool followsHeld = false);
    Call Begin(char const* type, CMessageBuffer const& message);
    CMessageBuffer AnswerGuide(CMessageBuffer const& message);
    CMessageBuffer Finish(Call& call, CMessageBuffer const& honest);
    void LoadGuide();
    void BeginReplay();
    std::optional<CMessageBuffer> AnswerFromRecording(Call& call);
    void FollowSubscription(Call const& call, ReplayedAnswer const& answer);
    std::optional<Delivery> AnnounceFromRecording(std::string const& type, bool comesUp,
                                                  std::string& partner);
    void AddFaultsOfOptions();
    void NoteId(Request const& request);
    void Push(PesPacket const& pes);
    bool PlaysFirst() const;
    void PlayWhenAwaited();
    void PlayAfter(std::chrono::milliseconds delay);
    void Play();
    void MeasureDuration(unsigned scan);
    void ShowStatus();

    MainLoop& m_loop;
    ServiceOptions const m_options;
    std::size_t m_awaited;
    bool m_isStarted = false;
    bool m_isPlaying = false;
    bool m_isWoken = false;   ///< woken by the player; Play() will run
    std::uint64_t m_plan = 0; ///< number of the last PlayAfter()
    unsigned m_scans = 0;     ///< number of the present MeasureDuration(); earlier ones do nothing
    std::optional<DurationScan> m_durationScan;
    std::optional<Player::Seconds> m_firstDuration; ///< of the input of the options
    RequestListener m_onRequest = [](RequestLog::Entry const&) {};
    std::function<void()> m_onChange = [] {};
    SimulatedClock m_clock;
    RequestLog m_log;
    Faults m_faults;
    Selection m_selection;
    ParentalLock m_lock;
    std::uint64_t m_packets = 0; ///< sent until the last status
    std::chrono::steady_clock::time_point m_statusAt;
    DataSubscriberService m_subscribers;
    std::unique_ptr<Replay> m_replay;
    std::unique_ptr<PushReplay> m_pushReplay;
    Player m_player;
    StreamTap m_tap;
    ProgrammeGuideService m_programmeGuide;
    PlayerControlService m_playerControl;
    BroadcastDataService m_broadcastData;
    Applications m_applications;
    Endpoint m_playerControlEnd;
    Endpoint m_broadcastDataEnd;
    Endpoint m_subscriberEnd;
    Endpoint m_programmeGuideEnd;
};

} // namespace zviptv::sim

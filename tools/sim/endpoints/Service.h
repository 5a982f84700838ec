// SPDX-License-Identifier: MIT
#pragma once

#include "Applications.h"
#include "BroadcastDataService.h"
#include "DataSubscriberService.h"
#include "Endpoint.h"
#include "Faults.h"
#include "PlayerControlService.h"
#include "ProgrammeGuideService.h"
#include "RequestLog.h"
#include "common/MainLoop.h"
#include "playback/ParentalLock.h"
#include "playback/Player.h"
#include "playback/Selection.h"

#include <zviptv/DeferredReply.h>

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace zviptv::sim {

struct ServiceOptions
{
    PlayerOptions playback;
    PesFilter filter;
    std::size_t awaitedSubscribers = 0; ///< play begins when so many applications have subscribed
    std::string guide;                  ///< XMLTV file; the stream's own event information when empty
    std::optional<std::int64_t> now; ///< what the guide's clock shows at the start; the real time when empty
    std::optional<int> ratingLimit;  ///< highest minimum age that plays without a PIN
    bool serviceLocked = false;
    bool lockStopsPushes = false; ///< nothing is pushed while the programme or the service is locked
    std::vector<FaultRule> faults;
    std::uint64_t faultSeed = 0; ///< of the faults with a probability
    RequestLog::Form log = RequestLog::Form::Quiet;
};

/// The service on the bus: owns the helper bus, answers on the endpoints, plays the stream. Lives on one
/// thread, whose main context has to be iterated.
class Service
{
public:
    /// @throws StreamError as Player does, GuideError when the guide cannot be read
    Service(ServiceOptions const& options, MainLoop& loop);
    ~Service();
    Service(Service const&) = delete;
    Service& operator=(Service const&) = delete;

    /// Whether the bus could be reached.
    bool IsOnBus() { return !m_playerControlEnd.GetPublicName().empty(); }

    /// Begins to play and to show the status.
    void Start();

private:
    using Answerer = std::function<std::optional<CMessageBuffer>(Request const&)>;

    /// A request that is being worked on.
    struct Call
    {
        char const* type; ///< word of the endpoint
        std::string busName;
        CMessageBuffer message;
        std::chrono::steady_clock::time_point begin;
        Damage damage;
        std::optional<CDeferredReply> later; ///< set when the handler returns before the answer is there
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
    void NoteId(Request const& request);
    void Push(PesPacket const& pes);
    void PlayWhenAwaited();
    void PlayAfter(std::chrono::milliseconds delay);
    void Play();
    void ShowStatus();

    MainLoop& m_loop;
    std::size_t m_awaited;
    bool m_isStarted = false;
    bool m_isPlaying = false;
    bool m_isWoken = false;   ///< by the player; Play() comes
    std::uint64_t m_plan = 0; ///< number of the latest PlayAfter()
    bool m_lockStopsPushes;
    RequestLog m_log;
    Faults m_faults;
    Selection m_selection;
    ParentalLock m_lock;
    std::uint64_t m_packets = 0; ///< sent until the last status
    std::chrono::steady_clock::time_point m_statusAt;
    DataSubscriberService m_subscribers;
    Player m_player;
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

// SPDX-License-Identifier: MIT
#pragma once

#include "output/LiveLine.h"
#include "output/OutputFile.h"
#include "output/PidTraffic.h"
#include "session/EndpointWatch.h"
#include "session/Loop.h"
#include "session/ServiceWatch.h"
#include "session/Session.h"
#include "session/Subscription.h"

#include <json/value.h>

#include <chrono>
#include <optional>
#include <string>

namespace zviptv::ctl {

struct WatchOptions
{
    std::optional<std::chrono::milliseconds> duration;
    bool asJson = false;
};

/// The command `watch`: a long-running application that reports what it sees when the service leaves and
/// comes back.
class Watch
{
public:
    Watch(Session& session, WatchOptions options);

    /// Runs until the time is over or the user ends it. Throws a Failure if there is no service at that time;
    /// a problem that was reported and still lasts determines the exit code.
    ExitCode Run();

private:
    enum class State
    {
        Connected,
        ServiceLost, ///< the service has left, but the interface objects have not noticed yet
        Absent
    };

    void Connect();
    std::string DescribeState();
    void Subscribe();
    void ReportProblems();
    void Tick();
    void LastTick();
    void Report();
    void OnService(ServiceWatch::Event event);
    void OnEndpointClosed();
    void OnEvents();
    bool IsPlayerControlGone() const;
    void ReportLoss();
    void ReportFactory();
    void ReportSubscriber();
    void End();
    bool IsOver() const;
    ExitCode Finish();

    void ReportTrouble(Failure const& trouble);
    void PrintTrouble(std::string const& text);
    void Print(char const* event, std::string const& text);
    void Write(Json::Value const& json, std::string const& text);

    Session& m_session;
    WatchOptions const m_options;
    OutputFile m_out;
    LiveLine m_live;
    Loop m_loop;
    State m_state = State::Absent;
    bool m_isServicePresent = true;
    bool m_isBusClosed = false;
    bool m_isEnding = false;
    std::optional<std::chrono::steady_clock::time_point> m_deadline;
    std::optional<Failure> m_trouble; ///< of the last query of the service
    std::optional<Failure> m_writeFailure;
    std::optional<EndpointWatch> m_endpoint;
    std::optional<Subscription> m_subscription;
    PidTraffic m_traffic;
    IPlayerControl* m_player = nullptr; ///< also valid after it has destroyed itself
};

} // namespace zviptv::ctl

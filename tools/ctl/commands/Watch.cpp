// SPDX-License-Identifier: MIT
#include "Watch.h"

#include "common/PrintableText.h"
#include "output/Answer.h"
#include "session/Explanations.h"

#include <csignal>
#include <cstdio>
#include <unistd.h>

namespace zviptv::ctl {

Watch::Watch(Session& session, WatchOptions options)
    : m_session(session), m_options(options), m_out("-"), m_live(m_options.asJson ? -1 : STDOUT_FILENO)
{
}

ExitCode Watch::Run()
{
    m_session.Start();
    auto const end = [this] { End(); };
    EventSource const interrupt = Loop::OnSignal(SIGINT, end);
    EventSource const terminate = Loop::OnSignal(SIGTERM, end);
    EventSource limit; // created before the timer of the seconds: if both are due, the limit runs first
    if (m_options.duration) {
        m_deadline = std::chrono::steady_clock::now() + *m_options.duration;
        limit = Loop::Every(*m_options.duration, [this] { LastTick(); });
    }
    EventSource const second = Loop::Every(std::chrono::seconds(1), [this] { Tick(); });
    ServiceWatch const watch(m_session.Connection(), [this](ServiceWatch::Event event) { OnService(event); });
    Connect();
    m_loop.Run([this](std::exception const& error) { Print("unreadable", UnreadableNotification(error)); },
               [this] { OnEvents(); });
    return Finish();
}

void Watch::Connect()
{
    m_subscription.reset();
    m_session.Release(); // a data subscriber that lost its service receives nothing
    if (m_trouble && IsOver()) {
        return; // the release may have taken this long
    }
    try {
        std::string const state = DescribeState();
        Subscribe();
        Print("connected", state);
        Print("subscribed", "subscribed to PES packets");
        m_state = State::Connected;
        m_trouble.reset();
    } catch (Failure const& failure) {
        m_state = State::Absent;
        ReportTrouble(failure);
    }
}

std::string Watch::DescribeState()
{
    auto& player = m_session.Get<IPlayerControl>();
    m_player = &player;
    EZVSourceState state = ZV_SOURCE_STATE_UNKNOWN;
    unsigned long long stc = 0;
    unsigned long long pts = 0;
    int denominator = 0;
    int numerator = 0;
    unsigned long now = 0;
    m_session.Ask("GetSourceState", [&] { return player.GetSourceState(state); });
    bool const hasClock = m_session.Ask("GetSTCCount", [&] { return player.GetSTCCount(stc); });
    bool const hasStart =
        m_session.Ask("GetFirstPTS", [&] { return player.GetFirstPTS(pts, denominator, numerator, now); });
    return "connected: source " + LowerName(state) + ", STC " + (hasClock ? std::to_string(stc) : "-") +
           ", first PTS " + (hasStart ? std::to_string(pts) : "-");
}

void Watch::Subscribe()
{
    m_endpoint.emplace(m_session.Connection());
    ctl::Subscribe(
        m_session, PacketKind::Pes,
        [this](Packet const& packet) { m_traffic.Add(packet.pid.value_or(0), packet.data.size()); },
        m_subscription);
    m_endpoint->Follow([this] { OnEndpointClosed(); });
}

void Watch::ReportProblems()
{
    if (m_endpoint) {
        for (std::string const& problem : m_endpoint->TakeProblems()) {
            PrintTrouble(problem);
        }
    }
}

void Watch::Tick()
{
    ReportProblems();
    if (IsOver()) {
        return;
    }
    m_traffic.Measure();
    if (m_state == State::Absent && m_isServicePresent) {
        Connect();
    }
    if (m_state == State::Connected && !IsOver()) {
        Report();
    }
}

/// Runs at the deadline. It does not call a service that does not answer, which would delay the end.
void Watch::LastTick()
{
    ReportProblems();
    if (m_state == State::Connected && !m_isEnding && !m_session.Hangs()) {
        m_traffic.Measure();
        Report();
    }
    End();
}

void Watch::Report()
{
    EZVSourceState state = ZV_SOURCE_STATE_UNKNOWN;
    unsigned long long stc = 0;
    bool hasState = false;
    bool hasClock = false;
    try {
        auto& player = m_session.Get<IPlayerControl>();
        m_session.Ask("GetSourceState", [&] { return player.GetSourceState(state); });
        hasState = true;
        hasClock = m_session.Ask("GetSTCCount", [&] { return player.GetSTCCount(stc); });
        m_trouble.reset();
    } catch (Failure const& failure) {
        if (failure.Code() != ExitCode::NoService) { // the loss is reported step by step
            ReportTrouble(failure);
        }
    }
    std::string const text = LowerName(state) + ", STC " + (hasClock ? std::to_string(stc) : "-") + ", ";
    if (m_live.IsTerminal()) {
        m_live.Show(text + m_traffic.Total(), m_traffic.Rates());
        return;
    }
    Json::Value json(Json::objectValue);
    json["event"] = "tick";
    json["sourceState"] = hasState ? ToJson(state) : Json::Value();
    json["stc"] = hasClock ? ToJson(stc) : Json::Value();
    m_traffic.AddTo(json);
    Write(json, text + "PES " + m_traffic.Text());
}

void Watch::OnService(ServiceWatch::Event event)
{
    m_isServicePresent = event == ServiceWatch::Event::Present;
    if (!m_isServicePresent) {
        m_trouble.reset();
    }
    if (event == ServiceWatch::Event::BusClosed) {
        m_isBusClosed = true;
        m_loop.Quit();
    } else if (event == ServiceWatch::Event::Gone && m_state == State::Connected) {
        m_state = State::ServiceLost;
        Print("lost", "the service left the bus: no more PES packets arrive");
    }
}

/// Connects again every second: the helper bus may then return another connection.
void Watch::OnEndpointClosed()
{
    if (m_state == State::Connected) {
        m_state = State::Absent;
        ReportTrouble(Failure(ExitCode::NoService, EndpointClosed(m_endpoint->Name())));
    }
}

void Watch::OnEvents()
{
    if (m_state == State::ServiceLost && IsPlayerControlGone()) {
        ReportLoss();
        m_state = State::Absent;
        Print("waiting", "waiting for the service to come back");
    }
    if (m_state != State::Connected && m_isServicePresent && !m_trouble && !IsOver()) {
        Print("back", "the service is back: making new objects");
        Connect();
    }
}

/// Makes a call on it to find out; a call to a service that has left fails at once.
bool Watch::IsPlayerControlGone() const
{
    EZVSourceState state = ZV_SOURCE_STATE_UNKNOWN;
    m_player->GetSourceState(state);
    return ZVGetLastFailure().kind == ZV_FAILURE_GONE;
}

void Watch::ReportLoss()
{
    Print("player-control-gone",
          "the player control object destroyed itself: its calls fail until it is created again");
    ReportFactory();
    ReportSubscriber();
}

void Watch::ReportFactory()
{
    IPlayerControl* player = nullptr;
    Handle const& handle = m_session.HandleOfCalls();
    CIPTVServiceAPI::CreatePlayerControl(handle.profile, handle.id, &player);
    if (player == nullptr) {
        Print("factory-refuses", "CreatePlayerControl now returns null: no service runs");
    } else {
        Print("factory-works", "CreatePlayerControl already returns a new object");
    }
}

void Watch::ReportSubscriber()
{
    m_subscription->End(m_session.Get<IIPTVDataSubscriber>());
    ZVFailure const& failure = ZVGetLastFailure();
    if (failure.kind != ZV_FAILURE_NONE) {
        Print("subscriber-fails",
              std::string("the data subscriber stays, but its calls fail: UnSubscribeForPES was not sent (") +
                  failure.message + ")");
    }
}

/// First ends the live line, because the terminal shows Ctrl-C after it.
void Watch::End()
{
    m_live.End();
    m_isEnding = true;
    m_loop.Quit();
}

bool Watch::IsOver() const
{
    return m_isEnding || (m_deadline && std::chrono::steady_clock::now() >= *m_deadline);
}

ExitCode Watch::Finish()
{
    m_live.End();
    if (m_writeFailure) {
        throw Failure(*m_writeFailure);
    }
    if (m_isBusClosed) {
        throw Failure(ExitCode::NoAnswer, BusClosed);
    }
    if (m_state != State::Connected && !m_trouble) {
        throw Failure(ExitCode::NoService, "the service did not come back");
    }
    if (m_session.Hangs()) {
        m_session.Abandon();
    } else if (m_state == State::Connected) {
        m_subscription->End(m_session.Get<IIPTVDataSubscriber>());
    }
    return m_trouble ? m_trouble->Code() : ExitCode::Accepted;
}

/// Reports it once while it lasts.
void Watch::ReportTrouble(Failure const& trouble)
{
    if (!m_trouble || std::string(m_trouble->what()) != trouble.what()) {
        PrintTrouble(trouble.what());
    }
    m_trouble = trouble;
}

/// Also prints it to standard error, unless a terminal would then show it twice.
void Watch::PrintTrouble(std::string const& text)
{
    Print("trouble", text);
    if (!m_live.IsTerminal()) {
        std::fprintf(stderr, "zviptvctl: %s\n", PrintableText(text).c_str());
    }
}

void Watch::Print(char const* event, std::string const& text)
{
    Json::Value json(Json::objectValue);
    json["event"] = event;
    json["text"] = ToJson(text);
    m_live.Erase();
    Write(json, PrintableText(text));
}

void Watch::Write(Json::Value const& json, std::string const& text)
{
    std::string const line = (m_options.asJson ? Compact(json) : text) + "\n";
    try {
        if (!m_writeFailure && m_out.Write(line.data(), line.size())) {
            return;
        }
    } catch (Failure const& failure) {
        m_writeFailure = failure;
    }
    m_loop.Quit(); // also if the output is no longer read
}

} // namespace zviptv::ctl

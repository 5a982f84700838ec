#include "Watch.h"

#include "Answer.h"

#include <csignal>
#include <unistd.h>
#include <utility>

namespace zviptv::ctl {

Watch::Watch(Session& session, WatchOptions options)
    : m_session(session), m_options(std::move(options)), m_out("-"),
      m_live(m_options.asJson ? -1 : STDOUT_FILENO)
{
}

ExitCode Watch::Run()
{
    m_session.Start();
    auto const end = [this] { m_loop.Quit(); };
    EventSource const interrupt = Loop::OnSignal(SIGINT, end);
    EventSource const terminate = Loop::OnSignal(SIGTERM, end);
    EventSource const limit = m_options.duration ? Loop::Every(*m_options.duration, end) : EventSource();
    EventSource const second = Loop::Every(std::chrono::seconds(1), [this] { Tick(); });
    ServiceWatch const watch(m_session.Connection(), [this](ServiceWatch::Event event) { OnService(event); });
    Connect();
    m_loop.Run(
        [this](std::exception const& error) {
            Say("unreadable", std::string("a notification cannot be read (") + error.what() + ")");
        },
        [this] { OnEvents(); });
    Conclude();
    return ExitCode::Accepted;
}

void Watch::Connect()
{
    m_subscription.reset();
    m_session.Release(); // a data subscriber that lost its service stays deaf
    m_session.Log().TakePlayerControlGone();
    try {
        Introduce();
        Subscribe();
        m_state = State::Connected;
        m_lastTrouble.clear();
    } catch (Failure const& failure) {
        m_state = State::Away;
        if (m_lastTrouble != failure.what()) {
            m_lastTrouble = failure.what();
            Say("trouble", m_lastTrouble);
        }
    }
}

void Watch::Introduce()
{
    auto& player = m_session.Get<IPlayerControl>();
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
    Say("connected", "connected: source " + LowerName(state) + ", STC " +
                         (hasClock ? std::to_string(stc) : "-") + ", first PTS " +
                         (hasStart ? std::to_string(pts) : "-"));
}

void Watch::Subscribe()
{
    auto& subscriber = m_session.Get<IIPTVDataSubscriber>();
    m_session.Ask("SubscribeForPES", [&] {
        m_subscription.emplace(subscriber, PacketKind::Pes, [this](Packet const& packet) {
            m_traffic.Add(packet.pid.value_or(0), packet.data.size());
        });
        return true;
    });
    Say("subscribed", "subscribed to PES packets");
}

void Watch::Tick()
{
    m_traffic.Measure();
    if (m_state == State::Away && m_isServicePresent) {
        Connect();
    }
    if (m_state != State::Connected) {
        m_live.Show("waiting for the service");
        return;
    }
    Json::Value json(Json::objectValue);
    json["event"] = "tick";
    std::string text;
    try {
        auto& player = m_session.Get<IPlayerControl>();
        EZVSourceState state = ZV_SOURCE_STATE_UNKNOWN;
        unsigned long long stc = 0;
        m_session.Ask("GetSourceState", [&] { return player.GetSourceState(state); });
        bool const hasClock = m_session.Ask("GetSTCCount", [&] { return player.GetSTCCount(stc); });
        json["sourceState"] = ToJson(state);
        json["stc"] = hasClock ? ToJson(stc) : Json::Value();
        text = LowerName(state) + ", STC " + (hasClock ? std::to_string(stc) : "-");
    } catch (Failure const& failure) {
        json["sourceState"] = Json::Value();
        json["stc"] = Json::Value();
        text = failure.what();
    }
    m_traffic.AddTo(json);
    text += ", PES " + m_traffic.Text();
    if (m_live.IsTerminal()) {
        m_live.Show(text);
    } else {
        Write(json, text);
    }
}

void Watch::OnService(ServiceWatch::Event event)
{
    m_isServicePresent = event == ServiceWatch::Event::Present;
    m_lastTrouble = m_isServicePresent ? m_lastTrouble : "";
    if (event == ServiceWatch::Event::BusClosed) {
        m_isBusClosed = true;
        m_loop.Quit();
    } else if (event == ServiceWatch::Event::Gone && m_state == State::Connected) {
        m_state = State::Losing;
        Say("lost", "the service left the bus: no more PES packets come");
    }
}

void Watch::OnEvents()
{
    if (m_state == State::Losing && m_session.Log().TakePlayerControlGone()) {
        TellLoss();
        m_state = State::Away;
        Say("waiting", "waiting for the service to come back");
    }
    if (m_state != State::Connected && m_isServicePresent && m_lastTrouble.empty()) {
        Say("back", "the service is back: making new objects");
        Connect();
    }
}

void Watch::TellLoss()
{
    Say("player-control-gone", "the player control object destroyed itself: pointers to it are invalid now");
    TellFactory();
    TellSubscriber();
}

void Watch::TellFactory()
{
    m_session.Log().TakeFactoryRefusal();
    IPlayerControl* player = nullptr;
    Handle const& handle = m_session.HandleOfCalls();
    CIPTVServiceAPI::CreatePlayerControl(handle.profile, handle.id, &player);
    std::string const line = m_session.Log().TakeFactoryRefusal();
    if (player == nullptr) {
        Say("factory-refuses", "CreatePlayerControl now gives null; the library's log says \"" + line +
                                   "\": the service does not run");
    } else {
        Say("factory-works", "CreatePlayerControl gives a new object already");
    }
}

void Watch::TellSubscriber()
{
    LogCollector& log = m_session.Log();
    log.ForgetCall();
    m_subscription->End(m_session.Get<IIPTVDataSubscriber>());
    if (log.SendFailed()) {
        Say("subscriber-fails",
            "the data subscriber stays, but its calls fail: UnSubscribeForPES was not sent (" + log.Reason() +
                ")");
    }
}

void Watch::Conclude()
{
    m_live.Erase();
    if (m_writeFailure) {
        throw Failure(*m_writeFailure);
    }
    if (m_isBusClosed) {
        throw Failure(ExitCode::NoAnswer, "the bus closed the connection; see whether it still runs");
    }
    if (m_state != State::Connected) {
        throw Failure(ExitCode::NoService,
                      m_lastTrouble.empty() ? "the service did not come back" : m_lastTrouble);
    }
    m_subscription->End(m_session.Get<IIPTVDataSubscriber>());
}

void Watch::Say(char const* event, std::string const& text)
{
    Json::Value json(Json::objectValue);
    json["event"] = event;
    json["text"] = ToJson(text);
    m_live.Erase();
    Write(json, text);
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
    m_loop.Quit(); // also when nobody reads it any more
}

} // namespace zviptv::ctl

#include "Service.h"

#include <zviptv/IPTVServiceAPI.h>
#include <zviptv/ProxyDBusHelper.h>

#include <cstdio>
#include <memory>
#include <utility>

namespace zviptv::sim {

namespace type = protocol::type;

namespace {

constexpr std::chrono::milliseconds StatusPeriod{1000};

/// The guide's clock: runs on from `start`, or shows the real time.
ProgramGuideService::Clock ClockFrom(std::optional<std::int64_t> start)
{
    std::int64_t const offset = start ? *start - std::time(nullptr) : 0;
    return [offset] { return std::time(nullptr) + offset; };
}

} // namespace

Service::Service(ServiceOptions const& options, MainLoop& loop)
    : m_loop(loop), m_faults(options.faults), m_log(options.log),
      m_lock(options.ratingLimit, options.serviceLocked), m_subscribers(options.filter),
      m_player(options.playback, [this](PesPacket const& pes) { m_subscribers.Push(pes); }),
      m_programGuide(m_player, ClockFrom(options.now)), m_playerControl(m_player, m_selection),
      m_broadcastData(m_player, m_selection, m_lock),
      m_applications([this](std::string const& busName) { m_programGuide.Forget(busName); }),
      m_playerControlEnd(type::PlayerControl, HandlerOf(type::PlayerControl,
                                                        [this](Request const& request) {
                                                            return m_playerControl.Answer(request);
                                                        })),
      m_broadcastDataEnd(type::BroadcastData, HandlerOf(type::BroadcastData,
                                                        [this](Request const& request) {
                                                            m_lock.Follow(m_programGuide.PresentMinimumAge());
                                                            return m_broadcastData.Answer(request);
                                                        })),
      m_subscriberEnd(type::DataSubscriber,
                      HandlerOf(type::DataSubscriber,
                                [this](Request const& request) {
                                    return m_subscribers.Answer(request, CProxyDBusHelper::GetSenderName());
                                })),
      m_programGuideEnd(type::ProgramGuide, HandlerOf(type::ProgramGuide, [this](Request const& request) {
                            return m_programGuide.Answer(request, CProxyDBusHelper::GetSenderName());
                        }))
{
    if (!options.guide.empty()) {
        GuideWarnings const warnings = m_programGuide.Load(options.guide);
        for (std::string const& warning : warnings.First()) {
            std::fprintf(stderr, "zviptv-sim: %s: %s\n", options.guide.c_str(), warning.c_str());
        }
    }
    m_player.SetPacketListener([this](TsPacket const& packet) { m_programGuide.Push(packet); });
    IConnectionHelper* helper = nullptr;
    CIPTVServiceAPI::CreateConnectionHelper(&helper);
    helper->SetDbusSignalCb(Announced, this);
}

Service::~Service()
{
    CIPTVServiceAPI::DestroyConnectionHelper();
}

void Service::Start()
{
    Play();
    if (m_log.WantsStatus()) {
        m_loop.After(StatusPeriod, [this] { ShowStatus(); });
    }
}

/// Advances the player and comes back when it has more to do.
void Service::Play()
{
    if (std::optional<std::chrono::milliseconds> const wait = m_player.Advance()) {
        m_loop.After(*wait, [this] { Play(); });
    } else {
        std::fputs("zviptv-sim: the stream has ended; the service goes on answering\n", stderr);
    }
}

void Service::ShowStatus()
{
    DataSubscriberService::Counts const counts = m_subscribers.Count();
    m_log.Write(RequestLog::Status{m_applications.Count(), counts.subscribers, counts.sent - m_packets,
                                   counts.dropped});
    m_packets = counts.sent;
    m_loop.After(StatusPeriod, [this] { ShowStatus(); });
}

std::string Service::Announced(std::string busName, std::string type, std::string add, void* self)
{
    return static_cast<Service*>(self)->Partner(busName, type, add == "y");
}

std::string Service::Partner(std::string const& busName, std::string const& type, bool comesUp)
{
    Endpoint* const endpoint = type == type::PlayerControl    ? &m_playerControlEnd
                               : type == type::BroadcastData  ? &m_broadcastDataEnd
                               : type == type::DataSubscriber ? &m_subscriberEnd
                               : type == type::ProgramGuide   ? &m_programGuideEnd
                                                              : nullptr;
    if (endpoint == nullptr) {
        return std::string();
    }
    comesUp ? m_applications.Add(busName, type) : m_applications.Remove(busName, type);
    if (endpoint == &m_subscriberEnd) {
        comesUp ? m_subscribers.Add(busName) : m_subscribers.Remove(busName);
    }
    return endpoint->GetPublicName();
}

Endpoint::Handler Service::HandlerOf(char const* type, Answerer answer)
{
    return [this, type, answer = std::move(answer)](CMessageBuffer& message) {
        return Handle(type, message, answer);
    };
}

/// Answers one request, with the faults that were asked for, and shows it.
CMessageBuffer Service::Handle(char const* type, CMessageBuffer const& message, Answerer const& answer)
{
    auto const begin = std::chrono::steady_clock::now();
    Request const request(message);
    std::string const function = request.Function();
    CMessageBuffer const honest = answer(request).value_or(Reply(false));
    CMessageBuffer const reply = m_faults.Spoil(function, honest);
    std::chrono::milliseconds const delay = m_faults.Delay(function);
    std::string note;
    bool answered = false;
    if (m_faults.IsDropped(function)) {
        CDeferredReply::Take();
        note = "drop";
    } else if (m_faults.IsError(function)) {
        CDeferredReply::Take().SendError("org.corvel.zviptvapi.Error.Injected",
                                         "An error as asked for with --fault");
        note = "error";
    } else {
        answered = true;
        if (delay.count() > 0) {
            note = "delay:" + std::to_string(delay.count());
            auto const deferred = std::make_shared<CDeferredReply>(CDeferredReply::Take());
            m_loop.After(delay, [deferred, reply] { deferred->Send(reply); });
        }
    }
    m_log.Write(RequestLog::Entry{
        type, CProxyDBusHelper::GetSenderName(), message, answered ? &reply : nullptr, note,
        std::chrono::duration_cast<std::chrono::microseconds>(std::chrono::steady_clock::now() - begin)});
    return reply;
}

} // namespace zviptv::sim

// SPDX-License-Identifier: MIT
#include "Service.h"

#include "glib/Owned.h"

#include <zviptv/IPTVServiceAPI.h>
#include <zviptv/ProxyDBusHelper.h>

#include <cmath>
#include <memory>
#include <utility>

namespace zviptv::sim {

namespace type = protocol::type;

namespace {

constexpr std::chrono::milliseconds StatusPeriod{1000};
constexpr char DropNote[] = "drop";
constexpr char ErrorNote[] = "error";
constexpr char InjectedError[] = "org.corvel.zviptvapi.Error.Injected";
constexpr char InjectedText[] = "An error as asked for with --fault";

} // namespace

Service::Service(ServiceOptions const& options, MainLoop& loop)
    : m_loop(loop), m_options(options), m_awaited(options.awaitedSubscribers),
      m_clock(options.playback.speed, options.now), m_faults(options.faults), m_log(options.log),
      m_lock(options.ratingLimit, options.serviceLocked), m_subscribers(options.filter, loop),
      m_player(options.playback, m_clock, [this](PesPacket const& pes) { m_subscribers.Push(pes); }),
      m_programmeGuide(
          m_player, [this] { return m_clock.UnixTime(); }, loop,
          [this](std::string const& text) { m_log.Say(text); }),
      m_playerControl(m_player, m_selection), m_broadcastData(m_player, m_selection, m_lock),
      m_applications([this](std::string const& busName) {
          m_programmeGuide.Forget(busName);
          m_onChange();
      }),
      m_playerControlEnd(type::PlayerControl, HandlerOf(type::PlayerControl,
                                                        [this](Request const& request) {
                                                            return m_playerControl.Answer(request);
                                                        })),
      m_broadcastDataEnd(type::BroadcastData, HandlerOf(type::BroadcastData,
                                                        [this](Request const& request) {
                                                            m_lock.Follow(m_programmeGuide.Present());
                                                            return m_broadcastData.Answer(request);
                                                        })),
      m_subscriberEnd(type::DataSubscriber, HandlerOf(type::DataSubscriber,
                                                      [this](Request const& request) {
                                                          auto const reply = m_subscribers.Answer(request);
                                                          PlayWhenAwaited();
                                                          return reply;
                                                      })),
      m_programmeGuideEnd(type::ProgramGuide,
                          [this](CMessageBuffer& message) { return AnswerGuide(message); })
{
    if (!options.guide.empty()) {
        m_programmeGuide.Load(options.guide);
    }
    m_player.SetPacketListener([this](TsPacket const& packet) { m_programmeGuide.Push(packet); });
    m_player.SetProgrammeListener([this](Programme const& next) {
        m_selection.Follow(m_player, next);
        m_onChange();
    });
    m_player.SetInputListener([this] { m_programmeGuide.ForgetEvents(); });
    m_player.SetWakeUp([this] {
        if (m_isPlaying && !std::exchange(m_isWoken, true)) {
            PlayAfter(std::chrono::milliseconds(0));
        }
    });
}

void Service::Announce()
{
    m_loop.CatchSignals(); // applications are about to know of the service: it has to end in order now
    IConnectionHelper* helper = nullptr;
    CIPTVServiceAPI::CreateConnectionHelper(&helper);
    helper->SetDbusSignalCb(Announced, this);
}

Service::~Service()
{
    CIPTVServiceAPI::DestroyConnectionHelper();
}

void Service::ShowStatus()
{
    DataSubscriberService::Counts counts = m_subscribers.Count();
    auto const now = std::chrono::steady_clock::now();
    double const seconds = std::chrono::duration<double>(now - m_statusAt).count();
    auto const rate = std::llround(static_cast<double>(counts.sent - m_packets) / seconds);
    m_packets = counts.sent;
    m_statusAt = now;
    m_lock.Follow(m_programmeGuide.Present());
    m_log.Write(RequestLog::Status{m_applications.Count(), static_cast<std::uint64_t>(rate), counts.dropped,
                                   std::move(counts.subscribers), m_selection.appId,
                                   !m_selection.audioMutedBy.empty(), !m_selection.videoMutedBy.empty(),
                                   m_lock.IsProgrammeLocked() || m_lock.IsServiceLocked(),
                                   m_player.Counters()});
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
                               : type == type::ProgramGuide   ? &m_programmeGuideEnd
                                                              : nullptr;
    if (endpoint == nullptr || g_dbus_is_unique_name(busName.c_str()) == FALSE) {
        return std::string(); // no name of a channel, and nothing that would be seen to leave
    }
    comesUp ? m_applications.Add(busName, type) : m_applications.Remove(busName, type);
    m_onChange();
    if (endpoint == &m_programmeGuideEnd && !comesUp) {
        m_programmeGuide.Forget(busName);
    }
    if (endpoint == &m_subscriberEnd) {
        comesUp ? m_subscribers.Add(busName) : m_subscribers.Remove(busName);
    }
    return endpoint->GetPublicName();
}

Service::Call Service::Begin(char const* type, CMessageBuffer const& message)
{
    return Call{type, CProxyDBusHelper::GetSenderName(), message, std::chrono::steady_clock::now(), {}};
}

Endpoint::Handler Service::HandlerOf(char const* type, Answerer answer)
{
    return [this, type, answer = std::move(answer)](CMessageBuffer& message) {
        Call call = Begin(type, message);
        return Finish(call, answer(Request(message, call.busName)).value_or(Reply(false)));
    };
}

/// A guide file is loaded beside everything else and answered for when that is done.
CMessageBuffer Service::AnswerGuide(CMessageBuffer const& message)
{
    Call call = Begin(type::ProgramGuide, message);
    Request const request(message, call.busName);
    if (request.Function() != protocol::function::CloneUSBToTV) {
        CMessageBuffer const reply = m_programmeGuide.Answer(request).value_or(Reply(false));
        if (!m_applications.Has(call.busName)) {
            m_programmeGuide.Forget(call.busName); // nobody would tell when it goes
        }
        return Finish(call, reply);
    }
    call.later.emplace(CDeferredReply::Take());
    auto const waiting = std::make_shared<Call>(std::move(call));
    m_programmeGuide.Clone(Request(waiting->message, waiting->busName),
                           [this, waiting](Reply const& reply) { Finish(*waiting, reply); });
    return CMessageBuffer();
}

/// Answers one request, with the faults that were asked for, and shows it.
CMessageBuffer Service::Finish(Call& call, CMessageBuffer const& honest)
{
    Damage const damage = m_faults.To(Request(call.message, call.busName).Function(), m_clock.Shows());
    CMessageBuffer const reply = damage.Spoil(honest);
    std::string const note = Deliver(call, reply, damage);
    bool const answered = !damage.IsDrop() && !damage.IsError();
    RequestLog::Entry const entry{
        call.type,
        call.busName,
        call.message,
        answered ? &reply : nullptr,
        note,
        std::chrono::duration_cast<std::chrono::microseconds>(std::chrono::steady_clock::now() - call.begin)};
    m_log.Write(entry);
    m_onRequest(entry);
    m_onChange();
    return reply;
}

/// Sends the reply, unless the handler does by returning it. Returns what a fault made of that.
std::string Service::Deliver(Call& call, CMessageBuffer const& reply, Damage const& damage)
{
    bool const isLate = damage.Delay().count() > 0;
    if (!call.later && (damage.IsDrop() || damage.IsError() || isLate)) {
        call.later.emplace(CDeferredReply::Take());
    }
    if (damage.IsDrop()) {
        call.later->LeaveUnanswered();
        return DropNote;
    }
    if (!call.later) {
        return {};
    }
    auto const send = [later = std::make_shared<CDeferredReply>(std::move(*call.later)), reply,
                       isError = damage.IsError()] {
        isError ? later->SendError(InjectedError, InjectedText) : later->Send(reply);
    };
    if (!isLate) {
        send();
        return damage.IsError() ? ErrorNote : "";
    }
    m_loop.After(damage.Delay(), send);
    return "delay:" + std::to_string(damage.Delay().count()) + (damage.IsError() ? " error" : "");
}

} // namespace zviptv::sim

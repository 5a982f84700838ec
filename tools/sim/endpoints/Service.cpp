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

Service::Service(ServiceOptions const& options, MainLoop& loop)
    : m_loop(loop), m_options(options), m_awaited(options.awaitedSubscribers),
      m_clock(options.playback.speed, options.now), m_log(options.log),
      m_faults([this] { return m_clock.Shows(); }, options.faultSeed,
               [this, seed = options.faultSeed] {
                   m_log.WriteLine("faults are random; --fault-seed " + std::to_string(seed) +
                                   " repeats them");
               }),
      m_lock(options.ratingLimit, options.serviceLocked),
      m_subscribers(
          options.filter,
          [this](char const* function, std::string const& busName, bool followsHeld) {
              return FaultsOf(FaultRule::Target::Push, function, busName, followsHeld);
          },
          loop),
      m_player(options.playback, m_clock, [this](PesPacket const& pes) { Push(pes); }),
      m_tap(m_player, m_selection), m_programmeGuide(
                                        m_player, [this] { return m_clock.UnixTime(); }, loop,
                                        [this](std::string const& text) { m_log.WriteLine(text); }),
      m_playerControl(m_player, m_selection), m_broadcastData(m_player, m_selection, m_lock),
      m_applications([this](std::string const& busName) {
          m_programmeGuide.Forget(busName);
          m_onChange();
      }),
      m_playerControlEnd(type::PlayerControl, HandlerOf(type::PlayerControl,
                                                        [this](Request const& request) {
                                                            NoteId(request);
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
    LoadGuide();
    BeginReplay();
    AddFaultsOfOptions();
    m_player.SetPacketListener([this](TsPacket const& packet) { m_programmeGuide.Push(packet); });
    m_player.SetProgrammeListener([this](Programme const& next) {
        m_selection.Follow(m_player, next);
        m_tap.Restart();
        m_onChange();
    });
    if (m_options.isTapped) {
        m_player.SetPesListener([this](PesPacket const& pes, bool isPassedOver) {
            if (m_tap.Take(pes, isPassedOver)) {
                m_onChange();
            }
        });
    }
    m_player.SetInputListener([this] { m_programmeGuide.ForgetEvents(); });
    m_player.SetWakeUp([this] {
        if (m_isPlaying && !std::exchange(m_isWoken, true)) {
            PlayAfter(std::chrono::milliseconds(0));
        }
    });
}

void Service::Announce()
{
    m_loop.CatchSignals(); // applications can find the service from now on, so it must end in order
    IConnectionHelper* helper = nullptr;
    CIPTVServiceAPI::CreateConnectionHelper(&helper);
    helper->SetDbusSignalCb(Announced, this);
}

Service::~Service()
{
    CIPTVServiceAPI::DestroyConnectionHelper();
}

void Service::LoadGuide()
try {
    if (!m_options.guide.empty()) {
        m_programmeGuide.Load(m_options.guide);
    }
} catch (std::exception const& failure) {
    if (!m_options.guideMayFail) {
        throw;
    }
    m_log.WriteLine(std::string(failure.what()) + "; the service continues without this guide");
}

/// Sets the faults of the options, which replace all others.
void Service::AddFaultsOfOptions()
{
    m_faults.Clear();
    for (FaultRule const& fault : m_options.faults) {
        m_faults.Add(fault);
    }
}

void Service::NoteId(Request const& request)
{
    if (request.Function() == protocol::function::SetAppID) {
        m_applications.SetId(request.Sender(), request.Text(protocol::key::AppID));
    }
}

void Service::Push(PesPacket const& pes)
{
    if (m_options.lockStopsPushes) {
        m_lock.Follow(m_programmeGuide.Present());
        if (m_lock.IsProgrammeLocked() || m_lock.IsServiceLocked()) {
            return;
        }
    }
    m_subscribers.Push(pes);
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
    return static_cast<Service*>(self)->AnswerAnnouncement(busName, type, add == "y");
}

/// The return value is not sent if the answer was taken.
std::string Service::AnswerAnnouncement(std::string const& busName, std::string const& type, bool comesUp)
{
    Damage const damage = FaultsOf(FaultRule::Target::Announcement, FaultRule::Announcement, busName);
    std::string partner = damage.TakesEffect() ? Partner(busName, type, comesUp) : std::string();
    std::optional<Delivery> const recorded = AnnounceFromRecording(type, comesUp, partner);
    if (!damage.IsNone() || (recorded && !recorded->IsPlain())) {
        CMessageBuffer answer;
        answer.AddValue(protocol::key::DBusName, partner.c_str());
        std::optional<CDeferredReply> later(CDeferredReply::Take());
        Deliver(later, damage.Corrupt(answer), damage.IsNone() ? *recorded : DeliveryOf(damage), m_loop);
    }
    return partner;
}

std::string Service::Partner(std::string const& busName, std::string const& type, bool comesUp)
{
    Endpoint* const endpoint = type == type::PlayerControl    ? &m_playerControlEnd
                               : type == type::BroadcastData  ? &m_broadcastDataEnd
                               : type == type::DataSubscriber ? &m_subscriberEnd
                               : type == type::ProgramGuide   ? &m_programmeGuideEnd
                                                              : nullptr;
    if (endpoint == nullptr || g_dbus_is_unique_name(busName.c_str()) == FALSE) {
        return std::string(); // not the name of a channel: its loss could not be noticed
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

Damage Service::FaultsOf(FaultRule::Target target, std::string const& function, std::string const& busName,
                         bool followsHeld)
{
    return m_faults.To({target, function, busName, m_applications.IdOf(busName), followsHeld});
}

Service::Call Service::Begin(char const* type, CMessageBuffer const& message)
{
    std::string const busName = CProxyDBusHelper::GetSenderName();
    auto const now = std::chrono::steady_clock::now();
    Damage damage = FaultsOf(FaultRule::Target::Answer, Request(message, busName).Function(), busName);
    return Call{type, busName, message, now, std::move(damage), {}, {}, {}};
}

/// A request that is not carried out gets the answer of a refused one.
Endpoint::Handler Service::HandlerOf(char const* type, Answerer answer)
{
    return [this, type, answer = std::move(answer)](CMessageBuffer& message) {
        Call call = Begin(type, message);
        std::optional<CMessageBuffer> reply;
        if (call.damage.TakesEffect() && !(reply = AnswerFromRecording(call))) {
            reply = answer(Request(message, call.busName));
        }
        return Finish(call, reply.value_or(Reply(false)));
    };
}

/// A guide file is loaded in parallel, and the request is answered after that.
CMessageBuffer Service::AnswerGuide(CMessageBuffer const& message)
{
    Call call = Begin(type::ProgramGuide, message);
    Request const request(message, call.busName);
    if (!call.damage.TakesEffect()) {
        return Finish(call, Reply(false));
    }
    if (std::optional<CMessageBuffer> const recorded = AnswerFromRecording(call)) {
        return Finish(call, *recorded);
    }
    if (request.Function() != protocol::function::CloneUSBToTV) {
        CMessageBuffer const reply = m_programmeGuide.Answer(request).value_or(Reply(false));
        if (!m_applications.Has(call.busName)) {
            m_programmeGuide.Forget(call.busName); // its end would not be reported
        }
        return Finish(call, reply);
    }
    call.later.emplace(CDeferredReply::Take());
    auto const waiting = std::make_shared<Call>(std::move(call));
    m_programmeGuide.Clone(Request(waiting->message, waiting->busName),
                           [this, waiting](Reply const& reply) { Finish(*waiting, reply); });
    return CMessageBuffer();
}

/// Answers one request, with its faults, and shows it.
CMessageBuffer Service::Finish(Call& call, CMessageBuffer const& honest)
{
    Damage const& damage = call.damage;
    CMessageBuffer const reply = damage.Corrupt(honest);
    Delivery const delivery = damage.IsNone() ? call.delivery : DeliveryOf(damage);
    Deliver(call.later, reply, delivery, m_loop);
    RequestLog::Entry const entry{
        call.type,
        call.busName,
        call.message,
        delivery.IsAnswer() ? &reply : nullptr,
        NoteOf(damage),
        std::chrono::duration_cast<std::chrono::microseconds>(std::chrono::steady_clock::now() - call.begin),
        call.replayNote};
    m_log.Write(entry);
    m_onRequest(entry);
    m_onChange();
    return reply;
}

} // namespace zviptv::sim

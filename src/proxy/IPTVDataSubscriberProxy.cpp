// SPDX-License-Identifier: MIT
#include "proxy/IPTVDataSubscriberProxy.h"

#include "dbus/PeerChannelState.h"
#include "message/MessageAccess.h"
#include "proxy/AnnouncedSize.h"
#include "proxy/ServiceCall.h"

#include <zviptv/Protocol.h>

#include <cstdlib>
#include <ctime>
#include <optional>
#include <stdexcept>
#include <utility>
#include <vector>

namespace function = zviptv::protocol::function;
namespace key = zviptv::protocol::key;
using zviptv::MessageAccess;
using zviptv::SourceLocation;
using zviptv::Subscribers;

namespace {

constexpr int KeyTries = 100;

/// Returns a key that no subscriber has. The random number is seeded with the clock's second: within one
/// second, every attempt gets the same number.
template <typename Record>
std::optional<int> MakeKey(Subscribers<Record> const& subscribers)
{
    for (int i = 0; i < KeyTries; ++i) {
        auto seed = static_cast<unsigned int>(std::time(nullptr));
        int const candidate = rand_r(&seed);
        if (!subscribers.Contains(candidate)) {
            return candidate;
        }
    }
    return std::nullopt;
}

ZVCaption CaptionOf(CMessageBuffer& notification)
{
    ZVCaption caption{};
    int const size = zviptv::ReadInt32(notification, key::CaptionDataSize);
    caption.type = zviptv::ReadInt32(notification, key::CaptionType);
    zviptv::TakeAnnounced(caption.data, size, MessageAccess::TakeValue(notification, key::CaptionData),
                          key::CaptionDataSize);
    return caption;
}

/// Stores the bytes in `memory`.
ZVPESData PESOf(CMessageBuffer& notification, std::vector<std::uint8_t> memory)
{
    ZVPESData pes{};
    pes.data = std::move(memory);
    int const size = zviptv::ReadInt32(notification, key::PESDataSize);
    pes.type = zviptv::ReadInt32(notification, key::PESType);
    pes.pid = static_cast<std::int16_t>(zviptv::ReadInt32(notification, key::PESPID));
    pes.pts = static_cast<std::uint32_t>(zviptv::ReadInt64(notification, key::PESPTS));
    zviptv::TakeAnnounced(pes.data, size, MessageAccess::TakeValue(notification, key::PESData),
                          key::PESDataSize);
    return pes;
}

/// Returns the result of `read` for a notification. If `read` throws, the failure is that of the
/// notification.
template <typename Read>
auto ReadAs(char const* name, Read read)
{
    try {
        return read();
    } catch (std::logic_error const&) {
        zviptv::NameFailedFunction(name);
        throw;
    }
}

} // namespace

CIPTVDataSubscriberProxy::SubscriberSession::~SubscriberSession()
{
    zviptv::ChannelAccess::Withdraw(Channel());
    WaitForCallbacks();
}

void CIPTVDataSubscriberProxy::SubscriberSession::Leave()
{
    Session::Leave();
    caption.Close();
    pes.Close();
}

CIPTVDataSubscriberProxy& CIPTVDataSubscriberProxy::m_Only()
{
    static CIPTVDataSubscriberProxy& only = *new CIPTVDataSubscriberProxy;
    return only;
}

CIPTVDataSubscriberProxy* CIPTVDataSubscriberProxy::Instance(IPTVHandle handle)
{
    ZV_LOG_ENTRY();
    CIPTVDataSubscriberProxy& only = m_Only();
    auto const make = [handle, where = ZV_LOG_HERE]() -> SessionPointer {
        if (!zviptv::IsServiceRunning(where)) {
            return nullptr;
        }
        auto session = std::make_shared<SubscriberSession>(zviptv::protocol::type::DataSubscriber, handle);
        session->Channel().SetCallback(m_MessageCb, m_NotificationCb, session.get());
        session->Connect(SourceLocation::Here(__FILE__, "CIPTVDataSubscriberProxy"));
        return session;
    };
    return zviptv::GetOrMakeSession(only.m_session, make) == nullptr ? nullptr : &only;
}

void CIPTVDataSubscriberProxy::Destroy()
{
    zviptv::EndSession(m_Only().m_session);
}

bool CIPTVDataSubscriberProxy::SubscribeForCaption(void (*callback)(ZVCaption&, void*), void* /*userData*/,
                                                   int& key)
{
    auto const session = m_session.Current();
    ZV_LOG_ENTRY();
    return m_Subscribe(session, &SubscriberSession::caption, callback, key, m_RequestCaptionCB, ZV_LOG_HERE);
}

bool CIPTVDataSubscriberProxy::UnsubscribeForCaption(int key)
{
    auto const session = m_session.Current();
    ZV_LOG_ENTRY();
    return m_Unsubscribe(session, &SubscriberSession::caption, key, m_RequestCaptionCB, ZV_LOG_HERE);
}

bool CIPTVDataSubscriberProxy::SubscribeForPES(void (*callback)(ZVPESData&, void*), void* /*userData*/,
                                               int& key)
{
    auto const session = m_session.Current();
    ZV_LOG_ENTRY();
    return m_Subscribe(session, &SubscriberSession::pes, callback, key, m_RequestPESCB, ZV_LOG_HERE);
}

bool CIPTVDataSubscriberProxy::UnSubscribeForPES(int key)
{
    auto const session = m_session.Current();
    ZV_LOG_ENTRY();
    return m_Unsubscribe(session, &SubscriberSession::pes, key, m_RequestPESCB, ZV_LOG_HERE);
}

template <typename Record>
bool CIPTVDataSubscriberProxy::m_Subscribe(SessionPointer const& session, Kind<Record> kind,
                                           void (*callback)(Record&, void*), int& key, Request request,
                                           SourceLocation const& where)
{
    zviptv::FailureScope const scope(where.function);
    if (session == nullptr) {
        return zviptv::RefuseWithoutSession(where);
    }
    if (callback == nullptr) {
        zviptv::WriteLog(ZV_LOG_ERROR, where, "No callback to subscribe");
        zviptv::SetFailure(ZV_FAILURE_INVALID_ARGUMENT, {"there is no callback to subscribe"});
        return false;
    }
    Subscribers<Record>& subscribers = session.get()->*kind;
    std::lock_guard<std::mutex> const changing(session->changing);
    if (session->IsLeaving()) {
        return zviptv::RefuseWithoutSession(where);
    }
    std::optional<int> const made = MakeKey(subscribers);
    if (!made) {
        zviptv::WriteLog(ZV_LOG_ERROR, where, "Can not make a key");
        zviptv::SetFailure(
            ZV_FAILURE_REFUSED,
            {"no key can be made for a second subscription within one second; try again in the "
             "next one"});
        return false;
    }
    zviptv::WriteLog(ZV_LOG_INFO, where, "Make a key : %d", *made);
    key = *made;
    subscribers.Add(key, callback);
    if (!subscribers.IsRequested()) {
        bool const isSent = request(session, true);
        subscribers.requestFailure.Keep();
        subscribers.SetRequested(true);
        return isSent || !session->IsLeaving();
    }
    subscribers.requestFailure.Recall();
    return true;
}

template <typename Record>
bool CIPTVDataSubscriberProxy::m_Unsubscribe(SessionPointer const& session, Kind<Record> kind, int key,
                                             Request request, SourceLocation const& where)
{
    zviptv::FailureScope const scope(where.function);
    if (session == nullptr) {
        return zviptv::RefuseWithoutSession(where);
    }
    Subscribers<Record>& subscribers = session.get()->*kind;
    std::lock_guard<std::mutex> const changing(session->changing);
    if (!subscribers.Contains(key)) {
        zviptv::WriteLog(ZV_LOG_ERROR, where, "Can not find a key");
        zviptv::SetFailure(ZV_FAILURE_INVALID_ARGUMENT,
                           {"there is no subscription with the key ", std::to_string(key)});
        return false;
    }
    zviptv::WriteLog(ZV_LOG_INFO, where, "find a key : %d", key);
    subscribers.Remove(key);
    if (subscribers.IsEmpty() && subscribers.IsRequested()) {
        if (!session->IsLeaving()) {
            request(session, false);
        }
        subscribers.SetRequested(false);
    }
    return false;
}

bool CIPTVDataSubscriberProxy::m_RequestCaptionCB(SessionPointer const& session, bool on)
{
    ZV_LOG_ENTRY();
    return zviptv::SendNotice(session, function::RequestCaptionCB, {{key::On, on}}, ZV_LOG_HERE);
}

bool CIPTVDataSubscriberProxy::m_RequestPESCB(SessionPointer const& session, bool on)
{
    ZV_LOG_ENTRY();
    return zviptv::SendNotice(session, function::RequestPESCB, {{key::On, on}}, ZV_LOG_HERE);
}

CMessageBuffer CIPTVDataSubscriberProxy::m_MessageCb(CMessageBuffer& message, void* /*session*/)
{
    ZV_LOG_ENTRY();
    return t_HandleMessage(message);
}

// Keeps the session during the dispatch: a callback may destroy the object, or another thread may replace it.
void CIPTVDataSubscriberProxy::m_NotificationCb(CMessageBuffer& notification, void* session)
{
    if (SessionPointer const held = static_cast<SubscriberSession*>(session)->weak_from_this().lock()) {
        t_HandleNotification(*held, notification);
    }
}

CMessageBuffer CIPTVDataSubscriberProxy::t_HandleMessage(CMessageBuffer& /*message*/)
{
    ZV_LOG_ENTRY();
    return CMessageBuffer();
}

void CIPTVDataSubscriberProxy::t_HandleNotification(SubscriberSession& session, CMessageBuffer& notification)
{
    SourceLocation const where = ZV_LOG_HERE;
    std::string const name = notification.GetValue(key::FunctionName);
    zviptv::WriteLog(ZV_LOG_DEBUG, where, "type : %s", name.c_str());
    if (name == function::CaptionCB && session.caption.IsRequested()) {
        ZVCaption caption = ReadAs(function::CaptionCB, [&] { return CaptionOf(notification); });
        session.caption.Deliver(caption, [&] { zviptv::WriteLog(ZV_LOG_DEBUG, where, "Call Caption CB"); });
    } else if (name == function::PESCB && session.pes.IsRequested()) {
        ZVPESData pes = ReadAs(function::PESCB, [&] { return PESOf(notification, session.pes.TakeSpare()); });
        session.pes.Deliver(pes, [&] {
            zviptv::WriteLog(ZV_LOG_DEBUG, where, "Call PES CB - type:%d, pid:%d, pts:%lu", pes.type, pes.pid,
                             static_cast<unsigned long>(pes.pts));
        });
        session.pes.KeepSpare(std::move(pes.data));
    }
}

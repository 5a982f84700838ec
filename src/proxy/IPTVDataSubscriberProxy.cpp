#include "proxy/IPTVDataSubscriberProxy.h"

#include "message/MessageAccess.h"
#include "proxy/AnnouncedSize.h"
#include "proxy/ProxyLifecycle.h"
#include "proxy/ServiceCall.h"

#include <zviptv/Protocol.h>

#include <cstdlib>
#include <ctime>
#include <optional>
#include <utility>
#include <vector>

namespace function = zviptv::protocol::function;
namespace key = zviptv::protocol::key;
using zviptv::MessageAccess;
using zviptv::SourceLocation;
using zviptv::Subscribers;

namespace {

constexpr char const* TypeWord = zviptv::protocol::type::DataSubscriber;
constexpr int KeyTries = 100;

/// A key that no subscriber has. The draw is seeded with the clock's second: within one second every try
/// draws the same number.
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
    int const size = std::stoi(notification.GetValue(key::CaptionDataSize));
    caption.type = std::stoi(notification.GetValue(key::CaptionType));
    zviptv::TakeAnnounced(caption.data, size, MessageAccess::TakeValue(notification, key::CaptionData));
    return caption;
}

/// The bytes go into `memory`.
ZVPESData PESOf(CMessageBuffer& notification, std::vector<std::uint8_t> memory)
{
    ZVPESData pes{};
    pes.data = std::move(memory);
    int const size = std::stoi(notification.GetValue(key::PESDataSize));
    pes.type = std::stoi(notification.GetValue(key::PESType));
    pes.pid = static_cast<std::int16_t>(std::stoi(notification.GetValue(key::PESPID)));
    pes.pts = static_cast<std::uint32_t>(std::stoll(notification.GetValue(key::PESPTS)));
    zviptv::TakeAnnounced(pes.data, size, MessageAccess::TakeValue(notification, key::PESData));
    return pes;
}

} // namespace

CIPTVDataSubscriberProxy* CIPTVDataSubscriberProxy::m_pInstance = nullptr;
pthread_rwlock_t CIPTVDataSubscriberProxy::m_rwlock = PTHREAD_RWLOCK_INITIALIZER;
IPTVHandle CIPTVDataSubscriberProxy::m_handleID = {IPTV_PROFILE_DEFAULT, 0};

CIPTVDataSubscriberProxy* CIPTVDataSubscriberProxy::Instance(IPTVHandle handle)
{
    ZV_LOG_ENTRY();
    return zviptv::GetOrCreateInstance(m_rwlock, m_pInstance, [handle, where = ZV_LOG_HERE] {
        if (zviptv::IsServiceRunning(where)) {
            m_pInstance = new CIPTVDataSubscriberProxy;
            m_handleID = handle;
        }
    });
}

void CIPTVDataSubscriberProxy::Destroy()
{
    zviptv::DestroyProxy(m_rwlock, m_pInstance);
}

CIPTVDataSubscriberProxy::CIPTVDataSubscriberProxy()
    : m_pDBusHelper(std::make_unique<CProxyDBusHelper>(TypeWord))
{
    m_pDBusHelper->SetCallback(m_MessageCb, m_NotificationCb, this);
    zviptv::ConnectToService(*m_pDBusHelper, TypeWord, ZV_LOG_HERE);
}

CIPTVDataSubscriberProxy::~CIPTVDataSubscriberProxy()
{
    m_subscriptions->ended = true;
    zviptv::LeaveService(m_pDBusHelper, TypeWord);
    m_subscriptions->caption.Close();
    m_subscriptions->pes.Close();
}

bool CIPTVDataSubscriberProxy::SubscribeForCaption(void (*callback)(ZVCaption&, void*), void* /*userData*/,
                                                   int& key)
{
    ZV_LOG_ENTRY();
    return m_Subscribe(&Subscriptions::caption, callback, key, &CIPTVDataSubscriberProxy::m_RequestCaptionCB,
                       ZV_LOG_HERE);
}

bool CIPTVDataSubscriberProxy::UnsubscribeForCaption(int key)
{
    ZV_LOG_ENTRY();
    return m_Unsubscribe(&Subscriptions::caption, key, &CIPTVDataSubscriberProxy::m_RequestCaptionCB,
                         ZV_LOG_HERE);
}

bool CIPTVDataSubscriberProxy::SubscribeForPES(void (*callback)(ZVPESData&, void*), void* /*userData*/,
                                               int& key)
{
    ZV_LOG_ENTRY();
    return m_Subscribe(&Subscriptions::pes, callback, key, &CIPTVDataSubscriberProxy::m_RequestPESCB,
                       ZV_LOG_HERE);
}

bool CIPTVDataSubscriberProxy::UnSubscribeForPES(int key)
{
    ZV_LOG_ENTRY();
    return m_Unsubscribe(&Subscriptions::pes, key, &CIPTVDataSubscriberProxy::m_RequestPESCB, ZV_LOG_HERE);
}

template <typename Record>
bool CIPTVDataSubscriberProxy::m_Subscribe(Kind<Record> kind, void (*callback)(Record&, void*), int& key,
                                           Request request, SourceLocation const& where)
{
    if (callback == nullptr) {
        zviptv::WriteLog(ZV_LOG_ERROR, where, "No callback to subscribe");
        return false;
    }
    auto const subscriptions = m_subscriptions;
    Subscribers<Record>& subscribers = subscriptions.get()->*kind;
    std::lock_guard<std::mutex> const changing(subscriptions->changing);
    std::optional<int> const made = MakeKey(subscribers);
    if (!made) {
        zviptv::WriteLog(ZV_LOG_ERROR, where, "Can not make a key");
        return false;
    }
    zviptv::WriteLog(ZV_LOG_INFO, where, "Make a key : %d", *made);
    key = *made;
    subscribers.Add(key, callback);
    if (!subscribers.IsRequested()) {
        if (!subscriptions->ended) {
            (this->*request)(true);
        }
        subscribers.SetRequested(true);
    }
    return true;
}

template <typename Record>
bool CIPTVDataSubscriberProxy::m_Unsubscribe(Kind<Record> kind, int key, Request request,
                                             SourceLocation const& where)
{
    auto const subscriptions = m_subscriptions;
    Subscribers<Record>& subscribers = subscriptions.get()->*kind;
    std::lock_guard<std::mutex> const changing(subscriptions->changing);
    if (!subscribers.Contains(key)) {
        zviptv::WriteLog(ZV_LOG_ERROR, where, "Can not find a key");
        return false;
    }
    zviptv::WriteLog(ZV_LOG_INFO, where, "find a key : %d", key);
    subscribers.Remove(key);
    if (subscribers.IsEmpty() && subscribers.IsRequested()) {
        if (!subscriptions->ended) {
            (this->*request)(false);
        }
        subscribers.SetRequested(false);
    }
    return false;
}

bool CIPTVDataSubscriberProxy::m_RequestCaptionCB(bool on)
{
    ZV_LOG_ENTRY();
    CMessageBuffer reply;
    return zviptv::Exchange(*m_pDBusHelper, function::RequestCaptionCB, &m_handleID, {{key::On, on}}, reply,
                            ZV_LOG_HERE);
}

bool CIPTVDataSubscriberProxy::m_RequestPESCB(bool on)
{
    ZV_LOG_ENTRY();
    CMessageBuffer reply;
    return zviptv::Exchange(*m_pDBusHelper, function::RequestPESCB, &m_handleID, {{key::On, on}}, reply,
                            ZV_LOG_HERE);
}

CMessageBuffer CIPTVDataSubscriberProxy::m_MessageCb(CMessageBuffer& message, void* self)
{
    ZV_LOG_ENTRY();
    return static_cast<CIPTVDataSubscriberProxy*>(self)->t_HandleMessage(message);
}

void CIPTVDataSubscriberProxy::m_NotificationCb(CMessageBuffer& notification, void* self)
{
    static_cast<CIPTVDataSubscriberProxy*>(self)->t_HandleNotification(notification);
}

CMessageBuffer CIPTVDataSubscriberProxy::t_HandleMessage(CMessageBuffer& /*message*/)
{
    ZV_LOG_ENTRY();
    return CMessageBuffer();
}

void CIPTVDataSubscriberProxy::t_HandleNotification(CMessageBuffer& notification)
{
    SourceLocation const where = ZV_LOG_HERE;
    std::string const name = notification.GetValue(key::FunctionName);
    zviptv::WriteLog(ZV_LOG_DEBUG, where, "type : %s", name.c_str());
    auto const subscriptions = m_subscriptions;
    if (name == function::CaptionCB && subscriptions->caption.IsRequested()) {
        ZVCaption caption = CaptionOf(notification);
        subscriptions->caption.Deliver(caption,
                                       [&] { zviptv::WriteLog(ZV_LOG_DEBUG, where, "Call Caption CB"); });
    } else if (name == function::PESCB && subscriptions->pes.IsRequested()) {
        ZVPESData pes = PESOf(notification, subscriptions->pes.TakeSpare());
        subscriptions->pes.Deliver(pes, [&] {
            zviptv::WriteLog(ZV_LOG_DEBUG, where, "Call PES CB - type:%d, pid:%d, pts:%lu", pes.type, pes.pid,
                             static_cast<unsigned long>(pes.pts));
        });
        subscriptions->pes.KeepSpare(std::move(pes.data));
    }
}

#pragma once

#include "log/Log.h"
#include "proxy/Subscribers.h"

#include <zviptv/IIPTVDataSubscriber.h>
#include <zviptv/ProxyDBusHelper.h>

#include <pthread.h>

#include <atomic>
#include <memory>
#include <mutex>

class CIPTVDataSubscriberProxy final : public IIPTVDataSubscriber
{
public:
    static CIPTVDataSubscriberProxy* Instance(IPTVHandle handle);
    static void Destroy();

    ~CIPTVDataSubscriberProxy() override;

    bool SubscribeForCaption(void (*callback)(ZVCaption&, void*), void* userData, int& key) override;
    bool UnsubscribeForCaption(int key) override;
    bool SubscribeForPES(void (*callback)(ZVPESData&, void*), void* userData, int& key) override;
    bool UnSubscribeForPES(int key) override;

    CProxyDBusHelper const& Channel() const { return *m_pDBusHelper; }

private:
    using Request = bool (CIPTVDataSubscriberProxy::*)(bool);

    /// Shared with the calls and dispatches under way: the proxy may be destroyed while a call waits for the
    /// service or for another call, and by the callbacks of a dispatch.
    struct Subscriptions
    {
        zviptv::Subscribers<ZVCaption> caption;
        zviptv::Subscribers<ZVPESData> pes;
        /// Held while a subscription is made or ended, so that the service is asked once and in order.
        std::mutex changing;
        /// The proxy is gone, and with it the channel to ask the service through.
        std::atomic<bool> ended{false};
    };
    template <typename Record>
    using Kind = zviptv::Subscribers<Record> Subscriptions::*;

    CIPTVDataSubscriberProxy();

    static CMessageBuffer m_MessageCb(CMessageBuffer& message, void* self);
    static void m_NotificationCb(CMessageBuffer& notification, void* self);
    CMessageBuffer t_HandleMessage(CMessageBuffer& message);
    void t_HandleNotification(CMessageBuffer& notification);

    bool m_RequestCaptionCB(bool on);
    bool m_RequestPESCB(bool on);

    template <typename Record>
    bool m_Subscribe(Kind<Record> kind, void (*callback)(Record&, void*), int& key, Request request,
                     zviptv::SourceLocation const& where);
    template <typename Record>
    bool m_Unsubscribe(Kind<Record> kind, int key, Request request, zviptv::SourceLocation const& where);

    static CIPTVDataSubscriberProxy* m_pInstance;
    static pthread_rwlock_t m_rwlock;
    static IPTVHandle m_handleID;

    std::unique_ptr<CProxyDBusHelper> m_pDBusHelper;
    std::shared_ptr<Subscriptions> m_subscriptions = std::make_shared<Subscriptions>();
};

// SPDX-License-Identifier: MIT
#pragma once

#include "proxy/Session.h"
#include "proxy/Subscribers.h"

#include <zviptv/IIPTVDataSubscriber.h>

#include <memory>
#include <mutex>

class CIPTVDataSubscriberProxy final : public IIPTVDataSubscriber
{
public:
    static CIPTVDataSubscriberProxy* Instance(IPTVHandle handle);
    static void Destroy();

    bool SubscribeForCaption(void (*callback)(ZVCaption&, void*), void* userData, int& key) override;
    bool UnsubscribeForCaption(int key) override;
    bool SubscribeForPES(void (*callback)(ZVPESData&, void*), void* userData, int& key) override;
    bool UnSubscribeForPES(int key) override;

private:
    /// A session with its subscriptions. It is the user data of the channel's callbacks.
    struct SubscriberSession : zviptv::Session, std::enable_shared_from_this<SubscriberSession>
    {
        using Session::Session;
        /// Lets a callback that has begun but does not hold the session yet see that the session ends.
        ~SubscriberSession();

        /// Also ends all subscriptions: a running dispatch finds no further subscriber.
        void Leave();

        zviptv::Subscribers<ZVCaption> caption;
        zviptv::Subscribers<ZVPESData> pes;
        /// Held while a subscription is made or ended, so that the service gets each request once and in
        /// order.
        std::mutex changing;
    };
    using SessionPointer = std::shared_ptr<SubscriberSession>;
    template <typename Record>
    using Kind = zviptv::Subscribers<Record> SubscriberSession::*;
    using Request = bool (*)(SessionPointer const& session, bool on);

    CIPTVDataSubscriberProxy() = default;

    /// The only object, which is never deleted.
    static CIPTVDataSubscriberProxy& m_Only();

    static CMessageBuffer m_MessageCb(CMessageBuffer& message, void* session);
    static void m_NotificationCb(CMessageBuffer& notification, void* session);
    static CMessageBuffer t_HandleMessage(CMessageBuffer& message);
    static void t_HandleNotification(SubscriberSession& session, CMessageBuffer& notification);

    static bool m_RequestCaptionCB(SessionPointer const& session, bool on);
    static bool m_RequestPESCB(SessionPointer const& session, bool on);

    template <typename Record>
    static bool m_Subscribe(SessionPointer const& session, Kind<Record> kind,
                            void (*callback)(Record&, void*), int& key, Request request,
                            zviptv::SourceLocation const& where);
    template <typename Record>
    static bool m_Unsubscribe(SessionPointer const& session, Kind<Record> kind, int key, Request request,
                              zviptv::SourceLocation const& where);

    zviptv::Sessions<SubscriberSession> m_session;
};

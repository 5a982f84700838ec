// SPDX-License-Identifier: MIT
/// @file
/// An endpoint, the base class of services.

#pragma once

#include <zviptv/Export.h>
#include <zviptv/MessageBuffer.h>

#include <memory>
#include <string>

class CProxyDBusHelper;

/// A general-purpose endpoint: owns one channel, sends through it and receives through two overridable hooks.
/// The service side of the interface is built from these.
///
/// The bus knows one object per type word in a process. Therefore the first endpoint of a type gets the calls
/// of all applications: CProxyDBusHelper::GetSenderName() returns the caller, and CDeferredReply answers
/// later. Further endpoints of this type only send: make one for each application that gets pushes. For each
/// of them, the log contains the line "Error while registering object".
///
/// Threads and lifetime are those of CProxyDBusHelper. Construct an endpoint on the thread that iterates the
/// main context: on another one, calls would reach a subclass while its constructor runs. A subclass that is
/// destroyed on another thread than the one that iterates the channel's context must call t_StopCallbacks()
/// first in its destructor, so that no hook runs on a partly destroyed object.
class ZVIPTV_API CCommonNative
{
public:
    /// `name` is the endpoint's type word, "PLAYERCONTROL" for example.
    explicit CCommonNative(std::string name);

    /// Stops the hooks, as t_StopCallbacks() does, and ends the channel.
    virtual ~CCommonNative();

    CCommonNative(CCommonNative const&) = delete;
    CCommonNative& operator=(CCommonNative const&) = delete;

    /// Binds the endpoint to the bus name `partner`. Returns true on success.
    bool Connect(std::string partner);

    /// The unique bus name of this end; empty without a bus.
    std::string GetPublicName();

    /// Sets the handler of the partner's loss; see CProxyDBusHelper::SetDisconnectNotiCB.
    void SetDisconnectNotiCB(void (*cb)(std::string partner, std::string own, void* userData),
                             void* userData);

    /// Sends a request without waiting; `reply` is never filled. Returns true if the request was sent.
    bool t_SendMessage(CMessageBuffer& request, CMessageBuffer& reply);

    /// Sends a notification to the partner. Returns true if it was queued.
    bool t_SendNotication(CMessageBuffer& msg);

protected:
    /// Answers an incoming call. The default answer is an empty message. It has no "result_internal";
    /// therefore calls of player control and broadcast data throw an exception in the application.
    virtual CMessageBuffer t_HandleMessage(CMessageBuffer& msg);

    /// Handles an incoming notification; the default drops it.
    virtual void t_HandleNotification(CMessageBuffer& msg);

    /// Stops the hooks: after it has returned, none runs on another thread, and none starts.
    void t_StopCallbacks();

    /// The channel, valid from the constructor to the destructor; for subclasses that need more of its
    /// functions than this class offers.
    std::unique_ptr<CProxyDBusHelper> m_pDBusHelper;

private:
    static CMessageBuffer m_MessageCb(CMessageBuffer& msg, void* user);
    static void m_NotificationCb(CMessageBuffer& msg, void* user);
};

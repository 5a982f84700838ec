// SPDX-License-Identifier: MIT
#include "ScriptedChannel.h"

#include "Fuzz.h"
#include "dbus/PeerChannelState.h"
#include "dbus/PeerMessage.h"
#include "message/MessageAccess.h"

#include <zviptv/ConnectionHelperDBusClient.h>
#include <zviptv/SystemLog.h>

#include <cstring>

using namespace zviptv;

namespace {

struct Script
{
    bool isRunning = true;
    std::deque<Owned<GVariant>> replies;
    bool refuses = false;
    void (*notify)(CMessageBuffer&, void*) = nullptr;
    void* userData = nullptr;
};

Script script;

/// Checks that a service receives the message of a proxy unchanged.
void CheckRequest(CMessageBuffer const& request)
{
    Error error;
    Owned<GVariant> const body = EncodePeerMessage(request, error);
    fuzz::Require(body != nullptr, "a proxy's request can be sent");
    CMessageBuffer arrived;
    fuzz::Require(DecodePeerMessage(body.get(), arrived, error), "a proxy's request can be read");
    fuzz::Require(arrived.GetValue("functionname") == request.GetValue("functionname"),
                  "and names its method");
}

} // namespace

void fuzz::ReadLog()
{
    ZVSetLogSink(
        [](EZVLogPriority, char const*, char const* line, void*) {
            Require(std::strstr(line, " > ") != nullptr, "a line of the log has its place");
        },
        nullptr);
}

void fuzz::SetServiceRunning(bool running)
{
    script.isRunning = running;
}

void fuzz::SetReplies(std::deque<Owned<GVariant>> replies, bool refuse)
{
    script.replies = std::move(replies);
    script.refuses = refuse;
}

void fuzz::Notify(GVariant* body)
{
    CMessageBuffer notification;
    Error error;
    if (DecodePeerMessage(body, notification, error) && script.notify != nullptr) {
        script.notify(notification, script.userData);
    }
}

// zviptvctl uses these names. If they were missing here, the shared library would be linked, and define all
// of its symbols twice.
char const* const CProxyDBusHelper::PROXY_DBUS_HELPER_OBJ_NAME = "/org/corvel/zviptvapi/DbusCommunication";
char const* const CProxyDBusHelper::PROXY_DBUS_HELPER_OBJ_IFACE = "org.corvel.zviptvapi.DbusCommunication";
char const* const CProxyDBusHelper::PROXY_DBUS_HELPER_OBJ_METHOD = "Send";

int CProxyDBusHelper::Connect(std::string /*partner*/)
{
    return 1;
}

void CProxyDBusHelper::SetCallback(CMessageBuffer (*)(CMessageBuffer&, void*),
                                   void (*notificationCb)(CMessageBuffer&, void*), void* userData)
{
    script.notify = notificationCb;
    script.userData = userData;
}

int CProxyDBusHelper::SendMessage(CMessageBuffer& request, CMessageBuffer& reply, int /*async*/)
{
    CheckRequest(request);
    if (script.replies.empty()) {
        reply = CMessageBuffer();
        reply.SetResult(0);
        return script.refuses ? 1 : 0;
    }
    Owned<GVariant> const body = std::move(script.replies.front());
    script.replies.pop_front();
    CMessageBuffer decoded;
    Error error;
    if (body == nullptr || !DecodePeerMessage(body.get(), decoded, error)) {
        return 0;
    }
    reply = std::move(decoded);
    return 1;
}

int CProxyDBusHelper::SendNotification(CMessageBuffer& message)
{
    CheckRequest(message);
    return 1;
}

bool CConnectionHelperDBusClient::CheckConnection()
{
    return script.isRunning;
}

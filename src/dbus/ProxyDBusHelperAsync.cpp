// SPDX-License-Identifier: MIT
#include <zviptv/ProxyDBusHelper.h>

#include "dbus/PeerChannelState.h"
#include "dbus/PeerMessage.h"
#include "dbus/SendFailure.h"
#include "dbus/UserData.h"
#include "failure/LastFailure.h"
#include "log/Log.h"

#include <algorithm>

using zviptv::Error;
using zviptv::FailureScope;
using zviptv::FailureUntouched;
using zviptv::Owned;

namespace {

/// What waits for a reply. GIO's callback owns it.
struct Waiting
{
    void (*completion)(CMessageBuffer* reply, void* userData);
    void* userData;
    int timeoutMs;
};
using WaitingData = zviptv::UserData<Waiting>;

// Needs no channel: the call is finished on the partner proxy it was made on, which it keeps alive.
void OnReply(GObject* source, GAsyncResult* result, void* userData)
{
    Waiting const waiting = WaitingData::Get(userData);
    WaitingData::Release(userData);
    FailureUntouched const untouched;
    CMessageBuffer reply;
    bool isAnswered = false;
    {
        FailureScope const scope("SendAsync");
        Error error;
        Owned<GVariant> const body(g_dbus_proxy_call_finish(G_DBUS_PROXY(source), result, error.Out()));
        isAnswered = body != nullptr && zviptv::DecodePeerMessage(body.get(), reply, error);
        if (error.Is(G_IO_ERROR_CANCELLED)) {
            ZV_LOG_DEBUG_LINE("Cancelled");
        } else if (error) {
            ZV_LOG_ERROR_LINE("Error while sending message [%d] %s", error.Code(), error.Message());
            if (body != nullptr) {
                zviptv::SetFailure(ZV_FAILURE_MALFORMED_REPLY, {error.Message()});
            } else {
                zviptv::SetSendFailure(error, "the request", waiting.timeoutMs);
            }
        }
    }
    waiting.completion(isAnswered ? &reply : nullptr, waiting.userData);
}

} // namespace

int CProxyDBusHelper::SendAsync(CMessageBuffer& request, int timeoutMs, GCancellable* cancellable,
                                void (*completion)(CMessageBuffer* reply, void* userData), void* userData)
{
    FailureScope const scope("SendAsync");
    void* const waiting = WaitingData::New({completion, userData, timeoutMs});
    int const isSent = zviptv::ChannelAccess::StartCall(*this, request, std::max(timeoutMs, -1), cancellable,
                                                        OnReply, waiting, ZV_LOG_HERE);
    if (isSent == 0) {
        WaitingData::Release(waiting);
    }
    return isSent;
}

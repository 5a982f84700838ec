// SPDX-License-Identifier: MIT
#include "proxy/Session.h"

#include "dbus/PeerChannelState.h"

#include <zviptv/ConnectionHelperDBusClient.h>
#include <zviptv/Protocol.h>

namespace zviptv {

Session::Session(char const* typeWord, std::optional<IPTVHandle> handle)
    : m_typeWord(typeWord), m_handle(handle), m_channel(typeWord)
{
}

void Session::Connect(SourceLocation const& where)
{
    CConnectionHelperDBusClient client;
    std::string const partner = client.Connect(m_channel.GetPublicName(), m_typeWord);
    WriteLog(ZV_LOG_ERROR, where, "partner's name: %s", partner.c_str());
    if (partner.empty()) {
        SetFailureUnlessSet(ZV_FAILURE_NO_SERVICE, {"the service has no endpoint for ", m_typeWord},
                            protocol::key::DBusName);
    } else if (!IsBusName(partner)) {
        SetMalformed(protocol::key::DBusName, "a bus name", partner);
    }
    m_channel.Connect(partner);
    m_connectFailure.Keep();
}

void Session::Leave()
{
    m_isLeaving = true;
    std::optional<CConnectionHelperDBusClient> client;
    if (ChannelAccess::IsOnLiveBus(m_channel)) {
        client.emplace();
        client->Disconnect(m_channel.GetPublicName(), m_typeWord);
        m_leaveFailure.Keep();
    }
    ChannelAccess::Withdraw(m_channel);
}

void Session::ExplainFailure() const
{
    if (m_isLeaving) {
        SetGone();
    } else {
        m_connectFailure.Recall();
    }
}

bool Session::IsOutdated() const
{
    return !ChannelAccess::IsOnPresentBus(m_channel);
}

void* Session::Identity() const
{
    return ChannelAccess::Gate(m_channel).get();
}

void Session::WaitForCallbacks()
{
    ChannelAccess::Gate(m_channel)->WaitForOthers();
}

bool IsServiceRunning(SourceLocation const& where)
{
    if (CConnectionHelperDBusClient::CheckConnection()) {
        return true;
    }
    WriteLog(ZV_LOG_ERROR, where, "iptv-serivce did not launched");
    return false;
}

} // namespace zviptv

// SPDX-License-Identifier: MIT
#include "dbus/HelperMessage.h"
#include "dbus/PeerChannelState.h"

#include <zviptv/ConnectionHelperDBusClient.h>

// The common part of channels that replace the library's channel and need no bus. The programs that link this
// define its partner, its messages, and whether a service runs.

using namespace zviptv;

CProxyDBusHelper::CProxyDBusHelper(std::string name) : m_state(std::make_unique<State>(this))
{
    m_state->m_name = std::move(name);
}

CProxyDBusHelper::~CProxyDBusHelper() = default;

void ChannelAccess::Withdraw(CProxyDBusHelper& channel)
{
    channel.m_state->m_gate->Refuse();
}

std::string CProxyDBusHelper::GetPublicName()
{
    return ":1.1";
}

void CProxyDBusHelper::SetDisconnectNotiCB(void (*)(std::string, std::string, void*), void*) {}

char const* const CConnectionHelperDBusClient::BUSNAME = helper::BusName;
char const* const CConnectionHelperDBusClient::METHOD = helper::Method;

CConnectionHelperDBusClient::CConnectionHelperDBusClient() = default;
CConnectionHelperDBusClient::~CConnectionHelperDBusClient() = default;

std::string CConnectionHelperDBusClient::Connect(std::string /*dbusname*/, std::string /*type*/)
{
    return ":1.2";
}

void CConnectionHelperDBusClient::Disconnect(std::string /*dbusname*/, std::string /*type*/) {}

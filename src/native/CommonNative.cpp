// SPDX-License-Identifier: MIT
#include <zviptv/CommonNative.h>

#include "dbus/PeerChannelState.h"
#include "log/Log.h"

#include <zviptv/ProxyDBusHelper.h>

#include <utility>

CCommonNative::CCommonNative(std::string name)
{
    ZV_LOG_ENTRY();
    m_pDBusHelper = std::make_unique<CProxyDBusHelper>(std::move(name));
    m_pDBusHelper->SetCallback(m_MessageCb, m_NotificationCb, this);
}

CCommonNative::~CCommonNative()
{
    ZV_LOG_ENTRY();
    t_StopCallbacks(); // so that a hook on another thread can still use the channel
    m_pDBusHelper.reset();
}

bool CCommonNative::Connect(std::string partner)
{
    return m_pDBusHelper->Connect(std::move(partner)) != 0;
}

std::string CCommonNative::GetPublicName()
{
    return m_pDBusHelper->GetPublicName();
}

void CCommonNative::SetDisconnectNotiCB(void (*cb)(std::string, std::string, void*), void* userData)
{
    ZV_LOG_ENTRY();
    m_pDBusHelper->SetDisconnectNotiCB(cb, userData);
}

bool CCommonNative::t_SendMessage(CMessageBuffer& request, CMessageBuffer& reply)
{
    ZV_LOG_ENTRY();
    return m_pDBusHelper->SendMessage(request, reply, 1) != 0;
}

bool CCommonNative::t_SendNotication(CMessageBuffer& msg)
{
    ZV_LOG_ENTRY();
    return m_pDBusHelper->SendNotification(msg) != 0;
}

CMessageBuffer CCommonNative::t_HandleMessage(CMessageBuffer& /*msg*/)
{
    ZV_LOG_ENTRY();
    return CMessageBuffer();
}

void CCommonNative::t_HandleNotification(CMessageBuffer& /*msg*/)
{
    ZV_LOG_ENTRY();
}

void CCommonNative::t_StopCallbacks()
{
    if (m_pDBusHelper == nullptr) {
        return;
    }
    zviptv::CallbackGate::Pointer const gate = zviptv::ChannelAccess::Gate(*m_pDBusHelper);
    gate->Refuse();
    gate->WaitForOthers();
}

CMessageBuffer CCommonNative::m_MessageCb(CMessageBuffer& msg, void* user)
{
    ZV_LOG_ENTRY();
    return static_cast<CCommonNative*>(user)->t_HandleMessage(msg);
}

void CCommonNative::m_NotificationCb(CMessageBuffer& msg, void* user)
{
    static_cast<CCommonNative*>(user)->t_HandleNotification(msg);
    ZV_LOG_INFO_LINE("Default handler");
}

#include "Service.h"

#include <zviptv/IPTVServiceAPI.h>
#include <zviptv/ProxyDBusHelper.h>

#include <utility>

namespace zviptv::sim {

Service::Service(PlayerOptions const& playback, PesFilter filter)
    : m_subscribers(std::move(filter)),
      m_player(playback, [this](PesPacket const& pes) { m_subscribers.Push(pes); }),
      m_playerControl(m_player, m_selection), m_broadcastData(m_player, m_selection, m_lock),
      m_playerControlEnd(protocol::type::PlayerControl,
                         [this](CMessageBuffer& message) {
                             return m_playerControl.Answer(Request(message)).value_or(Reply(false));
                         }),
      m_broadcastDataEnd(protocol::type::BroadcastData,
                         [this](CMessageBuffer& message) {
                             return m_broadcastData.Answer(Request(message)).value_or(Reply(false));
                         }),
      m_subscriberEnd(protocol::type::DataSubscriber, [this](CMessageBuffer& message) {
          return m_subscribers.Answer(Request(message), CProxyDBusHelper::GetSenderName())
              .value_or(Reply(false));
      })
{
    IConnectionHelper* helper = nullptr;
    CIPTVServiceAPI::CreateConnectionHelper(&helper);
    helper->SetDbusSignalCb(Announced, this);
}

Service::~Service()
{
    CIPTVServiceAPI::DestroyConnectionHelper();
}

std::string Service::Announced(std::string busName, std::string type, std::string add, void* self)
{
    return static_cast<Service*>(self)->Partner(busName, type, add == "y");
}

std::string Service::Partner(std::string const& busName, std::string const& type, bool comesUp)
{
    if (type == protocol::type::PlayerControl) {
        return m_playerControlEnd.GetPublicName();
    }
    if (type == protocol::type::BroadcastData) {
        return m_broadcastDataEnd.GetPublicName();
    }
    if (type == protocol::type::DataSubscriber) {
        comesUp ? m_subscribers.Add(busName) : m_subscribers.Remove(busName);
        return m_subscriberEnd.GetPublicName();
    }
    return std::string();
}

} // namespace zviptv::sim

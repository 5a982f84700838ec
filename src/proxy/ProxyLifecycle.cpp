#include "proxy/ProxyLifecycle.h"

#include <zviptv/ConnectionHelperDBusClient.h>
#include <zviptv/ProxyDBusHelper.h>

namespace zviptv {

bool IsServiceRunning(SourceLocation const& where)
{
    if (CConnectionHelperDBusClient::CheckConnection()) {
        return true;
    }
    WriteLog(ZV_LOG_ERROR, where, "iptv-serivce did not launched");
    return false;
}

void ConnectToService(CProxyDBusHelper& channel, char const* typeWord, SourceLocation const& where)
{
    CConnectionHelperDBusClient client;
    std::string const partner = client.Connect(channel.GetPublicName(), typeWord);
    WriteLog(ZV_LOG_ERROR, where, "partner's name: %s", partner.c_str());
    channel.Connect(partner);
}

void LeaveService(std::unique_ptr<CProxyDBusHelper>& channel, char const* typeWord)
{
    CConnectionHelperDBusClient client;
    client.Disconnect(channel->GetPublicName(), typeWord);
    channel.reset();
}

} // namespace zviptv

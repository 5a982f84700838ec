#pragma once

#include "proxy/ServiceCall.h"

#include <zviptv/IBroadcastData.h>
#include <zviptv/ProxyDBusHelper.h>

#include <pthread.h>

#include <memory>
#include <string>

class CBroadcastDataProxy final : public IBroadcastData
{
public:
    static CBroadcastDataProxy* Instance(IPTVHandle handle);
    static void Destroy();

    ~CBroadcastDataProxy() override;

    CProxyDBusHelper const& Channel() const { return *m_pDBusHelper; }

#include "IBroadcastDataOverrides.inc" // generated from protocol/zviptv.xml

private:
    CBroadcastDataProxy();

    static void m_DisconnectedCB(std::string partner, std::string own, void* user);

    bool m_Call(char const* functionName, zviptv::RequestFields fields, zviptv::ReplyFields outputs = {},
                zviptv::SourceLocation const& where = zviptv::SourceLocation::Here());

    static CBroadcastDataProxy* m_pBDProxyInstance;
    static pthread_rwlock_t m_BDProxyLock;
    static IPTVHandle m_handleID;

    std::unique_ptr<CProxyDBusHelper> m_pDBusHelper;
};

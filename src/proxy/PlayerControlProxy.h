#pragma once

#include "proxy/ServiceCall.h"

#include <zviptv/IPlayerControl.h>
#include <zviptv/ProxyDBusHelper.h>

#include <pthread.h>

#include <memory>
#include <string>

class CPlayerControlProxy final : public IPlayerControl
{
public:
    static CPlayerControlProxy* Instance(IPTVHandle handle);
    static void Destroy();

    ~CPlayerControlProxy() override;

    CProxyDBusHelper const& Channel() const { return *m_pDBusHelper; }

#include "IPlayerControlOverrides.inc" // generated from protocol/zviptv.xml

private:
    CPlayerControlProxy();

    static void m_DisconnectedCB(std::string partner, std::string own, void* user);

    bool m_Call(char const* functionName, zviptv::RequestFields fields, zviptv::ReplyFields outputs = {},
                zviptv::SourceLocation const& where = zviptv::SourceLocation::Here());

    static CPlayerControlProxy* m_PCInstance;
    static pthread_rwlock_t m_PCProxyLock;
    static IPTVHandle m_handleID;

    std::unique_ptr<CProxyDBusHelper> m_pDBusHelper;
};

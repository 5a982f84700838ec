#pragma once

#include "proxy/ServiceCall.h"

#include <zviptv/IIPGUtil.h>
#include <zviptv/ProxyDBusHelper.h>

#include <pthread.h>

#include <memory>
#include <string>

class CIPGUtilProxy final : public IIPGUtil
{
public:
    static CIPGUtilProxy* Instance();
    static void Destroy();

    ~CIPGUtilProxy() override;

    CProxyDBusHelper const& Channel() const { return *m_pDBusHelper; }

#include "IIPGUtilOverrides.inc" // generated from protocol/zviptv.xml

private:
    CIPGUtilProxy();

    /// An entry line and one query.
    template <typename Output>
    bool m_Query(char const* functionName, zviptv::RequestFields fields, Output& output,
                 zviptv::SourceLocation const& where = zviptv::SourceLocation::Here());

    /// One query: its answer's "data" goes into `output`, whatever result the service sends with it.
    template <typename Output>
    bool m_Ask(char const* functionName, zviptv::RequestFields fields, Output& output,
               zviptv::SourceLocation const& where);

    static CIPGUtilProxy* m_IPGInstance;
    static pthread_rwlock_t m_IPGLock;

    std::unique_ptr<CProxyDBusHelper> m_pDBusHelper;
};

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

    bool ExistXmlForIPG(bool& exist) override;
    bool GetProgramListSize(unsigned long long inID, unsigned int startTime, unsigned int duration,
                            int& size) override;
    bool GetProgram(unsigned int index, std::string& program) override;
    bool GetProgram(IPGProgramId id, Program_IPG program, std::string& out) override;
    bool GetPresentProgram(unsigned long long inID, std::string& program) override;
    bool FindProgram(unsigned long long inID, unsigned int eventID, std::string& program) override;
    bool GetRating(unsigned int eventID, std::string& rating) override;
    bool GetGenre(unsigned int eventID, std::string& genre) override;
    bool GetProgramList(unsigned long long inID, unsigned int startTime, unsigned int duration,
                        std::string& list) override;
    bool CloneUSBToTV(std::string path, bool& done) override;

    CProxyDBusHelper const& Channel() const { return *m_pDBusHelper; }

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

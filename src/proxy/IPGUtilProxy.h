// SPDX-License-Identifier: MIT
#pragma once

#include "proxy/ServiceCall.h"

#include <zviptv/IIPGUtil.h>

#include <string>

class CIPGUtilProxy final : public IIPGUtil
{
public:
    static CIPGUtilProxy* Instance();
    static void Destroy();

#include "IIPGUtilOverrides.inc" // generated from protocol/zviptv.xml

private:
    CIPGUtilProxy() = default;

    /// The only object, which is never deleted.
    static CIPGUtilProxy& m_Only();

    /// Logs the entry line and makes one query.
    template <typename Output>
    bool m_Query(char const* functionName, zviptv::RequestFields fields, Output& output,
                 zviptv::SourceLocation const& where = zviptv::SourceLocation::Here());

    /// Makes one query and stores "data" of the answer in `output`, whatever the service's result.
    template <typename Output>
    static bool m_Ask(std::shared_ptr<zviptv::Session> const& session, char const* functionName,
                      zviptv::RequestFields fields, Output& output, zviptv::SourceLocation const& where);

    zviptv::Sessions<zviptv::Session> m_session;
};

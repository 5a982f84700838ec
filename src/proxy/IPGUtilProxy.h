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

    /// The one object, which is never deleted.
    static CIPGUtilProxy& m_Only();

    /// An entry line and one query.
    template <typename Output>
    bool m_Query(char const* functionName, zviptv::RequestFields fields, Output& output,
                 zviptv::SourceLocation const& where = zviptv::SourceLocation::Here());

    /// One query: its answer's "data" goes into `output`, whatever result the service sends with it.
    template <typename Output>
    static bool m_Ask(std::shared_ptr<zviptv::Session> const& session, char const* functionName,
                      zviptv::RequestFields fields, Output& output, zviptv::SourceLocation const& where);

    zviptv::Sessions<zviptv::Session> m_session;
};

// SPDX-License-Identifier: MIT
#pragma once

#include "proxy/ServiceCall.h"

#include <zviptv/IBroadcastData.h>

#include <string>

class CBroadcastDataProxy final : public IBroadcastData
{
public:
    static CBroadcastDataProxy* Instance(IPTVHandle handle);
    static void Destroy();

#include "IBroadcastDataOverrides.inc" // generated from protocol/zviptv.xml

private:
    CBroadcastDataProxy() = default;

    /// The only object, which is never deleted.
    static CBroadcastDataProxy& m_Only();
    static void m_DisconnectedCB(std::string partner, std::string own, void* user);

    bool m_Call(char const* functionName, zviptv::RequestFields fields, zviptv::ReplyFields outputs = {},
                zviptv::SourceLocation const& where = zviptv::SourceLocation::Here());

    zviptv::Sessions<zviptv::Session> m_session;
};

// SPDX-License-Identifier: MIT
#pragma once

#include "proxy/ServiceCall.h"

#include <zviptv/IPlayerControl.h>

#include <string>

class CPlayerControlProxy final : public IPlayerControl
{
public:
    static CPlayerControlProxy* Instance(IPTVHandle handle);
    static void Destroy();

#include "IPlayerControlOverrides.inc" // generated from protocol/zviptv.xml

private:
    CPlayerControlProxy() = default;

    /// The only object, which is never deleted.
    static CPlayerControlProxy& m_Only();
    static void m_DisconnectedCB(std::string partner, std::string own, void* user);

    bool m_Call(char const* functionName, zviptv::RequestFields fields, zviptv::ReplyFields outputs = {},
                zviptv::SourceLocation const& where = zviptv::SourceLocation::Here());

    zviptv::Sessions<zviptv::Session> m_session;
};

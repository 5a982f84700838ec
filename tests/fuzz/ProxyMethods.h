// SPDX-License-Identifier: MIT
#pragma once

#include <zviptv/IPTVServiceAPI.h>

namespace zviptv::fuzz {

inline void Create(IPlayerControl*& object)
{
    CIPTVServiceAPI::CreatePlayerControl(IPTV_PROFILE_DEFAULT, 0, &object);
}

inline void Create(IBroadcastData*& object)
{
    CIPTVServiceAPI::CreateBroadcastData(IPTV_PROFILE_DEFAULT, 0, &object);
}

inline void Create(IIPGUtil*& object)
{
    CIPTVServiceAPI::CreateIPGUtil(&object);
}

template <typename Interface>
Interface& Object()
{
    Interface* object = nullptr;
    Create(object);
    return *object;
}

struct ProxyMethod
{
    char const* name; ///< "functionname"
    bool (*call)();   ///< with arguments and out-parameters that are zero
    bool hasResult;   ///< the service's result decides what it returns
};

/// All methods of the interfaces that send a request and read the reply.
constexpr ProxyMethod ProxyMethods[] = {
#include "ProxyMethodTable.inc"
};

} // namespace zviptv::fuzz

// SPDX-License-Identifier: MIT
#include <zviptv/IPTVServiceAPI.h>

#include "failure/LastFailure.h"
#include "log/Log.h"
#include "proxy/BroadcastDataProxy.h"
#include "proxy/IPGUtilProxy.h"
#include "proxy/IPTVDataSubscriberProxy.h"
#include "proxy/PlayerControlProxy.h"

#include <zviptv/ConnectionHelperDBusServer.h>

namespace {

/// Only the low 16 bits of the application's id count.
IPTVHandle Handle(IPTVProfile profile, int id)
{
    return {profile, static_cast<std::uint16_t>(id)};
}

/// Creates the object with `instance` and stores it in the out-parameter; if that is null, creates nothing.
template <typename Interface, typename Instance>
int Create(Interface** out, Instance instance,
           zviptv::SourceLocation const& where = zviptv::SourceLocation::Here())
{
    zviptv::FailureScope const scope(where.function);
    if (out == nullptr) {
        zviptv::WriteLog(ZV_LOG_ERROR, where, "No pointer to store the object in");
        zviptv::SetFailure(ZV_FAILURE_INVALID_ARGUMENT, {"there is no pointer to store the object in"});
    } else {
        *out = instance();
    }
    return 0;
}

int Destroy(void (*destroy)(), char const* function = __builtin_FUNCTION())
{
    zviptv::FailureScope const scope(function);
    destroy();
    return 0;
}

} // namespace

int CIPTVServiceAPI::CreatePlayerControl(IPTVProfile profile, int id, IPlayerControl** out)
{
    return Create(out, [=] { return CPlayerControlProxy::Instance(Handle(profile, id)); });
}

int CIPTVServiceAPI::CreateBroadcastData(IPTVProfile profile, int id, IBroadcastData** out)
{
    return Create(out, [=] { return CBroadcastDataProxy::Instance(Handle(profile, id)); });
}

int CIPTVServiceAPI::CreateIPTVDataSubscriber(IPTVProfile profile, int id, IIPTVDataSubscriber** out)
{
    return Create(out, [=] { return CIPTVDataSubscriberProxy::Instance(Handle(profile, id)); });
}

int CIPTVServiceAPI::CreateIPGUtil(IIPGUtil** out)
{
    return Create(out, [] { return CIPGUtilProxy::Instance(); });
}

int CIPTVServiceAPI::CreateConnectionHelper(IConnectionHelper** out)
{
    return Create(out, [] { return CConnectionHelperDBusServer::Instance(); });
}

int CIPTVServiceAPI::DestroyPlayerControl()
{
    return Destroy(CPlayerControlProxy::Destroy);
}

int CIPTVServiceAPI::DestroyBroadcastData()
{
    return Destroy(CBroadcastDataProxy::Destroy);
}

int CIPTVServiceAPI::DestroyIPTVDataSubscriber()
{
    return Destroy(CIPTVDataSubscriberProxy::Destroy);
}

int CIPTVServiceAPI::DestroyIPGUtil()
{
    return Destroy(CIPGUtilProxy::Destroy);
}

int CIPTVServiceAPI::DestroyConnectionHelper()
{
    return Destroy(CConnectionHelperDBusServer::Destroy);
}

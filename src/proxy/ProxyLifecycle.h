#pragma once

#include "dbus/PeerChannelState.h"
#include "dbus/Singleton.h"
#include "log/Log.h"

namespace zviptv {

/// Whether the service runs; a log line says when it does not.
bool IsServiceRunning(SourceLocation const& where);

/// Announces `channel` on the helper bus and connects it to the partner that the service names. A channel
/// that cannot be connected stays as it is: its sends fail.
void ConnectToService(CProxyDBusHelper& channel, char const* typeWord, SourceLocation const& where);

/// Tells the helper bus that `channel` goes away, and ends it.
void LeaveService(std::unique_ptr<CProxyDBusHelper>& channel, char const* typeWord);

/// Ends a proxy's singleton; see DestroyInstance.
template <typename Proxy>
void DestroyProxy(pthread_rwlock_t& lock, Proxy*& instance)
{
    DestroyInstance(lock, instance, [](Proxy const& proxy) { return ChannelAccess::Gate(proxy.Channel()); });
}

} // namespace zviptv

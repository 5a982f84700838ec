// SPDX-License-Identifier: MIT
/// @file
/// The factory; includes the interfaces that it makes, and why calls fail.

#pragma once

#include <zviptv/Export.h>
#include <zviptv/Failure.h>
#include <zviptv/IBroadcastData.h>
#include <zviptv/IConnectionHelper.h>
#include <zviptv/IIPGUtil.h>
#include <zviptv/IIPTVDataSubscriber.h>
#include <zviptv/IPTVTypes.h>
#include <zviptv/IPlayerControl.h>

/// The factory of the service interfaces.
///
/// Each interface has one object per process. Create hands out the existing one, or makes it; `profile` and
/// `id` (of which 16 bits count) count only when it makes one. Every function returns 0; a failure shows as a
/// null pointer in `out`, and ZVGetLastFailure() says why, for example that no service runs or that no
/// descriptor is free. CreateIPGUtil does not ask whether it runs. With a null `out` nothing is made.
///
/// An object does not guarantee a connection: when the service runs but does not answer the announcement in
/// time, or names no endpoint, Create still hands out an object, whose calls fail and which does not notice
/// the service's end; ZVGetLastFailure() then says why, after the Create and after each call. When every call
/// of an object fails, destroy it and create it again.
///
/// An object destroys itself from a handler of the service's loss. A handler that is late, because the object
/// has been destroyed and created again meanwhile, leaves the new one alone.
///
/// Threads: all functions may be called from any thread, and from inside any callback of the objects.
/// Creating and destroying an object each tell the service, which takes at most 2000 ms on a bus that
/// answers. A thread that asks for what another thread is doing waits for it and shares the outcome. A thread
/// that asks for the opposite waits for it first. So each function takes at most 4 s, whatever the number of
/// threads; a Destroy also waits for callbacks, as said below. Incoming data and the loss of the service are
/// delivered through the main context that is the thread default of the creating thread, normally the
/// process's default context: the process must iterate it.
///
/// When the bus itself goes, GIO ends the process by SIGTERM under a running main loop, unless the
/// application turns that off with g_dbus_connection_set_exit_on_close. The objects are then lost as when the
/// service goes. Once a bus is there again, at the same address or at the one that DBUS_SYSTEM_BUS_ADDRESS
/// then names, the next Create makes a new object on it.
///
/// Lifetime: an object lives until the matching Destroy; never delete it. The player control and the
/// broadcast data objects also destroy themselves when the service leaves the bus. Pointers stay valid: calls
/// on an object that is destroyed return false. Until it has told the service that it leaves, an object
/// answers the service and delivers its data. When a Destroy returns, no callback of the object runs on
/// another thread and none starts any more. A Create meanwhile, also inside such a callback, makes a new
/// object as soon as the old one has left; it does not wait for the old one's callbacks. Destroying what does
/// not exist is harmless.
///
/// Two callbacks on two threads must not each destroy the other's object: they would wait for each other.
/// After a fork without exec the child must not use the library, but it may call exit().
class ZVIPTV_API CIPTVServiceAPI
{
public:
    /// The player control object.
    static int CreatePlayerControl(IPTVProfile profile, int id, IPlayerControl** out);

    /// The broadcast data object.
    static int CreateBroadcastData(IPTVProfile profile, int id, IBroadcastData** out);

    /// The data subscriber.
    static int CreateIPTVDataSubscriber(IPTVProfile profile, int id, IIPTVDataSubscriber** out);

    /// The programme guide, also while no service runs.
    static int CreateIPGUtil(IIPGUtil** out);

    /// For the service process: the helper bus through which applications find its endpoints.
    static int CreateConnectionHelper(IConnectionHelper** out);

    /// Ends the player control object. From another thread it waits for its callbacks.
    static int DestroyPlayerControl();

    /// Ends the broadcast data object, as DestroyPlayerControl().
    static int DestroyBroadcastData();

    /// Ends the data subscriber and all subscriptions, as DestroyPlayerControl().
    static int DestroyIPTVDataSubscriber();

    /// Ends the programme guide object.
    static int DestroyIPGUtil();

    /// Ends the helper bus: the name is released, and applications find no service.
    static int DestroyConnectionHelper();
};

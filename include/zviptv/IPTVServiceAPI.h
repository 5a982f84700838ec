// SPDX-License-Identifier: MIT
/// @file
/// The factory; includes the interfaces that it makes, and ZVGetLastFailure().

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
/// Each interface has one object per process. Create returns the existing object, or makes it; `profile` and
/// `id` (16 bits) are used only to make it. Every function returns 0. After a failure, `out` is a null
/// pointer, and ZVGetLastFailure() says why, for example that no service runs or that no descriptor is free.
/// CreateIPGUtil does not check whether the service runs. With a null `out`, nothing is made.
/// An object does not guarantee a connection: if the service runs but does not answer the announcement in
/// time, or names no endpoint, Create still returns an object. Its calls fail, and it does not notice when
/// the service ends; ZVGetLastFailure() says why, after the Create and after each call. If every call of an
/// object fails, destroy it and create it again.
///
/// Threads: all functions may be called from any thread, and from inside any callback of the objects.
/// Creating and destroying an object each call the service, which takes at most 2000 ms on a bus that
/// answers. If another thread is making the same call, a call waits for it and shares its outcome. A Destroy
/// during a Create waits for the Create, and a Create during a Destroy waits until the old object has left.
/// Therefore each function takes at most 4 s, for any number of threads; a Destroy also waits for callbacks,
/// as described below. Incoming data and the loss of the service are delivered through the main context that
/// is the thread default of the creating thread, normally the process's default context: the process must
/// iterate it.
/// When the bus itself ends while a main loop runs, GIO ends the process with SIGTERM, unless the application
/// turns this off with g_dbus_connection_set_exit_on_close. If the process continues, its objects are lost,
/// as after the loss of the service. When a bus is available again, at the same address or at the one in
/// DBUS_SYSTEM_BUS_ADDRESS at that time, the next Create makes a new object on it.
///
/// Lifetime: an object lives until the matching Destroy; never delete it. The player control and the
/// broadcast data objects also destroy themselves when the service leaves the bus. If such an object has been
/// destroyed and created again before the loss is handled, the loss does not affect the new object. Pointers
/// stay valid: calls on an object that is destroyed return false. Until an object has announced its end to
/// the service, it answers the service and delivers its data. When a Destroy returns, no callback of the
/// object runs on another thread, and none starts. A Create at the same time, also inside such a callback,
/// makes a new object as soon as the old one has left; it does not wait for the old object's callbacks.
/// Destroying an object that does not exist is harmless.
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

    /// The programme guide object. It is also made while no service runs.
    static int CreateIPGUtil(IIPGUtil** out);

    /// For the service process: the helper bus through which applications find its endpoints.
    static int CreateConnectionHelper(IConnectionHelper** out);

    /// Ends the player control object. On another thread, it waits for the object's callbacks.
    static int DestroyPlayerControl();

    /// Ends the broadcast data object, like DestroyPlayerControl().
    static int DestroyBroadcastData();

    /// Ends the data subscriber and all subscriptions, like DestroyPlayerControl().
    static int DestroyIPTVDataSubscriber();

    /// Ends the programme guide object.
    static int DestroyIPGUtil();

    /// Ends the helper bus: releases the name, so that applications find no service.
    static int DestroyConnectionHelper();
};

// SPDX-License-Identifier: MIT
#pragma once

#include "SystemBus.h"
#include "output/Failure.h"

#include <zviptv/Failure.h>
#include <zviptv/IPTVServiceAPI.h>

#include <optional>
#include <stdexcept>
#include <string>

namespace zviptv::ctl {

/// Selects what the service is asked about.
struct Handle
{
    IPTVProfile profile = IPTV_PROFILE_DEFAULT;
    int id = 0;
};

/// The interface objects of one run: made when first asked for, released at the end. Everything happens on
/// the main thread.
class Session
{
public:
    /// Does nothing yet: what is wrong with the arguments shows also without a service.
    explicit Session(Handle handle);
    ~Session();

    Session(Session const&) = delete;
    Session& operator=(Session const&) = delete;

    /// The one object of its kind. Not to be kept while the main context is iterated: objects may destroy
    /// themselves there. Throws a Failure when the service is gone.
    template <typename Interface>
    Interface& Get();

    /// The result of one call of the interface. Throws a Failure when the service was not reached, or when
    /// its answer cannot be read; the result false then means that the service said no.
    template <typename Call>
    bool Ask(std::string const& method, Call call)
    {
        m_hangs = false;
        bool result = false;
        try {
            result = call();
        } catch (std::logic_error const&) { // invalid_argument, out_of_range, length_error
            ThrowFailed(method);
        }
        EZVFailureKind const kind = ZVGetLastFailure().kind;
        if (kind != ZV_FAILURE_NONE && kind != ZV_FAILURE_REFUSED) {
            ThrowFailed(method);
        }
        return result;
    }

    /// Releases the objects; Get() makes new ones.
    void Release();

    /// Whether the latest call waited for an answer in vain.
    bool Hangs() const { return m_hangs; }

    /// Leaves the objects as they are at the end: to announce to a service that hangs that they go would
    /// block as long again. That the process goes the bus tells it anyway.
    void Abandon() { m_isAbandoned = true; }

    /// Throws a Failure that says what to do when there is no bus or no service. Get() does this itself.
    void Start();

    /// Null before Start().
    GDBusConnection* Connection() const { return m_bus ? m_bus->Connection() : nullptr; }
    Handle const& HandleOfCalls() const { return m_handle; }

    /// Whether the service is on the bus now.
    static bool IsServiceRunning();

private:
    /// Explains the last failure of the library.
    [[noreturn]] void ThrowFailed(std::string const& method);

    Handle const m_handle;
    std::optional<SystemBus> m_bus;
    bool m_hangs = false;
    bool m_isAbandoned = false;
};

template <>
IPlayerControl& Session::Get();
template <>
IBroadcastData& Session::Get();
template <>
IIPTVDataSubscriber& Session::Get();
template <>
IIPGUtil& Session::Get();

} // namespace zviptv::ctl

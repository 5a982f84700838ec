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

/// Selects the subject of the calls.
struct Handle
{
    IPTVProfile profile = IPTV_PROFILE_DEFAULT;
    int id = 0;
};

/// The interface objects of one run: made on first use, released at the end. Everything happens on the main
/// thread.
class Session
{
public:
    /// Does nothing yet, so that errors in the arguments are also reported without a service.
    explicit Session(Handle handle);
    ~Session();

    Session(Session const&) = delete;
    Session& operator=(Session const&) = delete;

    /// The only object of its kind. Do not keep it while the main context is iterated, because objects may
    /// then destroy themselves. Throws a Failure if the service has left.
    template <typename Interface>
    Interface& Get();

    /// The result of one call of the interface. Throws a Failure if the service was not reached or its answer
    /// cannot be read. Therefore the result false means that the service refused.
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

    /// Whether the last call timed out.
    bool Hangs() const { return m_hangs; }

    /// Does not destroy the objects at the end: the announcement to a service that hangs would block for the
    /// same time again. The bus reports the end of the process to the service.
    void Abandon() { m_isAbandoned = true; }

    /// If there is no bus or no service, throws a Failure that says what to do. Get() calls it.
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

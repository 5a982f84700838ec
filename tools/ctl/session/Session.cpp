// SPDX-License-Identifier: MIT
#include "Session.h"

#include "Explanations.h"

#include <zviptv/ConnectionHelperDBusClient.h>
#include <zviptv/Protocol.h>

namespace zviptv::ctl {

namespace {

/// Whether the bus itself answers a call of the service with this error. Services may use others of D-Bus's
/// errors, such as InvalidArgs.
bool IsOfBus(std::string const& errorName)
{
    for (char const* const name :
         {"LimitsExceeded", "NoReply", "NoMemory", "ServiceUnknown", "NameHasNoOwner"}) {
        if (errorName == std::string("org.freedesktop.DBus.Error.") + name) {
            return true;
        }
    }
    return false;
}

/// Throws the failure that there is no object, because the service was not found.
[[noreturn]] void ThrowNotFound()
{
    ZVFailure const& failure = ZVGetLastFailure();
    if (failure.kind == ZV_FAILURE_NO_SERVICE) {
        throw Failure(ExitCode::NoService,
                      "no service on this bus: start zviptv-sim, or set DBUS_SYSTEM_BUS_ADDRESS to "
                      "the bus that has it");
    }
    throw Failure(ExitCode::NoService,
                  std::string("the system bus cannot be reached (") + failure.message + ")");
}

template <typename Interface>
Interface& Made(Interface* object)
{
    if (object == nullptr) {
        ThrowNotFound();
    }
    return *object;
}

} // namespace

Session::Session(Handle handle) : m_handle(handle) {}

Session::~Session()
{
    if (!m_isAbandoned) {
        Release();
    }
}

void Session::Release()
{
    CIPTVServiceAPI::DestroyIPGUtil();
    CIPTVServiceAPI::DestroyIPTVDataSubscriber();
    CIPTVServiceAPI::DestroyBroadcastData();
    CIPTVServiceAPI::DestroyPlayerControl();
}

void Session::Start()
{
    if (!m_bus) {
        if (!IsServiceRunning()) {
            ThrowNotFound();
        }
        m_bus.emplace();
    }
}

bool Session::IsServiceRunning()
{
    return CConnectionHelperDBusClient::CheckConnection();
}

template <>
IPlayerControl& Session::Get()
{
    Start();
    IPlayerControl* object = nullptr;
    CIPTVServiceAPI::CreatePlayerControl(m_handle.profile, m_handle.id, &object);
    return Made(object);
}

template <>
IBroadcastData& Session::Get()
{
    Start();
    IBroadcastData* object = nullptr;
    CIPTVServiceAPI::CreateBroadcastData(m_handle.profile, m_handle.id, &object);
    return Made(object);
}

template <>
IIPTVDataSubscriber& Session::Get()
{
    Start();
    IIPTVDataSubscriber* object = nullptr;
    CIPTVServiceAPI::CreateIPTVDataSubscriber(m_handle.profile, m_handle.id, &object);
    return Made(object);
}

template <>
IIPGUtil& Session::Get()
{
    Start();
    IIPGUtil* object = nullptr;
    CIPTVServiceAPI::CreateIPGUtil(&object);
    return Made(object);
}

void Session::ThrowFailed(std::string const& method)
{
    ZVFailure const failure = ZVGetLastFailure();
    std::string const reason = failure.message; // before the next call changes it
    std::string const errorName = failure.errorName;
    m_hangs = failure.kind == ZV_FAILURE_TIMED_OUT;
    if (failure.kind == ZV_FAILURE_MALFORMED_REPLY) {
        throw Failure(ExitCode::Malformed,
                      "the service's answer to " + method + " cannot be read: " + reason);
    }
    if (m_bus && m_bus->IsClosed()) {
        throw Failure(ExitCode::NoAnswer, method + ": " + BusClosed);
    }
    if (failure.kind != ZV_FAILURE_NO_BUS && !IsServiceRunning()) {
        throw Failure(ExitCode::NoService, method + ": the service left the bus; start it again");
    }
    if (failure.kind == ZV_FAILURE_NO_SERVICE && std::string(failure.key) == protocol::key::DBusName) {
        throw Failure(ExitCode::NoAnswer, method + ": " + MissingEndpoint(method));
    }
    if (errorName == "org.freedesktop.DBus.Error.AccessDenied") {
        throw Failure(ExitCode::NoAnswer, method + ": " + ForbiddenByPolicy());
    }
    if (failure.kind == ZV_FAILURE_BUS_ERROR) {
        throw Failure(ExitCode::NoAnswer, method + (IsOfBus(errorName) ? ": the bus" : ": the service") +
                                              " answered with the error " + errorName + ": " + reason);
    }
    throw Failure(ExitCode::NoAnswer, method + ": " + reason);
}

} // namespace zviptv::ctl

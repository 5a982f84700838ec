// SPDX-License-Identifier: MIT
#include "Session.h"

#include "Explanations.h"

#include <zviptv/ConnectionHelperDBusClient.h>

namespace zviptv::ctl {

namespace {

[[noreturn]] void ThrowNoService()
{
    throw Failure(ExitCode::NoService,
                  "no service on this bus: start zviptv-sim, or set DBUS_SYSTEM_BUS_ADDRESS to "
                  "the bus that has it");
}

template <typename Interface>
Interface& Made(Interface* object)
{
    if (object == nullptr) {
        ThrowNoService();
    }
    return *object;
}

} // namespace

Session::Session(Handle handle, LogCollector& log) : m_handle(handle), m_log(log) {}

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
        m_bus.emplace();
        if (!IsServiceRunning()) {
            ThrowNoService();
        }
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

void Session::ThrowMalformed(std::string const& method, std::exception const& error)
{
    throw Failure(ExitCode::Malformed, MalformedAnswer(method, error));
}

void Session::ThrowUnreached(std::string const& method)
{
    std::string const reason = m_log.Reason();
    if (m_bus && m_bus->IsClosed()) {
        throw Failure(ExitCode::NoAnswer,
                      method + ": the bus closed the connection (" + reason + "): see whether it still runs");
    }
    if (!IsServiceRunning()) {
        throw Failure(ExitCode::NoService,
                      method + ": the service left the bus (" + reason + "): start it again");
    }
    if (m_log.LacksEndpoint()) {
        throw Failure(ExitCode::NoAnswer, method + ": " + MissingEndpoint(method));
    }
    if (reason.find("org.freedesktop.DBus.Error.AccessDenied") != std::string::npos) {
        throw Failure(ExitCode::NoAnswer, method + ": " + ForbiddenByPolicy());
    }
    std::string const error = ErrorAnswer(reason);
    if (!error.empty()) {
        throw Failure(ExitCode::NoAnswer, method + ": the service answered with the error " + error);
    }
    m_hangs = reason.find("Timeout") != std::string::npos || reason.find("within") != std::string::npos;
    throw Failure(ExitCode::NoAnswer,
                  method + ": no answer from the service (" + reason + "): " +
                      (m_hangs ? "see whether it hangs or is overloaded" : "--log shows the library's log"));
}

} // namespace zviptv::ctl

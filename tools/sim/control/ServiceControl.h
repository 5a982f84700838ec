// SPDX-License-Identifier: MIT
#pragma once

#include "common/MainLoop.h"
#include "endpoints/Service.h"
#include "glib/Owned.h"

#include <functional>
#include <vector>

namespace zviptv::sim {

/// The service's end of its connection with the simulator: exports the control interface, and reports changes
/// and every request. Runs on the service's thread.
class ServiceControl
{
public:
    /// Takes over the connection's descriptor. `begin` is called, in the main loop, after the service was
    /// restored. @throws std::runtime_error if the other end is not a simulator
    ServiceControl(int descriptor, Service& service, MainLoop& loop, std::function<void()> begin);
    ~ServiceControl();
    ServiceControl(ServiceControl const&) = delete;
    ServiceControl& operator=(ServiceControl const&) = delete;

    /// Reports that applications can find the service.
    void ReportReady();

private:
    static void OnCall(GDBusConnection* connection, char const* sender, char const* path,
                       char const* interface, char const* method, GVariant* parameters,
                       GDBusMethodInvocation* invocation, gpointer self);
    void Answer(std::string const& interface, std::string const& method, GVariant* parameters,
                GDBusMethodInvocation* invocation);
    void FinishCall(GDBusMethodInvocation* invocation, std::string const& error);
    void Export(GDBusInterfaceInfo* info);
    void Emit(char const* interface, char const* signal, GVariant* body);
    void OnRequest(RequestLog::Entry const& entry);
    void UpdateSoon();
    void UpdateEverySecond();
    void Update();
    void ReportCaptions();

    Service& m_service;
    MainLoop& m_loop;
    std::function<void()> m_begin;
    Owned<GDBusNodeInfo> m_node;
    Owned<GDBusConnection> m_connection;
    std::vector<guint> m_exported;
    Owned<GVariant> m_report; ///< the last report that was sent
    Owned<GVariant> m_kept;
    Owned<GVariant> m_captions;
    bool m_isUpdateDue = false;
};

} // namespace zviptv::sim

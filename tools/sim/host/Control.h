// SPDX-License-Identifier: MIT
#pragma once

#include "ControlBus.h"
#include "ServiceProcess.h"

#include <map>
#include <string>
#include <vector>

namespace zviptv::sim {

/// The control interface: outlives the service. It does itself what concerns the service's process, passes on
/// the rest, and remembers what the service has reported for the time when that is dead.
class Control
{
public:
    explicit Control(Options const& options);
    ~Control();
    Control(Control const&) = delete;
    Control& operator=(Control const&) = delete;

    ServiceProcess& Service() { return m_service; }

    /// See ControlBus.
    bool IsSettled() const { return m_bus.IsSettled(); }

private:
    using Report = std::map<std::string, Owned<GVariant>>;

    void OnCall(std::string const& method, GVariant* parameters, GDBusMethodInvocation* invocation);
    bool DoItself(std::string const& method, GVariant* parameters, GDBusMethodInvocation* invocation);
    void Die(GVariant* parameters, GDBusMethodInvocation* invocation);
    void PassOn(std::string const& method, GVariant* parameters, GDBusMethodInvocation* invocation);
    void AnswerProperties(std::string const& method, GVariant* parameters, GDBusMethodInvocation* invocation);
    void OnSignal(std::string const& interface, std::string const& name, GVariant* body);
    void OnDied();
    void OnReady();
    void Remember(GVariant* properties);
    void TellProcess(std::vector<char const*> const& properties);

    Report m_report;                                  ///< what is known of every property
    std::vector<GDBusMethodInvocation*> m_restarting; ///< calls that are answered once the service is ready
    ControlBus m_bus;
    ServiceProcess m_service;
    bool m_wasReady = false;
};

} // namespace zviptv::sim

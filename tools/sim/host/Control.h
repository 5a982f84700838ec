// SPDX-License-Identifier: MIT
#pragma once

#include "ControlBus.h"
#include "LastReport.h"
#include "ServiceProcess.h"

#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace zviptv::sim {

/// The control interface, which outlives the service. It handles the methods about the service's process,
/// passes on the others, and keeps the service's reports for the time when the service is dead.
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
    bool HasLostBus() { return m_bus.HasLostBus(); }
    bool KnowsLoss() const { return m_bus.KnowsLoss(); }

    /// Callbacks for a scenario.
    struct Follower
    {
        std::function<void(GVariant* body)> onRequest;   ///< of the signal Request
        std::function<void(bool isSought)> onKeptChange; ///< `isSought` during a seek from the bus
    };

    /// Replaces the follower of `owner`; without functions, it has none.
    void SetFollower(void const* owner, Follower follower);

    /// Takes the methods StartScenario and EndScenario. Throws as Do() does.
    using ScenarioCall = std::function<void(std::string const& method, GVariant* parameters,
                                            ServiceLink::Reply reply, std::string const& caller)>;

    /// `onLeft` gets the bus names of clients that have left the bus.
    void SetScenarios(ScenarioCall call, std::function<void(std::string const& client)> onLeft)
    {
        m_scenarioCall = std::move(call);
        m_onLeft = std::move(onLeft);
    }

    /// Gets every signal of the control interface, like the bus, and link::Captions; `body` is null or has an
    /// owner.
    using Observer =
        std::function<void(std::string const& interface, std::string const& name, GVariant* body)>;
    void SetObserver(Observer observer) { m_observer = std::move(observer); }

    /// Does the same as a call from the bus, with arguments of the interface's types. `reply` is always
    /// called, even if `caller`, a bus name, has left.
    void Call(std::string const& method, GVariant* parameters, ServiceLink::Reply const& reply,
              std::string const& caller = {});

    /// Calls `reply` with the present values of all properties, an a{sv}.
    void Read(std::function<void(GVariant* properties)> const& reply);

    /// Runs a method of the control interface, whose arguments have been checked. `reply` is always called,
    /// even if `caller`, a bus name, has left. Must not be called from a callback of the service.
    /// @throws std::exception with a line for the user
    void Do(std::string const& method, GVariant* parameters, ServiceLink::Reply reply,
            std::string const& caller = {});

    /// Sets a property that the simulator itself knows.
    void SetProperty(char const* property, GVariant* value);

private:
    void OnCall(std::string const& method, GVariant* parameters, GDBusMethodInvocation* invocation);
    void Die(GVariant* parameters, ServiceLink::Reply const& reply);
    void AnswerProperties(std::string const& method, GVariant* parameters, GDBusMethodInvocation* invocation);
    void OnSignal(std::string const& interface, std::string const& name, GVariant* body);
    void Emit(std::string const& interface, std::string const& name, GVariant* body);
    void OnDied(bool isFailure);
    void OnReady();
    void OnLate();
    void ReportProcess(std::vector<char const*> const& properties);
    void ReportResponding(bool isResponding);
    void EndRestarts(GError const* error);
    void RefuseRestarts(char const* name, char const* text);

    LastReport m_report;
    std::vector<ServiceLink::Reply> m_restarting; ///< calls that are answered when the service is ready
    std::map<void const*, Follower> m_followers;  ///< by their owners
    ScenarioCall m_scenarioCall;
    std::function<void(std::string const& client)> m_onLeft;
    Observer m_observer;
    unsigned m_seeks = 0; ///< unanswered calls of Seek from the bus
    ControlBus m_bus;
    ServiceProcess m_service;
    bool m_wasReady = false;
};

} // namespace zviptv::sim

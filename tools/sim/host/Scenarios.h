// SPDX-License-Identifier: MIT
#pragma once

#include "ScenarioRunner.h"

#include <cstdint>
#include <map>
#include <memory>
#include <string>

namespace zviptv::sim {

/// All scenarios that run: that of the command line, and those that clients of the control interface have
/// started. Everything happens on the thread of `control`.
class Scenarios
{
public:
    Scenarios(ScenarioOptions options, Control& control);
    ~Scenarios();
    Scenarios(Scenarios const&) = delete;
    Scenarios& operator=(Scenarios const&) = delete;

    /// See ScenarioRunner, of which these are the functions for all of them.
    void Start() { m_first.Start(); }
    Signals::Clock::time_point Change() const;
    void Advance();
    int Finish(int status, std::string const& why, Signals const& signals);

private:
    using Number = std::uint32_t;

    /// A client's scenario, until the client has got its report or leaves the bus.
    struct Started
    {
        std::string client;
        std::unique_ptr<ScenarioRunner> runner;
        bool isMet = false;
        std::string report;
        ServiceLink::Reply reply;                          ///< the client waits for the report
        Signals::Clock::time_point limit = Signals::Never; ///< when it is ended for that
    };

    void Call(std::string const& method, GVariant* parameters, ServiceLink::Reply reply,
              std::string const& client);
    Number StartFor(std::string const& client, char const* text, char const* file);
    void EndFor(std::string const& client, Number number, double within, ServiceLink::Reply reply);
    void EndLate(Number number);
    void OnOver(Number number, Play const& play);
    void Forget(std::string const& client);

    Control& m_control;
    ScenarioRunner m_first;
    std::map<Number, Started> m_started;
    Number m_last = 0;
    std::shared_ptr<Scenarios> m_self{this, [](Scenarios*) {}}; ///< ends with this, unlike calls
};

} // namespace zviptv::sim

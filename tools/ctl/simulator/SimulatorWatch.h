// SPDX-License-Identifier: MIT
#pragma once

#include "Simulator.h"
#include "output/OutputFile.h"
#include "session/Loop.h"

#include <chrono>
#include <optional>

namespace zviptv::ctl {

/// The command `sim watch`: prints a line for each change of a property, request, death and return.
class SimulatorWatch
{
public:
    SimulatorWatch(std::optional<std::chrono::milliseconds> duration, bool asJson);
    ~SimulatorWatch();
    SimulatorWatch(SimulatorWatch const&) = delete;
    SimulatorWatch& operator=(SimulatorWatch const&) = delete;

    /// Runs until the time is over or the user ends it. Throws a Failure if there is no simulator or it
    /// leaves the bus.
    ExitCode Run();

private:
    static void OnSignal(GDBusConnection* connection, char const* sender, char const* path,
                         char const* interface, char const* name, GVariant* body, gpointer self);
    static void OnGone(GDBusConnection* connection, char const* name, gpointer self);
    void Report(std::string const& signal, GVariant* body);
    void ReportChanges(Json::Value const& properties);
    void Write(Json::Value const& json, std::string const& text);

    Simulator m_simulator;
    std::optional<std::chrono::milliseconds> m_duration;
    bool m_asJson;
    OutputFile m_out{"-"};
    Loop m_loop;
    bool m_isGone = false;
    guint m_subscription = 0;
    NameWatch m_watch;
};

} // namespace zviptv::ctl

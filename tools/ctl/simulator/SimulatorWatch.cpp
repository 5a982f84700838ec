// SPDX-License-Identifier: MIT
#include "SimulatorWatch.h"

#include "Variant.h"
#include "output/Answer.h"

#include <csignal>

namespace zviptv::ctl {

namespace {

std::string EventName(std::string const& signal)
{
    return signal == "Died" ? "died" : signal == "Restarted" ? "restarted" : "request";
}

/// "request :1.5 PLAYERCONTROL MuteAudio handleID=1 onoff=1: 1"
std::string RequestLine(Json::Value const& json)
{
    std::string line = "request " + json["application"].asString() + " " + json["endpoint"].asString() + " " +
                       json["function"].asString();
    for (std::string const& key : json["arguments"].getMemberNames()) {
        line += " " + key + "=" + json["arguments"][key].asString();
    }
    std::string const fault = json["fault"].asString();
    return line + ": " + json["result"].asString() + (fault.empty() ? "" : " fault: " + fault);
}

} // namespace

SimulatorWatch::SimulatorWatch(std::optional<std::chrono::milliseconds> duration, bool asJson)
    : m_duration(duration), m_asJson(asJson),
      m_subscription(g_dbus_connection_signal_subscribe(m_simulator.Connection(), verbs::BusName, nullptr,
                                                        nullptr, verbs::ObjectPath, nullptr,
                                                        G_DBUS_SIGNAL_FLAGS_NONE, OnSignal, this, nullptr)),
      m_watch(g_bus_watch_name_on_connection(m_simulator.Connection(), verbs::BusName,
                                             G_BUS_NAME_WATCHER_FLAGS_NONE, nullptr, OnGone, this, nullptr))
{
}

SimulatorWatch::~SimulatorWatch()
{
    g_dbus_connection_signal_unsubscribe(m_simulator.Connection(), m_subscription);
}

ExitCode SimulatorWatch::Run()
{
    ReportChanges(m_simulator.State());
    auto const quit = [this] { m_loop.Quit(); };
    EventSource const interrupted = Loop::OnSignal(SIGINT, quit);
    EventSource const terminated = Loop::OnSignal(SIGTERM, quit);
    EventSource const over = m_duration ? Loop::Every(*m_duration, quit) : EventSource();
    m_loop.Run([](std::exception const&) { throw; });
    if (m_isGone) {
        throw Failure(ExitCode::NoService, "the simulator left the bus");
    }
    return ExitCode::Accepted;
}

void SimulatorWatch::OnGone(GDBusConnection* /*connection*/, char const* /*name*/, gpointer self)
{
    auto& watch = *static_cast<SimulatorWatch*>(self);
    watch.m_isGone = true;
    watch.m_loop.Quit();
}

void SimulatorWatch::OnSignal(GDBusConnection* /*connection*/, char const* /*sender*/, char const* /*path*/,
                              char const* /*interface*/, char const* name, GVariant* body, gpointer self)
{
    static_cast<SimulatorWatch*>(self)->Report(name, body);
}

void SimulatorWatch::Report(std::string const& signal, GVariant* body)
{
    Json::Value const arguments = ToJson(body);
    if (signal == "PropertiesChanged") {
        ReportChanges(arguments[1]);
        return;
    }
    Json::Value json(Json::objectValue);
    json["event"] = EventName(signal);
    if (signal == "Request") {
        Json::ArrayIndex next = 0;
        for (char const* const member :
             {"application", "endpoint", "function", "arguments", "result", "fault"}) {
            json[member] = arguments[next++];
        }
    }
    Write(json, signal == "Request" ? RequestLine(json) : json["event"].asString());
}

/// A line for each property, or one object.
void SimulatorWatch::ReportChanges(Json::Value const& properties)
{
    std::string text;
    for (std::string const& name : properties.getMemberNames()) {
        text += (text.empty() ? "" : "\n") + name + ": " + ToLine(properties[name]);
    }
    Json::Value json = properties;
    json["event"] = "change";
    Write(json, text);
}

void SimulatorWatch::Write(Json::Value const& json, std::string const& text)
{
    std::string const line = (m_asJson ? Compact(json) : text) + "\n";
    if (!m_out.Write(line.data(), line.size())) {
        m_loop.Quit(); // the reader has closed the pipe
    }
}

} // namespace zviptv::ctl

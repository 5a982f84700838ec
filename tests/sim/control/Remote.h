// SPDX-License-Identifier: MIT
#pragma once

#include "SimulatorTest.h"
#include "WaitUntil.h"

#include "glib/Owned.h"

#include <climits>
#include <csignal>
#include <cstdlib>
#include <string>
#include <vector>

namespace zviptv::test {

/// A client of the control interface, in the texts that GVariant's printer writes. Every name is spelled out.
class Remote
{
public:
    explicit Remote(std::string const& address)
        : m_connection(g_dbus_connection_new_for_address_sync(
              address.c_str(),
              static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                                G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION),
              nullptr, nullptr, nullptr))
    {
        m_subscription = g_dbus_connection_signal_subscribe(
            m_connection.get(), nullptr, nullptr, nullptr, "/org/corvel/zviptvapi/Simulator", nullptr,
            G_DBUS_SIGNAL_FLAGS_NONE, OnSignal, this, nullptr);
    }

    ~Remote()
    {
        g_dbus_connection_signal_unsubscribe(m_connection.get(), m_subscription);
        g_dbus_connection_close_sync(m_connection.get(), nullptr, nullptr);
    }
    Remote(Remote const&) = delete;
    Remote& operator=(Remote const&) = delete;

    /// "()", or the name of the error and its text. `arguments` is a tuple: "('audio', true)".
    std::string Call(std::string const& method, std::string const& arguments = "()")
    {
        return CallOn("org.corvel.zviptvapi.Simulator1", method, arguments);
    }

    std::string Name() const { return g_dbus_connection_get_unique_name(m_connection.get()); }

    /// Sends a call, and does not wait for its answer.
    void Send(std::string const& method, std::string const& arguments)
    {
        Owned<GVariant> const parameters(
            g_variant_parse(nullptr, arguments.c_str(), nullptr, nullptr, nullptr));
        g_dbus_connection_call(m_connection.get(), "org.corvel.zviptvapi.Simulator",
                               "/org/corvel/zviptvapi/Simulator", "org.corvel.zviptvapi.Simulator1",
                               method.c_str(), parameters.get(), nullptr, G_DBUS_CALL_FLAGS_NONE, 20000,
                               nullptr, nullptr, nullptr);
        g_dbus_connection_flush_sync(m_connection.get(), nullptr, nullptr);
    }

    /// "<1.0>"
    std::string Get(std::string const& property)
    {
        std::string const value = CallOn("org.freedesktop.DBus.Properties", "Get",
                                         "('org.corvel.zviptvapi.Simulator1', '" + property + "')");
        // "(<1.0>,)"
        return value.size() > 4 && value[1] == '<' ? value.substr(2, value.size() - 5) : value;
    }

    double Number(std::string const& property)
    {
        std::string const text = Get(property);
        return std::strtod(text.c_str() + text.find_first_of("-0123456789", text.rfind(' ') + 1), nullptr);
    }

    bool WaitFor(std::string const& property, std::string const& value)
    {
        return WaitUntil([&] { return Get(property) == value; }, Patience);
    }

    struct Signal
    {
        std::string name;
        std::string body;
    };

    /// The signals received so far.
    std::vector<Signal> const& Signals()
    {
        while (g_main_context_iteration(nullptr, FALSE) != FALSE) {
        }
        return m_signals;
    }

    /// Waits for a signal with this text in its body. Earlier signals count, too.
    bool WaitForSignal(std::string const& name, std::string const& text = "")
    {
        return WaitUntil(
            [&] {
                for (Signal const& signal : Signals()) {
                    if (signal.name == name && signal.body.find(text) != std::string::npos) {
                        return true;
                    }
                }
                return false;
            },
            Patience);
    }

    void Forget()
    {
        Signals();
        m_signals.clear();
    }

    std::string CallOn(char const* interface, std::string const& method, std::string const& arguments)
    {
        Owned<GVariant> const parameters(
            g_variant_parse(TypeOf(interface, method).get(), arguments.c_str(), nullptr, nullptr, nullptr));
        GError* error = nullptr;
        Owned<GVariant> const reply(g_dbus_connection_call_sync(
            m_connection.get(), "org.corvel.zviptvapi.Simulator", "/org/corvel/zviptvapi/Simulator",
            interface, method.c_str(), parameters.get(), nullptr, G_DBUS_CALL_FLAGS_NONE, 20000, nullptr,
            &error));
        if (error != nullptr) {
            Owned<char> const name(g_dbus_error_get_remote_error(error));
            g_dbus_error_strip_remote_error(error);
            std::string const text = std::string(name ? name.get() : "?") + ": " + error->message;
            g_error_free(error);
            return text;
        }
        Owned<char> const text(g_variant_print(reply.get(), TRUE));
        return text.get();
    }

private:
    struct FreeType
    {
        void operator()(GVariantType* type) const { g_variant_type_free(type); }
    };

    /// The types of the arguments, if the text alone would be parsed as another type.
    static std::unique_ptr<GVariantType, FreeType> TypeOf(std::string const& /*interface*/,
                                                          std::string const& method)
    {
        char const* type = method == "Seek" || method == "SetSpeed" ? "(d)"
                           : method == "SelectProgramme"            ? "(u)"
                           : method == "SetTime"                    ? "(x)"
                           : method == "Select"                     ? "(su)"
                           : method == "AddFault"                   ? "(sa{sv})"
                           : method == "Die"                        ? "(a{sv})"
                                                                    : nullptr;
        return std::unique_ptr<GVariantType, FreeType>(type == nullptr ? nullptr : g_variant_type_new(type));
    }

    static void OnSignal(GDBusConnection* /*connection*/, char const* /*sender*/, char const* /*path*/,
                         char const* /*interface*/, char const* name, GVariant* body, gpointer self)
    {
        Owned<char> const text(g_variant_print(body, TRUE));
        static_cast<Remote*>(self)->m_signals.push_back({name, text.get()});
    }

    Owned<GDBusConnection> m_connection;
    guint m_subscription = 0;
    std::vector<Signal> m_signals;
};

/// A simulator on the test's bus, and its remote control.
class ControlTest : public Simulator
{
protected:
    void StartControlled(std::vector<std::string> options = {"--loop"},
                         std::string const& input = ZVIPTV_SAMPLE_FILE)
    {
        options.insert(options.begin(), {"--ts", input});
        Start(options);
        ASSERT_TRUE(m_watcher.WaitForOwner("org.corvel.zviptvapi.Simulator", true));
        m_remote.emplace(m_bus.Address());
        ASSERT_TRUE(m_remote->WaitFor("Running", "true"));
    }

    Remote& GetRemote() { return *m_remote; }

    /// A copy of the sample in the test's folder.
    std::string CopySample(std::string const& name = "other.ts")
    {
        std::string const path = m_bus.Directory() + "/" + name;
        std::ofstream(path, std::ios::binary) << std::ifstream(ZVIPTV_SAMPLE_FILE, std::ios::binary).rdbuf();
        return path;
    }

    std::string CopyGuide()
    {
        std::string const path = m_bus.Directory() + "/guide.xml";
        std::ofstream(path) << std::ifstream(ZVIPTV_SAMPLE_GUIDE).rdbuf();
        return path;
    }

    /// Stops the service of a simulator that has just started it. It may have become ready before.
    static pid_t StopStartingService(pid_t simulator)
    {
        pid_t service = 0;
        EXPECT_TRUE(WaitUntil(
            [&] {
                for (pid_t const child : ChildrenOf(simulator)) {
                    std::string const program = ReadFile("/proc/" + std::to_string(child) + "/cmdline");
                    service = program.rfind("zviptv-sim: ", 0) == 0 ? child : service; // it was executed
                }
                return service != 0;
            },
            Patience));
        EXPECT_TRUE(service != 0 && kill(service, SIGSTOP) == 0); // 0 would be the test's group
        return service;
    }

    /// The service's process, which is not `before`.
    pid_t NewService(pid_t before = 0)
    {
        pid_t now = 0;
        EXPECT_TRUE(WaitUntil(
            [&] {
                now = static_cast<pid_t>(m_remote->Number("ServicePid")); // 0 while it does not run
                return now != 0 && now != before;
            },
            Patience));
        return now;
    }

    std::optional<Remote> m_remote;
};

constexpr char Done[] = "()";
constexpr char Invalid[] = "org.corvel.zviptvapi.Simulator1.Error.InvalidArgument: ";
constexpr char NotRunning[] = "org.corvel.zviptvapi.Simulator1.Error.NotRunning: ";
constexpr char TimedOut[] = "org.corvel.zviptvapi.Simulator1.Error.TimedOut: ";
constexpr char Failed[] = "org.corvel.zviptvapi.Simulator1.Error.Failed: ";

} // namespace zviptv::test

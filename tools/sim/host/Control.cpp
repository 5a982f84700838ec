// SPDX-License-Identifier: MIT
#include "Control.h"

#include "control/Dictionary.h"
#include "control/Interface.h"
#include "control/Link.h"
#include "control/Report.h"
#include "verbs/Verbs.h"

#include <unistd.h>

#include <csignal>
#include <stdexcept>
#include <utility>

namespace zviptv::sim {

namespace {

/// The names of properties that are empty without a service.
constexpr std::pair<char const*, char const*> OfApplications[] = {{"Clients", "as"},
                                                                  {"Subscribers", "aa{sv}"}};

void AnswerError(GDBusMethodInvocation* invocation, char const* name, char const* text)
{
    g_dbus_method_invocation_return_dbus_error(invocation, name, text);
}

/// The service's errors have their own D-Bus names; any other error means that it has died.
void AnswerError(GDBusMethodInvocation* invocation, GError const* error)
{
    Owned<char> const name(g_dbus_error_get_remote_error(error));
    if (name) {
        GError* plain = g_error_copy(error);
        g_dbus_error_strip_remote_error(plain);
        AnswerError(invocation, name.get(), plain->message);
        g_error_free(plain);
    } else if (g_error_matches(error, G_IO_ERROR, G_IO_ERROR_NOT_CONNECTED) != FALSE) {
        AnswerError(invocation, link::NotRunning, error->message);
    } else {
        AnswerError(invocation, link::NotRunning,
                    "the service died before it answered; call again once it is back");
    }
}

/// Calls `reply` with an error of the control interface.
void ReplyError(ServiceLink::Reply const& reply, char const* name, char const* text)
{
    GError* error = g_dbus_error_new_for_dbus_error(name, text);
    reply(nullptr, error);
    g_error_free(error);
}

/// Bytes of the type's zero or empty value: an empty array has none.
gsize SizeOf(char const* type)
{
    switch (type[0]) {
    case 'b':
    case 's': // the terminating zero
        return 1;
    case 'u':
        return 4;
    case 'a':
        return 0;
    default:
        return 8;
    }
}

/// Zero, false, or empty.
Owned<GVariant> Nothing(char const* type)
{
    return Owned<GVariant>(g_variant_ref_sink(g_variant_new_from_data(G_VARIANT_TYPE(type), "\0\0\0\0\0\0\0",
                                                                      SizeOf(type), TRUE, nullptr, nullptr)));
}

} // namespace

Control::Control(Options const& options)
    : m_bus([this](std::string const& method, GVariant* parameters, GDBusMethodInvocation* invocation) {
          OnCall(method, parameters, invocation);
      }),
      m_service(options, {[this](std::string const& interface, std::string const& name, GVariant* body) {
                              OnSignal(interface, name, body);
                          },
                          [this] { OnDied(); }, [this] { OnReady(); },
                          [this] {
                              if (m_follower.onKeptChange) {
                                  m_follower.onKeptChange(m_seeks > 0);
                              }
                          }})
{
    for (GDBusPropertyInfo** info = SimulatorInterface()->properties; *info != nullptr; ++info) {
        m_report[(*info)->name] = Nothing((*info)->signature); // until the service has told
    }
}

Control::~Control()
{
    GError* error = g_dbus_error_new_for_dbus_error(link::NotRunning, "the simulator ends");
    EndRestarts(error);
    g_error_free(error);
}

void Control::OnCall(std::string const& method, GVariant* parameters, GDBusMethodInvocation* invocation)
try {
    if (method == "Get" || method == "GetAll") {
        AnswerProperties(method, parameters, invocation);
        return;
    }
    verbs::Check(method, parameters);
    unsigned const seeks = method == "Seek" ? 1 : 0;
    m_seeks += seeks;
    Do(method, parameters, [this, seeks, invocation](GVariant* value, GError const* error) {
        m_seeks -= seeks;
        if (error != nullptr) {
            AnswerError(invocation, error);
        } else {
            g_dbus_method_invocation_return_value(invocation, value);
        }
    });
} catch (std::invalid_argument const& failure) {
    AnswerError(invocation, link::InvalidArgument, failure.what());
} catch (std::exception const& failure) {
    AnswerError(invocation, link::Failed, failure.what());
}

void Control::Do(std::string const& method, GVariant* parameters, ServiceLink::Reply reply)
{
    if (method == "Die") {
        Die(parameters, reply);
    } else if (method == "Restart") {
        m_service.Restart();
        m_restarting.push_back(std::move(reply));
    } else if (method == "Quit") {
        reply(nullptr, nullptr);
        m_bus.AfterFlush([] { kill(getpid(), SIGTERM); }); // Signals waits for it
    } else {
        m_service.Call(verbs::Interface, method, parameters, std::move(reply));
    }
}

void Control::Die(GVariant* parameters, ServiceLink::Reply const& reply)
{
    Owned<GVariant> const options(g_variant_get_child_value(parameters, 0));
    double seconds = 0;
    bool const comesBack = g_variant_lookup(options.get(), "for", "d", &seconds) != FALSE;
    if (m_service.Die(comesBack ? std::optional(seconds) : std::nullopt)) {
        reply(nullptr, nullptr);
    } else {
        ReplyError(reply, link::NotRunning, "the service is dead; 'zviptvctl sim restart' starts it");
    }
}

/// A service that runs is asked, since some properties change all the time.
void Control::AnswerProperties(std::string const& method, GVariant* parameters,
                               GDBusMethodInvocation* invocation)
{
    std::string name;
    if (method == "Get") {
        Owned<GVariant> const value(g_variant_get_child_value(parameters, 1));
        name = g_variant_get_string(value.get(), nullptr);
    }
    auto const answer = [this, name, invocation] {
        if (!name.empty()) {
            g_dbus_method_invocation_return_value(invocation, g_variant_new("(v)", m_report.at(name).get()));
            return;
        }
        Dictionary all;
        for (auto const& [property, value] : m_report) {
            all.Add(property.c_str(), value.get());
        }
        g_dbus_method_invocation_return_value(invocation, g_variant_new("(@a{sv})", all.End()));
    };
    if (!m_service.IsRunning()) {
        if (m_service.Kept() != nullptr) {
            Remember(ReportDead(m_service.Kept()).get());
        }
        answer();
        return;
    }
    m_service.Call(link::Properties, "GetAll", g_variant_new("(s)", verbs::Interface),
                   [this, answer](GVariant* value, GError const* error) {
                       if (error == nullptr) {
                           Owned<GVariant> const report(g_variant_get_child_value(value, 0));
                           Remember(report.get());
                       }
                       answer();
                   });
}

void Control::Remember(GVariant* properties)
{
    GVariantIter entries;
    g_variant_iter_init(&entries, properties);
    char const* name = nullptr;
    for (GVariant* value = nullptr; g_variant_iter_next(&entries, "{&sv}", &name, &value) != FALSE;) {
        m_report[name].reset(value);
    }
}

void Control::OnSignal(std::string const& interface, std::string const& name, GVariant* body)
{
    if (interface == link::Properties) {
        Owned<GVariant> const properties(g_variant_get_child_value(body, 1));
        Remember(properties.get());
    } else if (name == "Request" && m_follower.onRequest) {
        m_follower.onRequest(body);
    }
    m_bus.Emit(interface, name, body);
}

void Control::TellProcess(std::vector<char const*> const& properties)
{
    m_report["Running"].reset(
        g_variant_ref_sink(g_variant_new_boolean(m_service.IsRunning() ? TRUE : FALSE)));
    m_report["ServicePid"].reset(g_variant_ref_sink(
        g_variant_new_uint32(m_service.IsRunning() ? static_cast<guint32>(m_service.Pid()) : 0)));
    Dictionary changed;
    for (char const* const property : properties) {
        changed.Add(property, m_report.at(property).get());
    }
    m_bus.Emit(link::Properties, link::PropertiesChanged,
               g_variant_new("(s@a{sv}as)", verbs::Interface, changed.End(), nullptr));
}

void Control::OnDied()
{
    for (auto const& [property, type] : OfApplications) {
        m_report[property] = Nothing(type);
    }
    TellProcess({"Running", "ServicePid", "Clients", "Subscribers"});
    m_bus.Emit(verbs::Interface, "Died", nullptr);
    if (m_service.Ended()) {
        GError* error = g_dbus_error_new_for_dbus_error(link::Failed,
                                                        "the service did not start; zviptv-sim has said why");
        EndRestarts(error);
        g_error_free(error);
    }
}

void Control::OnReady()
{
    TellProcess({"Running", "ServicePid"});
    if (std::exchange(m_wasReady, true)) {
        m_bus.Emit(verbs::Interface, "Restarted", nullptr);
    }
    EndRestarts(nullptr);
}

void Control::EndRestarts(GError const* error)
{
    for (ServiceLink::Reply const& reply : std::exchange(m_restarting, {})) {
        reply(nullptr, error);
    }
}

void Control::Tell(char const* property, GVariant* value)
{
    m_report[property].reset(g_variant_ref_sink(value));
    Dictionary changed;
    changed.Add(property, value);
    m_bus.Emit(link::Properties, link::PropertiesChanged,
               g_variant_new("(s@a{sv}as)", verbs::Interface, changed.End(), nullptr));
}

} // namespace zviptv::sim

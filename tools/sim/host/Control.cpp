// SPDX-License-Identifier: MIT
#include "Control.h"

#include "ControlErrors.h"
#include "control/Link.h"
#include "control/Report.h"
#include "verbs/Verbs.h"

#include <unistd.h>

#include <csignal>
#include <stdexcept>
#include <utility>

namespace zviptv::sim {

namespace {

/// Properties are available at once.
constexpr std::chrono::seconds ReportLimit{1};

GVariant* Boolean(bool value)
{
    return g_variant_new_boolean(value ? TRUE : FALSE);
}

} // namespace

Control::Control(Options const& options)
    : m_bus([this](std::string const& method, GVariant* parameters,
                   GDBusMethodInvocation* invocation) { OnCall(method, parameters, invocation); },
            [this](std::string const& client) {
                m_service.Forget(client);
                if (m_onLeft) {
                    m_onLeft(client);
                }
            }),
      m_service(options, {[this](std::string const& interface, std::string const& name, GVariant* body) {
                              OnSignal(interface, name, body);
                          },
                          [this](bool isFailure) { OnDied(isFailure); }, [this] { OnReady(); },
                          [this] {
                              for (auto const& [owner, follower] : m_followers) {
                                  follower.onKeptChange(m_seeks > 0);
                              }
                          },
                          [this] { OnLate(); },
                          [this](GVariant* body) {
                              if (m_observer) {
                                  m_observer(link::Interface, link::Captions, body);
                              }
                          }})
{
}

Control::~Control()
{
    RefuseRestarts(link::NotRunning, "the simulator ends");
}

void Control::SetFollower(void const* owner, Follower follower)
{
    if (follower.onRequest) {
        m_followers[owner] = std::move(follower);
    } else {
        m_followers.erase(owner);
    }
}

void Control::OnCall(std::string const& method, GVariant* parameters, GDBusMethodInvocation* invocation)
{
    if (method == "Get" || method == "GetAll") {
        AnswerProperties(method, parameters, invocation);
        return;
    }
    Call(
        method, parameters,
        [this, invocation](GVariant* value, GError const* error) {
            if (error != nullptr) {
                AnswerError(invocation, error, m_service.Pid());
            } else {
                g_dbus_method_invocation_return_value(invocation, value);
            }
        },
        g_dbus_method_invocation_get_sender(invocation));
}

void Control::Call(std::string const& method, GVariant* parameters, ServiceLink::Reply const& reply,
                   std::string const& caller)
try {
    verbs::Check(method, parameters);
    unsigned const seeks = method == "Seek" ? 1 : 0;
    m_seeks += seeks;
    Do(
        method, parameters,
        [this, seeks, reply](GVariant* value, GError const* error) {
            m_seeks -= seeks;
            reply(value, error);
        },
        caller);
} catch (std::invalid_argument const& failure) {
    ReplyError(reply, link::InvalidArgument, failure.what());
} catch (std::exception const& failure) {
    ReplyError(reply, link::Failed, failure.what());
}

void Control::Do(std::string const& method, GVariant* parameters, ServiceLink::Reply reply,
                 std::string const& caller)
{
    if (method == "StartScenario" || method == "EndScenario") {
        m_scenarioCall(method, parameters, std::move(reply), caller);
    } else if (method == "Die") {
        Die(parameters, reply);
    } else if (method == "Restart") {
        m_service.Restart();
        m_restarting.push_back(std::move(reply));
    } else if (method == "Reset" && !m_service.IsAlive()) {
        m_service.StartFresh();
        m_restarting.push_back(std::move(reply));
    } else if (method == "Quit") {
        reply(nullptr, nullptr);
        m_bus.AfterFlush([] { kill(getpid(), SIGTERM); }); // Signals receives it
    } else {
        Owned<GVariant> arguments(g_variant_ref_sink(parameters));
        m_service.Call(
            {verbs::Interface, method, std::move(arguments), AnswerLimit, caller, std::move(reply)});
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

void Control::AnswerProperties(std::string const& method, GVariant* parameters,
                               GDBusMethodInvocation* invocation)
{
    std::string name;
    if (method == "Get") {
        Owned<GVariant> const value(g_variant_get_child_value(parameters, 1));
        name = g_variant_get_string(value.get(), nullptr);
    }
    Read([this, name, invocation](GVariant* properties) {
        g_dbus_method_invocation_return_value(invocation, name.empty()
                                                              ? g_variant_new("(@a{sv})", properties)
                                                              : g_variant_new("(v)", m_report.Value(name)));
    });
}

/// Queries a running service, because some properties change all the time. If the service does not answer,
/// uses its last report.
void Control::Read(std::function<void(GVariant* properties)> const& reply)
{
    auto const answer = [this, reply] { reply(m_report.All().get()); };
    if (!m_service.IsRunning()) {
        if (m_service.Kept() != nullptr) {
            m_report.Update(ReportDead(m_service.Kept()).get());
        }
        answer();
        return;
    }
    auto const onReport = [this, answer](GVariant* value, GError const* error) {
        if (error == nullptr) {
            Owned<GVariant> const report(g_variant_get_child_value(value, 0));
            m_report.Update(report.get());
        }
        ReportResponding(error == nullptr);
        answer();
    };
    Owned<GVariant> whose(g_variant_ref_sink(g_variant_new("(s)", verbs::Interface)));
    m_service.Call({link::Properties, "GetAll", std::move(whose), ReportLimit, {}, onReport});
}

void Control::OnSignal(std::string const& interface, std::string const& name, GVariant* body)
{
    ReportResponding(true);
    if (interface == link::Properties) {
        Owned<GVariant> const properties(g_variant_get_child_value(body, 1));
        m_report.Update(properties.get());
    } else if (name == "Request") {
        for (auto const& [owner, follower] : m_followers) {
            follower.onRequest(body);
        }
    }
    Emit(interface, name, body);
}

void Control::Emit(std::string const& interface, std::string const& name, GVariant* body)
{
    Owned<GVariant> const owned(body == nullptr ? nullptr : g_variant_ref_sink(body));
    if (m_observer) {
        m_observer(interface, name, owned.get());
    }
    m_bus.Emit(interface, name, owned.get());
}

void Control::ReportProcess(std::vector<char const*> const& properties)
{
    m_report.Set("Running", Boolean(m_service.IsRunning()));
    m_report.Set("Responding", Boolean(m_service.IsRunning()));
    m_report.Set("ServicePid",
                 g_variant_new_uint32(m_service.IsRunning() ? static_cast<guint32>(m_service.Pid()) : 0));
    Emit(link::Properties, link::PropertiesChanged, m_report.Changed(properties));
}

void Control::OnDied(bool isFailure)
{
    m_report.ForgetApplications();
    ReportProcess({"Running", "Responding", "ServicePid", "Clients", "Applications", "Subscribers"});
    Emit(verbs::Interface, "Died", nullptr);
    if (isFailure) {
        RefuseRestarts(link::Failed, "the service did not start; fix the error that zviptv-sim has printed, "
                                     "then run 'zviptvctl sim restart'");
    } else if (m_service.IsGone()) {
        RefuseRestarts(link::NotRunning,
                       "the service died while it started; 'zviptvctl sim restart' starts it");
    }
}

void Control::OnReady()
{
    ReportProcess({"Running", "Responding", "ServicePid"});
    if (std::exchange(m_wasReady, true)) {
        Emit(verbs::Interface, "Restarted", nullptr);
    }
    EndRestarts(nullptr);
}

void Control::OnLate()
{
    Error error;
    error.Set(G_IO_ERROR_TIMED_OUT, "the service is late");
    EndRestarts(error.Get());
}

void Control::EndRestarts(GError const* error)
{
    for (ServiceLink::Reply const& reply : std::exchange(m_restarting, {})) {
        reply(nullptr, error);
    }
}

void Control::RefuseRestarts(char const* name, char const* text)
{
    for (ServiceLink::Reply const& reply : std::exchange(m_restarting, {})) {
        ReplyError(reply, name, text);
    }
}

/// Only a running service can respond.
void Control::ReportResponding(bool isResponding)
{
    bool const wasResponding = g_variant_get_boolean(m_report.Value("Responding")) != FALSE;
    if (m_service.IsRunning() && isResponding != wasResponding) {
        SetProperty("Responding", Boolean(isResponding));
    }
}

void Control::SetProperty(char const* property, GVariant* value)
{
    m_report.Set(property, value);
    Emit(link::Properties, link::PropertiesChanged, m_report.Changed({property}));
}

} // namespace zviptv::sim

// SPDX-License-Identifier: MIT
#include "ServiceControl.h"

#include "CaptionReport.h"
#include "Interface.h"
#include "Link.h"
#include "Methods.h"
#include "Report.h"
#include "Watch.h"
#include "verbs/Verbs.h"

#include <zviptv/Protocol.h>

#include <cstdlib>
#include <set>
#include <stdexcept>

namespace zviptv::sim {

namespace {

constexpr std::chrono::milliseconds UpdateDelay{20};
constexpr std::chrono::milliseconds UpdatePeriod{1000};

/// Properties that change all the time: by the interface, their changes are not announced.
bool IsContinuous(char const* property)
{
    GDBusPropertyInfo const* const info =
        g_dbus_interface_info_lookup_property(SimulatorInterface(), property);
    return g_strcmp0(g_dbus_annotation_info_lookup(info->annotations,
                                                   "org.freedesktop.DBus.Property.EmitsChangedSignal"),
                     "false") == 0;
}

Owned<GDBusConnection> Connect(int descriptor)
{
    Error error;
    Owned<GSocket> const socket(g_socket_new_from_fd(descriptor, error.Out()));
    if (error) {
        throw std::runtime_error(std::string("the service is started by the simulator only: ") +
                                 error.Message());
    }
    Owned<GSocketConnection> const stream(g_socket_connection_factory_create_connection(socket.get()));
    Owned<GDBusConnection> connection(g_dbus_connection_new_sync(
        G_IO_STREAM(stream.get()), nullptr,
        static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                          G_DBUS_CONNECTION_FLAGS_DELAY_MESSAGE_PROCESSING),
        nullptr, nullptr, error.Out()));
    if (error) {
        throw std::runtime_error(std::string("the simulator does not answer its service: ") +
                                 error.Message());
    }
    return connection;
}

/// A text, unless it is very long; otherwise the size in bytes.
std::string TextOrSize(std::string const& value)
{
    constexpr std::size_t longest = 4096;
    return value.size() <= longest && g_utf8_validate_len(value.data(), value.size(), nullptr) != FALSE
               ? value
               : Shown(value);
}

GVariant* ArgumentsOf(CMessageBuffer const& request)
{
    GVariantBuilder arguments;
    g_variant_builder_init(&arguments, G_VARIANT_TYPE("a{ss}"));
    std::set<std::string> seen; // of several entries with the same key, the first counts
    for (int i = 0; i < request.Size(); ++i) {
        std::string const key = Shown(request.GetKey(i));
        if (key != protocol::key::FunctionName && seen.insert(key).second) {
            g_variant_builder_add(&arguments, "{ss}", key.c_str(), TextOrSize(request.GetValue(i)).c_str());
        }
    }
    return g_variant_builder_end(&arguments);
}

/// -1 if there was none.
gint32 ResultOf(CMessageBuffer const* reply)
{
    return reply == nullptr ? -1
                            : static_cast<gint32>(std::atoi(reply->GetValue(protocol::key::Result).c_str()));
}

} // namespace

ServiceControl::ServiceControl(int descriptor, Service& service, MainLoop& loop, std::function<void()> begin)
    : m_service(service), m_loop(loop), m_begin(std::move(begin)),
      m_node(g_dbus_node_info_new_for_xml(link::Introspection, nullptr)), m_connection(Connect(descriptor))
{
    Export(SimulatorInterface());
    Export(m_node->interfaces[0]);
    m_service.SetListeners([this](RequestLog::Entry const& entry) { OnRequest(entry); },
                           [this] { UpdateSoon(); });
    if (Replay* const replay = m_service.Replayed()) {
        replay->SetDeathListener([this](std::optional<double> returnAfter) {
            Update();
            Emit(link::Interface, link::Dies, g_variant_new("(d)", returnAfter.value_or(-1)));
        });
    }
    g_dbus_connection_start_message_processing(m_connection.get());
}

ServiceControl::~ServiceControl()
{
    m_service.SetListeners([](RequestLog::Entry const&) {}, [] {});
    if (Replay* const replay = m_service.Replayed()) {
        replay->SetDeathListener({});
    }
    for (guint const id : m_exported) {
        g_dbus_connection_unregister_object(m_connection.get(), id);
    }
}

void ServiceControl::Export(GDBusInterfaceInfo* info)
{
    static constexpr GDBusInterfaceVTable calls = {OnCall, nullptr, nullptr, {}};
    m_exported.push_back(g_dbus_connection_register_object(m_connection.get(), verbs::ObjectPath, info,
                                                           &calls, this, nullptr, nullptr));
}

void ServiceControl::OnCall(GDBusConnection* /*connection*/, char const* /*sender*/, char const* /*path*/,
                            char const* interface, char const* method, GVariant* parameters,
                            GDBusMethodInvocation* invocation, gpointer self)
{
    try {
        static_cast<ServiceControl*>(self)->Answer(interface, method, parameters, invocation);
    } catch (std::invalid_argument const& failure) {
        g_dbus_method_invocation_return_dbus_error(invocation, link::InvalidArgument, failure.what());
    } catch (std::exception const& failure) {
        g_dbus_method_invocation_return_dbus_error(invocation, link::Failed, failure.what());
    }
}

/// Changes are reported before the answer.
void ServiceControl::Answer(std::string const& interface, std::string const& method, GVariant* parameters,
                            GDBusMethodInvocation* invocation)
{
    if (interface == link::Properties) {
        Owned<GVariant> const report = Report(m_service);
        g_dbus_method_invocation_return_value(invocation, g_variant_new("(@a{sv})", report.get()));
        return;
    }
    if (method == link::Watch) {
        g_dbus_method_invocation_return_value(invocation, Watch(m_service, parameters, invocation));
        return;
    }
    if (method == link::Begin) {
        m_loop.After(std::chrono::milliseconds(0), m_begin); // an exception ends the service
    } else if (method == link::Restore) {
        Owned<GVariant> const kept(g_variant_get_child_value(parameters, 0));
        Restore(m_service, kept.get());
    } else {
        Perform(m_service, method, parameters,
                [this, invocation](std::string const& error) { FinishCall(invocation, error); });
        return;
    }
    g_dbus_method_invocation_return_value(invocation, nullptr);
}

void ServiceControl::FinishCall(GDBusMethodInvocation* invocation, std::string const& error)
{
    Update();
    if (error.empty()) {
        g_dbus_method_invocation_return_value(invocation, nullptr);
    } else {
        g_dbus_method_invocation_return_dbus_error(invocation, link::Failed, error.c_str());
    }
}

void ServiceControl::ReportReady()
{
    Update();
    Emit(link::Interface, link::Ready, nullptr);
    UpdateEverySecond();
}

void ServiceControl::Emit(char const* interface, char const* signal, GVariant* body)
{
    g_dbus_connection_emit_signal(m_connection.get(), nullptr, verbs::ObjectPath, interface, signal, body,
                                  nullptr);
}

void ServiceControl::OnRequest(RequestLog::Entry const& entry)
{
    Emit(verbs::Interface, "Request",
         g_variant_new("(sss@a{ss}is)", entry.busName.c_str(), entry.endpoint.c_str(),
                       Shown(entry.request.GetValue(protocol::key::FunctionName)).c_str(),
                       ArgumentsOf(entry.request), ResultOf(entry.reply),
                       (entry.note.empty() ? entry.replay : entry.note).c_str()));
}

/// Many changes may happen at once.
void ServiceControl::UpdateSoon()
{
    if (!m_isUpdateDue) {
        m_isUpdateDue = true;
        m_loop.After(UpdateDelay, [this] { Update(); });
    }
}

void ServiceControl::UpdateEverySecond()
{
    m_loop.After(UpdatePeriod, [this] {
        Update();
        UpdateEverySecond();
    });
}

void ServiceControl::Update()
{
    m_isUpdateDue = false;
    Owned<GVariant> report = Report(m_service);
    GVariantBuilder changes;
    g_variant_builder_init(&changes, G_VARIANT_TYPE_VARDICT);
    bool hasChanged = false;
    GVariantIter properties;
    g_variant_iter_init(&properties, report.get());
    char const* name = nullptr;
    for (GVariant* raw = nullptr; g_variant_iter_next(&properties, "{&sv}", &name, &raw) != FALSE;) {
        Owned<GVariant> const value(raw);
        Owned<GVariant> const before(m_report ? g_variant_lookup_value(m_report.get(), name, nullptr)
                                              : nullptr);
        if (!before || (!IsContinuous(name) && g_variant_equal(before.get(), value.get()) == FALSE)) {
            g_variant_builder_add(&changes, "{sv}", name, value.get());
            hasChanged = true;
        }
    }
    Owned<GVariant> const changed(g_variant_ref_sink(g_variant_builder_end(&changes)));
    if (hasChanged) {
        Emit(link::Properties, link::PropertiesChanged,
             g_variant_new("(s@a{sv}as)", verbs::Interface, changed.get(), nullptr));
    }
    m_report = std::move(report);
    ReportCaptions();
    Owned<GVariant> kept = Keep(m_service);
    if (!m_kept || g_variant_equal(m_kept.get(), kept.get()) == FALSE) {
        Emit(link::Interface, link::Kept, g_variant_new("(@a{sv})", kept.get()));
        m_kept = std::move(kept);
    }
}

void ServiceControl::ReportCaptions()
{
    Owned<GVariant> captions = CaptionsOf(m_service.Parts().tap);
    if (!m_captions || g_variant_equal(m_captions.get(), captions.get()) == FALSE) {
        Emit(link::Interface, link::Captions, g_variant_new("(@a{sv})", captions.get()));
        m_captions = std::move(captions);
    }
}

} // namespace zviptv::sim

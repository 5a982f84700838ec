// SPDX-License-Identifier: MIT
#include "dbus/CloseWatch.h"

#include "dbus/UserData.h"

#include <memory>
#include <utility>

namespace zviptv {

namespace {

struct Report
{
    Owned<GMainContext> context;
    std::function<void()> closed;
};
using ReportData = UserData<std::shared_ptr<Report const>>;

} // namespace

CloseWatch::CloseWatch(GDBusConnection* connection, std::function<void()> closed)
    : m_connection(Share(connection)),
      m_id(g_signal_connect_data(
          connection, "closed", G_CALLBACK(OnClosed),
          ReportData::New(std::make_shared<Report const>(
              Report{Owned<GMainContext>(g_main_context_ref_thread_default()), std::move(closed)})),
          [](void* data, GClosure*) { ReportData::Release(data); }, GConnectFlags{}))
{
}

CloseWatch::CloseWatch(CloseWatch&& other) noexcept
    : m_connection(std::move(other.m_connection)), m_id(std::exchange(other.m_id, 0))
{
}

CloseWatch& CloseWatch::operator=(CloseWatch&& other) noexcept
{
    std::swap(m_connection, other.m_connection);
    std::swap(m_id, other.m_id);
    return *this;
}

CloseWatch::~CloseWatch()
{
    if (m_id != 0) {
        g_signal_handler_disconnect(m_connection.get(), m_id);
    }
}

void CloseWatch::OnClosed(GDBusConnection* /*connection*/, gboolean /*byPeer*/, GError* /*error*/, void* data)
{
    std::shared_ptr<Report const> const report = ReportData::Get(data);
    Owned<GSource> const source(g_idle_source_new());
    g_source_set_priority(source.get(), G_PRIORITY_DEFAULT);
    g_source_set_callback(
        source.get(),
        [](void* handed) -> gboolean {
            ReportData::Get(handed)->closed();
            return G_SOURCE_REMOVE;
        },
        ReportData::New(report), ReportData::Release);
    g_source_attach(source.get(), report->context.get());
}

} // namespace zviptv

// SPDX-License-Identifier: MIT
#include "Monitor.h"

#include <atomic>
#include <deque>
#include <mutex>
#include <utility>

namespace zviptv::trace {

namespace {

/// Time limit for the answer of the bus to BecomeMonitor, in milliseconds.
constexpr int MonitorTimeout = 10'000;

/// Messages that are handled at once: after them, the thread gets to its other work.
constexpr std::size_t Turn = 1'000;

constexpr auto ClientFlags = static_cast<GDBusConnectionFlags>(
    G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT | G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION);

/// Returns from g_main_context_iteration() at a time.
Owned<GSource> MakeAlarm(GMainContext* context, std::chrono::milliseconds time)
{
    Owned<GSource> source(g_timeout_source_new(static_cast<guint>(time.count())));
    g_source_set_callback(
        source.get(), [](gpointer) -> gboolean { return G_SOURCE_REMOVE; }, nullptr, nullptr);
    g_source_attach(source.get(), context);
    return source;
}

} // namespace

/// The queue between GLib's worker thread, which reads the connection, and the thread of the handlers.
class Monitor::Inbox : public std::enable_shared_from_this<Inbox>
{
public:
    Inbox(std::function<void(Message const&)> onMessage, std::function<void()> onPause)
        : m_onMessage(std::move(onMessage)), m_onPause(std::move(onPause)),
          m_context(g_main_context_ref_thread_default())
    {
    }

    /// Runs on the worker thread. Until the bus has agreed, messages are for GLib. Returns the message for
    /// GLib.
    GDBusMessage* Take(GDBusMessage* message)
    {
        if (!m_isMonitor) {
            m_isMonitor = g_dbus_message_get_message_type(message) == G_DBUS_MESSAGE_TYPE_METHOD_RETURN;
            return message;
        }
        Owned<GDBusMessage> const owned(message);
        SeeMarker(g_dbus_message_get_destination(message));
        gsize size = 0;
        Error error;
        Owned<unsigned char> const bytes(
            g_dbus_message_to_blob(message, &size, G_DBUS_CAPABILITY_FLAGS_UNIX_FD_PASSING, error.Out()));
        if (bytes == nullptr) {
            ++m_lost;
            return nullptr;
        }
        Add({g_get_real_time(), std::string(reinterpret_cast<char const*>(bytes.get()), size)});
        return nullptr;
    }

    /// Handles some messages. Runs on the thread of the handlers, like HandleAll().
    void Handle()
    {
        Fetch();
        HandleFetched(Turn);
        std::lock_guard<std::mutex> const lock(m_mutex);
        if (m_isOpen && (!m_fetched.empty() || !m_messages.empty())) {
            Schedule();
        }
    }

    /// Handles all messages that are queued now.
    void HandleAll()
    {
        HandleFetched(m_fetched.size());
        Fetch();
        HandleFetched(m_fetched.size());
    }

    /// Starts to wait for a message to `busName`, or for none if it is empty.
    void Await(char const* busName)
    {
        std::lock_guard<std::mutex> const lock(m_mutex);
        m_awaited = busName;
        m_hasCome = false;
    }

    bool HasCome() const { return m_hasCome; }

    void Close() { m_isOpen = false; }
    std::uint64_t Lost() const { return m_lost; }

private:
    void SeeMarker(char const* destination)
    {
        std::lock_guard<std::mutex> const lock(m_mutex);
        if (destination != nullptr && !m_awaited.empty() && m_awaited == destination) {
            m_awaited.clear();
            m_hasCome = true;
        }
    }

    void Add(Message message)
    {
        std::lock_guard<std::mutex> const lock(m_mutex);
        m_messages.push_back(std::move(message));
        Schedule();
    }

    /// Requires the lock.
    void Schedule()
    {
        if (!std::exchange(m_isScheduled, true)) {
            Owned<GSource> const source(g_idle_source_new());
            g_source_set_priority(source.get(), G_PRIORITY_DEFAULT);
            g_source_set_callback(source.get(), OnScheduled, new std::shared_ptr<Inbox>(shared_from_this()),
                                  [](gpointer inbox) { delete static_cast<std::shared_ptr<Inbox>*>(inbox); });
            g_source_attach(source.get(), m_context.get());
        }
    }

    /// Fetches the queued messages if all that were fetched before are handled.
    void Fetch()
    {
        std::lock_guard<std::mutex> const lock(m_mutex);
        m_isScheduled = false;
        if (m_fetched.empty()) {
            std::swap(m_fetched, m_messages);
        }
    }

    void HandleFetched(std::size_t most)
    {
        for (; most > 0 && m_isOpen && !m_fetched.empty(); --most) {
            m_onMessage(m_fetched.front());
            m_fetched.pop_front();
        }
        if (m_isOpen && m_onPause) {
            m_onPause();
        }
    }

    static gboolean OnScheduled(gpointer inbox)
    {
        (*static_cast<std::shared_ptr<Inbox>*>(inbox))->Handle();
        return G_SOURCE_REMOVE;
    }

    std::function<void(Message const&)> const m_onMessage;
    std::function<void()> const m_onPause;
    Owned<GMainContext> const m_context;
    bool m_isMonitor = false;      ///< for the worker thread
    bool m_isOpen = true;          ///< for the thread of the handlers
    std::deque<Message> m_fetched; ///< for the thread of the handlers, before m_messages
    std::atomic<std::uint64_t> m_lost{0};
    std::atomic<bool> m_hasCome{false}; ///< the awaited message
    std::mutex m_mutex;                 ///< protects the next members
    std::string m_awaited;
    std::deque<Message> m_messages;
    bool m_isScheduled = false;
};

Monitor::Monitor(std::string const& address, Handlers handlers)
    : m_address(address),
      m_inbox(std::make_shared<Inbox>(std::move(handlers.onMessage), std::move(handlers.onPause))),
      m_onEnd(std::move(handlers.onEnd))
{
    Error error;
    m_connection.reset(g_dbus_connection_new_for_address_sync(m_address.c_str(), ClientFlags, nullptr,
                                                              nullptr, error.Out()));
    if (m_connection == nullptr) {
        throw MonitorError("cannot connect to the bus at " + address + ": " + error.Message() +
                               "; check that it runs",
                           false);
    }
    g_dbus_connection_add_filter(m_connection.get(), Filter, new std::shared_ptr<Inbox>(m_inbox),
                                 [](gpointer inbox) { delete static_cast<std::shared_ptr<Inbox>*>(inbox); });
    Owned<GVariant> const reply(g_dbus_connection_call_sync(
        m_connection.get(), "org.freedesktop.DBus", "/org/freedesktop/DBus",
        "org.freedesktop.DBus.Monitoring", "BecomeMonitor", g_variant_new("(asu)", nullptr, 0), nullptr,
        G_DBUS_CALL_FLAGS_NONE, MonitorTimeout, nullptr, error.Out()));
    if (reply == nullptr) {
        error.StripName();
        throw MonitorError("the bus at " + address + " refuses to be watched: " + error.Message() +
                               "; run this command as root, or, on a private bus, as the user who runs it",
                           true);
    }
    m_closed = g_signal_connect(m_connection.get(), "closed", G_CALLBACK(OnClosed), this);
}

Monitor::~Monitor()
{
    m_inbox->Close();
    if (m_closed != 0) {
        g_signal_handler_disconnect(m_connection.get(), m_closed);
    }
    g_dbus_connection_close_sync(m_connection.get(), nullptr, nullptr);
}

/// A connection whose only purpose is that the monitor sees the bus's first message to it.
struct Monitor::Marker
{
    explicit Marker(Inbox& of) : inbox(of) { inbox.Await(""); }

    Inbox& inbox;
    Owned<GCancellable> const cancellable{g_cancellable_new()};
    Owned<GDBusConnection> connection;
    bool hasEnded = false; ///< no callback follows
    bool hasFailed = false;

    static void OnConnected(GObject* /*source*/, GAsyncResult* result, gpointer data)
    {
        auto& self = *static_cast<Marker*>(data);
        self.connection.reset(g_dbus_connection_new_for_address_finish(result, nullptr));
        self.hasEnded = self.hasFailed = self.connection == nullptr;
        if (!self.hasEnded) {
            self.inbox.Await(g_dbus_connection_get_unique_name(self.connection.get()));
            g_dbus_connection_call(self.connection.get(), "org.freedesktop.DBus", "/org/freedesktop/DBus",
                                   "org.freedesktop.DBus", "GetId", nullptr, nullptr, G_DBUS_CALL_FLAGS_NONE,
                                   -1, self.cancellable.get(), OnAnswered, data);
        }
    }

    static void OnAnswered(GObject* /*source*/, GAsyncResult* result, gpointer data)
    {
        auto& self = *static_cast<Marker*>(data);
        Owned<GVariant> const reply(g_dbus_connection_call_finish(self.connection.get(), result, nullptr));
        self.hasEnded = true;
        self.hasFailed = reply == nullptr;
    }
};

bool Monitor::CatchUp(std::chrono::milliseconds limit, std::function<bool()> const& isOver)
{
    Owned<GMainContext> const context(g_main_context_ref_thread_default());
    Owned<GSource> const alarm = MakeAlarm(context.get(), limit);
    Marker marker(*m_inbox);
    g_dbus_connection_new_for_address(m_address.c_str(), ClientFlags, nullptr, marker.cancellable.get(),
                                      Marker::OnConnected, &marker);
    while (!m_inbox->HasCome() && !marker.hasFailed && g_source_is_destroyed(alarm.get()) == FALSE &&
           !isOver()) {
        g_main_context_iteration(context.get(), TRUE);
    }
    g_source_destroy(alarm.get());
    g_cancellable_cancel(marker.cancellable.get());
    while (!marker.hasEnded) {
        g_main_context_iteration(context.get(), TRUE);
    }
    if (marker.connection != nullptr) {
        g_dbus_connection_close(marker.connection.get(), nullptr, nullptr, nullptr);
    }
    m_inbox->HandleAll();
    return m_inbox->HasCome();
}

std::uint64_t Monitor::Lost() const
{
    return m_inbox->Lost();
}

GDBusMessage* Monitor::Filter(GDBusConnection* /*connection*/, GDBusMessage* message, gboolean isIncoming,
                              gpointer inbox)
{
    return isIncoming != FALSE ? (*static_cast<std::shared_ptr<Inbox>*>(inbox))->Take(message) : message;
}

void Monitor::OnClosed(GDBusConnection* /*connection*/, gboolean /*isRemote*/, GError* error, gpointer self)
{
    auto& monitor = *static_cast<Monitor*>(self);
    monitor.m_inbox->HandleAll();
    if (monitor.m_onEnd) {
        monitor.m_onEnd(error != nullptr ? error->message : "the connection was closed");
    }
}

} // namespace zviptv::trace

// SPDX-License-Identifier: MIT
#include "client/link/Bus.h"

#include "client/link/Context.h"
#include "client/link/Failures.h"
#include "dbus/FreeDescriptors.h"
#include "glib/Deadline.h"

namespace zviptv::client {

namespace {

constexpr auto MessageBus = static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                                              G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION);

/// How long a bus that accepts a connection may take to answer.
constexpr std::chrono::milliseconds ConnectTimeout{2000};

Failure CannotConnect(char const* function, Error const& error)
{
    if (error.Is(G_IO_ERROR_CANCELLED)) {
        return NoBus(function, "the bus does not answer");
    }
    return NoBus(function, std::string("cannot connect to the bus: ") + error.Message());
}

/// An attachment that ends while no other thread can be in a callback of its channels: no other thread
/// iterates the context, or the one that does ends it.
std::shared_ptr<Attachment> Share(Owned<GDBusConnection> connection, GMainContext* context)
{
    using Unique = std::unique_ptr<Attachment>;
    auto const end = [kept = std::shared_ptr<GMainContext>(g_main_context_ref(context),
                                                           g_main_context_unref)](Attachment* attachment) {
        if (g_main_context_acquire(kept.get()) != FALSE) {
            Unique(attachment).reset();
            g_main_context_release(kept.get());
        } else {
            g_main_context_invoke_full(
                kept.get(), G_PRIORITY_DEFAULT, [](void*) -> gboolean { return G_SOURCE_REMOVE; }, attachment,
                [](void* data) { Unique(static_cast<Attachment*>(data)).reset(); });
        }
    };
    return std::shared_ptr<Attachment>(std::make_unique<Attachment>(std::move(connection)).release(), end);
}

} // namespace

/// One attempt to connect without waiting. The caller of Attach holds it, so that `bus` lives as long.
struct Bus::Attempt
{
    Attempt(Bus* b, std::function<void(std::optional<Failure>)> d) : bus(b), done(std::move(d)) {}
    ~Attempt() { g_cancellable_cancel(cancellable.get()); }

    Bus* bus;
    std::function<void(std::optional<Failure>)> done;
    Owned<GCancellable> cancellable{g_cancellable_new()};
    Timer timeout{};
};

std::string Bus::Address() const
{
    if (!m_address.empty()) {
        return m_address;
    }
    Owned<char> const address(g_dbus_address_get_for_bus_sync(G_BUS_TYPE_SYSTEM, nullptr, nullptr));
    return address == nullptr ? std::string() : std::string(address.get());
}

std::shared_ptr<Attachment> Bus::Current()
{
    std::lock_guard<std::mutex> const lock(m_mutex);
    return m_current != nullptr && m_current->IsAlive() ? m_current : nullptr;
}

Result<std::shared_ptr<Attachment>> Bus::Install(Owned<GDBusConnection> connection)
{
    std::lock_guard<std::mutex> const lock(m_mutex);
    if (m_isClosed) {
        return Gone("");
    }
    if (m_current == nullptr || !m_current->IsAlive()) { // otherwise another thread was faster
        m_current = Share(std::move(connection), m_context.get());
    }
    return m_current;
}

Result<std::shared_ptr<Attachment>> Bus::AttachNow(char const* function)
{
    if (std::shared_ptr<Attachment> current = Current()) {
        return current;
    }
    std::lock_guard<std::mutex> const connecting(m_connecting);
    if (std::shared_ptr<Attachment> current = Current()) {
        return current;
    }
    Error error;
    Owned<GDBusConnection> connection;
    if (HaveFreeDescriptors(DescriptorsOfAConnection, error)) {
        Deadline const deadline(ConnectTimeout);
        connection.reset(g_dbus_connection_new_for_address_sync(Address().c_str(), MessageBus, nullptr,
                                                                deadline.Get(), error.Out()));
    }
    if (connection == nullptr) {
        return CannotConnect(function, error);
    }
    return Install(std::move(connection));
}

std::shared_ptr<void> Bus::Attach(std::function<void(std::optional<Failure>)> done)
{
    auto const attempt = std::make_shared<Attempt>(this, std::move(done));
    GMainContext* const context = g_main_context_get_thread_default();
    std::weak_ptr<Attempt> const weak = attempt;
    Error error;
    if (!HaveFreeDescriptors(DescriptorsOfAConnection, error)) {
        attempt->timeout =
            Timer(context, std::chrono::milliseconds(0), [weak, why = CannotConnect("", error)] {
                if (std::shared_ptr<Attempt> const self = weak.lock()) {
                    self->done(why);
                }
            });
        return attempt;
    }
    attempt->timeout = Timer(context, ConnectTimeout, [weak] {
        if (std::shared_ptr<Attempt> const self = weak.lock()) {
            g_cancellable_cancel(self->cancellable.get());
        }
    });
    g_dbus_connection_new_for_address(Address().c_str(), MessageBus, nullptr, attempt->cancellable.get(),
                                      OnConnected, UserData<std::weak_ptr<Attempt>>::New(weak));
    return attempt;
}

void Bus::OnConnected(GObject* /*source*/, GAsyncResult* result, void* data)
{
    std::shared_ptr<Attempt> const attempt = UserData<std::weak_ptr<Attempt>>::Get(data).lock();
    UserData<std::weak_ptr<Attempt>>::Release(data);
    Error error;
    Owned<GDBusConnection> connection(g_dbus_connection_new_for_address_finish(result, error.Out()));
    if (attempt == nullptr) {
        return;
    }
    attempt->timeout = Timer();
    if (connection == nullptr) {
        attempt->done(CannotConnect("", error));
    } else {
        auto const installed = attempt->bus->Install(std::move(connection));
        attempt->done(installed ? std::nullopt : std::optional<Failure>(installed.GetFailure()));
    }
}

void Bus::Close()
{
    std::shared_ptr<Attachment> last;
    {
        std::lock_guard<std::mutex> const lock(m_mutex);
        m_isClosed = true;
        last.swap(m_current);
    }
    if (last != nullptr) {
        last->Close();
    }
}

} // namespace zviptv::client

// SPDX-License-Identifier: MIT
#include "client/link/Bus.h"

#include "client/link/Context.h"
#include "client/link/Failures.h"
#include "dbus/FreeDescriptors.h"
#include "glib/Deadline.h"

#include <future>
#include <system_error>

namespace zviptv::client {

namespace {

constexpr auto MessageBus = static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                                              G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION);

/// How long a bus that accepts a connection may take to answer.
constexpr std::chrono::milliseconds ConnectTimeout{2000};
/// The same if nobody wants the connection any more. If a handshake is cancelled in its last step, GIO closes
/// the socket on another thread, a moment later.
constexpr std::chrono::milliseconds AbandonTimeout{250};

Failure CannotConnect(char const* function, Error const& error)
{
    if (error.Is(G_IO_ERROR_CANCELLED)) {
        return NoBus(function, "the bus does not answer");
    }
    return NoBus(function, std::string("cannot connect to the bus: ") + error.Message());
}

/// A connection that is still to be made. It belongs to the main context that is the calling thread's
/// default.
Owned<GDBusConnection> Unconnected(std::string const& address)
{
    return Owned<GDBusConnection>(G_DBUS_CONNECTION(
        g_object_new(G_TYPE_DBUS_CONNECTION, "address", address.c_str(), "flags", MessageBus, nullptr)));
}

/// Makes a connection, and waits for the answer of the bus. Nothing on success.
std::optional<Failure> Connect(char const* function, GDBusConnection* connection, GCancellable* cancellable)
{
    Error error;
    bool const isConnected = g_initable_init(G_INITABLE(connection), cancellable, error.Out()) != FALSE;
    return isConnected ? std::nullopt : std::optional<Failure>(CannotConnect(function, error));
}

/// An attachment that ends while no other thread can be in a callback of its channels: no other thread
/// iterates the context, or the one that does ends it.
std::shared_ptr<Attachment> NewAttachment(Owned<GDBusConnection> connection, GMainContext* context)
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

/// One attempt to connect without waiting: it connects on another thread. The caller of Attach holds it, so
/// that `bus` lives as long.
struct Bus::Attempt : std::enable_shared_from_this<Attempt>
{
    Attempt(Bus* b, std::function<void(std::optional<Failure>)> d) : bus(b), done(std::move(d)) {}
    ~Attempt();
    void Begin();
    void ReportOutcome();
    void OnOutcome();

    Bus* bus;
    std::function<void(std::optional<Failure>)> done;
    Owned<GDBusConnection> connection = Unconnected(bus->Address());
    Owned<GCancellable> cancellable{g_cancellable_new()};
    Timer timeout{};
    Timer report{};
    std::future<std::optional<Failure>> outcome{};
};

Bus::Attempt::~Attempt()
{
    if (outcome.valid()) {
        outcome.wait_for(AbandonTimeout);
        g_cancellable_cancel(cancellable.get());
        if (!outcome.get()) {
            Attachment(std::move(connection)).Close();
        }
    }
}

void Bus::Attempt::Begin()
{
    auto const refuse = [this](Failure failure) {
        outcome = std::async(std::launch::deferred,
                             [failure = std::move(failure)] { return std::optional(failure); });
        ReportOutcome();
    };
    Error error;
    if (!HaveFreeDescriptors(DescriptorsOfAConnection, error)) {
        refuse(CannotConnect("", error));
        return;
    }
    timeout = Timer(bus->m_context.get(), ConnectTimeout, [weak = weak_from_this()] {
        if (std::shared_ptr<Attempt> const self = weak.lock()) {
            g_cancellable_cancel(self->cancellable.get());
        }
    });
    try {
        outcome = std::async(std::launch::async, [this] {
            std::optional<Failure> failure = Connect("", connection.get(), cancellable.get());
            ReportOutcome();
            return failure;
        });
    } catch (std::system_error const& exception) {
        refuse(NoBus("", std::string("cannot start a thread that connects: ") + exception.what()));
    }
}

void Bus::Attempt::ReportOutcome()
{
    report = Timer(bus->m_context.get(), std::chrono::milliseconds(0), [weak = weak_from_this()] {
        if (std::shared_ptr<Attempt> const self = weak.lock()) {
            self->OnOutcome();
        }
    });
}

void Bus::Attempt::OnOutcome()
{
    timeout = Timer();
    std::optional<Failure> failure = outcome.get();
    if (!failure) {
        auto const installed = bus->Install(std::move(connection));
        failure = installed ? std::nullopt : std::optional<Failure>(installed.GetFailure());
    }
    done(failure);
}

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
    if (m_current == nullptr || !m_current->IsAlive()) {
        m_current = NewAttachment(std::move(connection), m_context.get());
    } else { // another thread was faster
        Attachment(std::move(connection)).Close();
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
    if (!HaveFreeDescriptors(DescriptorsOfAConnection, error)) {
        return CannotConnect(function, error);
    }
    Deadline const deadline(ConnectTimeout);
    Owned<GDBusConnection> connection = Unconnected(Address());
    if (std::optional<Failure> const failure = Connect(function, connection.get(), deadline.Get())) {
        return *failure;
    }
    return Install(std::move(connection));
}

std::shared_ptr<void> Bus::Attach(std::function<void(std::optional<Failure>)> done)
{
    auto const attempt = std::make_shared<Attempt>(this, std::move(done));
    attempt->Begin();
    return attempt;
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

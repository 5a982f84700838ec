// SPDX-License-Identifier: MIT
/// @file
/// A television: where applications begin.

#pragma once

#include <zviptv/Export.h>
#include <zviptv/client/Broadcast.h>
#include <zviptv/client/Guide.h>
#include <zviptv/client/Pending.h>
#include <zviptv/client/Player.h>
#include <zviptv/client/Result.h>
#include <zviptv/client/Subscription.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

namespace zviptv {

/// An application's connection to the IPTV service of a television: calls the functions of the service, and
/// reports whether it is available.
///
/// Each Television has a separate bus connection: several may exist in a process, also together with the
/// objects of IPTVServiceAPI.h. It connects by itself to the bus and to the service, also after a restart of
/// either. The application does not need to create it again.
///
/// Threads: a Television belongs to the main context that is the default of the thread that creates it
/// (g_main_context_get_thread_default()). All callbacks run on the thread that iterates this context. Call
/// all functions on that thread, unless they say otherwise. The functions of Player, Broadcast and Guide that
/// wait for their answer may be called from any thread, and do not need the context to be iterated.
///
/// Lifetime: may be destroyed inside its own callbacks, but not while another thread is in one of its
/// functions. Outstanding asynchronous calls end with FailureKind::Gone: their completions run before the
/// destructor returns. No callback runs after it. A call that is made in such a completion is dropped, and
/// its completion does not run. The destructor closes all descriptors; for this, it waits at most 250 ms for
/// the bus. The memory of outstanding calls is freed when the context is next iterated, or is itself freed.
///
/// Exceptions: functions throw only std::bad_alloc. An exception of a callback is caught and reported to
/// OnError.
class ZVIPTV_API Television
{
public:
    /// How a television is reached.
    struct Options
    {
        /// D-Bus address of the bus; empty for the system bus, at DBUS_SYSTEM_BUS_ADDRESS if that is set.
        std::string busAddress;
        /// Profile of the handle of all requests; the low 16 bits count.
        std::uint32_t profile = 1;
        /// Number within the profile. Use numbers up to 255: larger ones carry into the profile's part.
        std::uint16_t id = 0;
        /// Names the application to the service (SetAppID) whenever the player is connected. Empty for no
        /// name.
        std::string applicationId;
    };

    /// Uses the system bus, the default handle, and no application id. Returns at once, and connects in the
    /// background.
    Television();
    /// Uses the values of `options`; otherwise like Television().
    explicit Television(Options options);
    ~Television();
    Television(Television const&) = delete;
    Television& operator=(Television const&) = delete;

    /// Whether the service is on the bus, as far as is known: false until the context was iterated. Any
    /// thread.
    bool IsAvailable() const;

    /// Calls `listener` with true whenever the service has come, and with false whenever it has left. Not
    /// called for the state at the time of the registration.
    Listener OnAvailability(std::function<void(bool isAvailable)> listener);

    /// Calls `handler` with failures that belong to no call: pushed messages that cannot be read, and
    /// exceptions of callbacks. Replaces the former handler; null for none. What the handler itself throws is
    /// ignored.
    void OnError(std::function<void(Failure const&)> handler);

    /// Calls `callback` with each PES packet that the service pushes and that passes the filter, until the
    /// subscription ends. There may be any number of subscriptions: the service is asked to push while there
    /// is at least one, and again after a restart.
    Subscription SubscribePes(PesFilter filter, std::function<void(PesPacket const&)> callback);

    /// The same for the data of captions, which the service pushes separately from PES packets.
    /// CaptionDecoder turns the data into text.
    Subscription SubscribeCaptions(std::function<void(CaptionData const&)> callback);

    /// Sound, tracks and clocks. Any thread may call this function, and use the result while the Television
    /// exists.
    zviptv::Player& Player();
    /// Track lists, ratings and the parental lock. Any thread, like Player().
    zviptv::Broadcast& Broadcast();
    /// The programme guide. Any thread, like Player().
    zviptv::Guide& Guide();

private:
    friend class StateWatcher;

    struct Parts;
    std::unique_ptr<Parts> m_parts;
};

} // namespace zviptv

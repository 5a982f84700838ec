// SPDX-License-Identifier: MIT
#pragma once

#include "client/link/Channel.h"

#include <zviptv/client/Result.h>

#include <functional>
#include <memory>
#include <mutex>
#include <string>

namespace zviptv::client {

/// A connection to the bus that belongs to one television, and is replaced when its bus has died.
class Bus
{
public:
    /// An empty address stands for the system bus, where the environment says that it is when connecting.
    /// `context` is the one through which the channels call back.
    Bus(std::string address, GMainContext* context)
        : m_address(std::move(address)), m_context(g_main_context_ref(context))
    {
    }

    /// The attachment in use; null if there is none, or its bus has died. Any thread.
    std::shared_ptr<Attachment> Current();

    /// The attachment in use. If there is none it connects, and waits for 2 s at most. Any thread.
    Result<std::shared_ptr<Attachment>> AttachNow(char const* function);

    /// Connects without waiting; `done` runs through the context, after 2 s at the latest, with nothing on
    /// success. Returns what cancels it when it ends, upon which `done` does not run; this waits for at most
    /// 250 ms, and only for a bus that is about to answer. The context's thread.
    std::shared_ptr<void> Attach(std::function<void(std::optional<Failure>)> done);

    /// Closes the connection as Attachment::Close does. No further one is made. Any thread.
    void Close();

private:
    struct Attempt;

    std::string Address() const;
    Result<std::shared_ptr<Attachment>> Install(Owned<GDBusConnection> connection);

    std::string const m_address;
    Owned<GMainContext> const m_context;
    std::mutex m_connecting; ///< held while a thread waits for a connection
    std::mutex m_mutex;
    std::shared_ptr<Attachment> m_current;
    bool m_isClosed = false;
};

} // namespace zviptv::client

// SPDX-License-Identifier: MIT
#pragma once

#include "glib/Owned.h"

#include <string>

namespace zviptv::sim {

/// A call without content to an application's data subscriber, which answers after it has handled all earlier
/// messages. A stopped application leaves one call unanswered for as long as it is stopped, and answers when
/// it continues.
class Question
{
public:
    /// Uses the bus connection of the channels, so that the order of the messages is kept.
    explicit Question(std::string busName);
    ~Question() = default;
    Question(Question const&) = delete;
    Question& operator=(Question const&) = delete;

    /// Waits for the answer. Returns false if there will be none: the application has left, Cancel() was
    /// called, or the bus does not accept the call.
    bool Ask();

    /// Ends Ask() permanently. Any thread may call it.
    void Cancel();

private:
    std::string m_busName;
    Owned<GDBusConnection> m_connection;
    Owned<GCancellable> m_cancellable;
};

} // namespace zviptv::sim

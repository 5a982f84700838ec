// SPDX-License-Identifier: MIT
#pragma once

#include "glib/Owned.h"

#include <functional>
#include <memory>
#include <string>

namespace zviptv::trace {

/// Asks a bus for the processes of its connections, on a separate connection to it. For a bus on another
/// machine it gets only the ids, not the names of the programs.
class ProcessNames
{
public:
    using OnProcess =
        std::function<void(std::string const& busName, int processId, std::string const& program)>;

    /// `onProcess`, which may be empty, is called while the calling thread's default main context is
    /// iterated. Without a bus at the address, Ask() has no effect.
    explicit ProcessNames(std::string const& address, OnProcess onProcess = {});
    ~ProcessNames();
    ProcessNames(ProcessNames const&) = delete;
    ProcessNames& operator=(ProcessNames const&) = delete;

    /// Asks for the process of a connection. There is no answer for a closed connection.
    void Ask(std::string const& busName) const;

    /// The name of a process on the machine of the bus; empty if that is another machine, or the process has
    /// ended.
    std::string ProgramOf(int processId) const;

private:
    struct Question;

    static void OnAnswer(GObject* connection, GAsyncResult* result, gpointer question);

    std::shared_ptr<OnProcess> const m_onProcess;
    Owned<GDBusConnection> m_connection;
    bool m_isLocal = false; ///< process ids of the bus are those of this machine
};

} // namespace zviptv::trace

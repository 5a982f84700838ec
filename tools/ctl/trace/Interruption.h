// SPDX-License-Identifier: MIT
#pragma once

#include <csignal>
#include <map>

namespace zviptv::ctl {

/// While it exists, SIGINT, SIGTERM and SIGHUP end a read() instead of the process. For code without a main
/// loop. SIGHUP stays ignored under nohup.
class Interruption
{
public:
    Interruption();
    ~Interruption();
    Interruption(Interruption const&) = delete;
    Interruption& operator=(Interruption const&) = delete;

    /// Whether one of the signals has come since the last one of these objects was made.
    static bool HasCome();

private:
    std::map<int, struct sigaction> m_former; ///< by signal
};

/// Whether the process ignores the signal, as under nohup.
bool IsIgnored(int signal);

} // namespace zviptv::ctl

// SPDX-License-Identifier: MIT
#pragma once

#include "input/Datagrams.h"
#include "process/FileHandle.h"

#include <mutex>
#include <optional>
#include <thread>

namespace zviptv::sim {

/// Empties a socket on a separate thread, so that the socket's buffer, which may be small, does not fill up
/// while the main loop is busy. The other functions may be called from any thread.
class UdpReceiver
{
public:
    /// Datagrams that wait to be taken: 13 seconds at 20 Mbit/s. Those that find no room are lost.
    static constexpr std::size_t MaxWaitingBytes = 32 * 1024 * 1024;

    /// What came before is thrown away. @throws std::system_error
    explicit UdpReceiver(FileHandle socket);
    ~UdpReceiver();
    UdpReceiver(UdpReceiver const&) = delete;
    UdpReceiver& operator=(UdpReceiver const&) = delete;

    /// Can be read from, until Acknowledge(), when there are datagrams where there were none.
    int ReadyEnd() const { return m_ready.Get(); }
    void Acknowledge();

    /// Moves the datagrams that wait to `taken`, which has to be empty.
    void Take(Datagrams& taken);

    /// Datagrams so far that found no room, here or in the socket.
    std::uint64_t Lost() const;

private:
    void Run();
    void Discard();
    bool Receive();

    FileHandle m_socket;
    FileHandle m_ready;
    FileHandle m_stop;
    std::vector<std::uint8_t> m_buffer; ///< of the thread
    mutable std::mutex m_mutex;         ///< of what follows
    Datagrams m_waiting;
    std::uint64_t m_noRoom = 0;
    std::uint32_t m_drops = 0;                  ///< as the socket counts them, which wraps
    std::optional<std::uint32_t> m_dropsBefore; ///< the first datagram
    std::thread m_thread;
};

} // namespace zviptv::sim

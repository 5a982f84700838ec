// SPDX-License-Identifier: MIT
#pragma once

#include "input/Datagrams.h"
#include "process/FileHandle.h"

#include <mutex>
#include <optional>
#include <thread>

namespace zviptv::sim {

/// Reads a socket on a separate thread, so that the socket's buffer, which may be small, does not fill up
/// while the main loop is busy. All functions may be called from any thread.
class UdpReceiver
{
public:
    /// The size of the buffer for received datagrams: 13 seconds at 20 Mbit/s. Datagrams that do not fit are
    /// lost.
    static constexpr std::size_t MaxWaitingBytes = 32 * 1024 * 1024;

    /// Discards earlier datagrams. @throws std::system_error
    explicit UdpReceiver(FileHandle socket);
    ~UdpReceiver();
    UdpReceiver(UdpReceiver const&) = delete;
    UdpReceiver& operator=(UdpReceiver const&) = delete;

    /// Readable, until Acknowledge(), when datagrams have arrived after there were none.
    int ReadyEnd() const { return m_ready.Get(); }
    void Acknowledge();

    /// Moves the received datagrams to `taken`, which must be empty.
    void Take(Datagrams& taken);

    /// The number of datagrams that did not fit, here or in the socket.
    std::uint64_t Lost() const;

private:
    void Run();
    void Discard();
    bool Receive();

    FileHandle m_socket;
    FileHandle m_ready;
    FileHandle m_stop;
    std::vector<std::uint8_t> m_buffer; ///< used by the thread
    mutable std::mutex m_mutex;         ///< guards the members below
    Datagrams m_waiting;
    std::uint64_t m_noRoom = 0;
    std::uint32_t m_drops = 0;                  ///< the socket's counter, which wraps
    std::optional<std::uint32_t> m_dropsBefore; ///< counter before the first datagram
    std::thread m_thread;
};

} // namespace zviptv::sim

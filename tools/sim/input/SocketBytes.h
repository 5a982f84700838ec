// SPDX-License-Identifier: MIT
#pragma once

#include "input/ArrivingBytes.h"
#include "input/ByteQueue.h"
#include "input/InputUrl.h"
#include "input/LoopSource.h"
#include "input/RtpStream.h"
#include "input/UdpReceiver.h"

#include <optional>

namespace zviptv::sim {

/// The transport stream that is sent to a UDP port, in RTP or not. Receives from the first Read() on; earlier
/// datagrams are discarded.
class SocketBytes : public ArrivingBytes
{
public:
    /// @throws StreamError like OpenUdpSocket()
    explicit SocketBytes(InputUrl const& url);

    std::size_t Read(std::uint8_t* bytes, std::size_t size) override;
    bool HasEnded() const override { return false; }
    std::string const& Name() const override { return m_name; }
    void AddTo(InputCounters& counters) const override;

private:
    void Begin();

    std::string m_name;
    FileHandle m_socket; ///< until the receiver takes it over
    ByteQueue m_queue;
    std::optional<RtpStream> m_rtp;
    std::uint64_t m_bytes = 0;
    Datagrams m_taken;
    std::optional<UdpReceiver> m_receiver;
    LoopSource m_watch;
};

} // namespace zviptv::sim

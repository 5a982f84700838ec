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

/// What is sent to a UDP port: a transport stream, in RTP or not. Receives from the first Read() on; what
/// came before is thrown away.
class SocketBytes : public ArrivingBytes
{
public:
    /// @throws StreamError as OpenUdpSocket() does
    explicit SocketBytes(InputUrl const& url);

    std::size_t Read(std::uint8_t* bytes, std::size_t size) override;
    bool HasEnded() const override { return false; }
    std::string const& Name() const override { return m_name; }
    void AddTo(InputCounters& counters) const override;

private:
    void Begin();

    std::string m_name;
    FileHandle m_socket; ///< until it is the receiver's
    ByteQueue m_queue;
    std::optional<RtpStream> m_rtp;
    std::uint64_t m_bytes = 0;
    Datagrams m_taken;
    std::optional<UdpReceiver> m_receiver;
    LoopSource m_watch;
};

} // namespace zviptv::sim

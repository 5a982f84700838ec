// SPDX-License-Identifier: MIT
#include "input/SocketBytes.h"

#include "input/UdpSocket.h"

namespace zviptv::sim {

SocketBytes::SocketBytes(InputUrl const& url) : m_name(url.text), m_socket(OpenUdpSocket(url))
{
    if (url.kind == InputUrl::Kind::Rtp) {
        m_rtp.emplace([this](ByteView payload) { m_queue.Add(payload); });
    }
}

void SocketBytes::Begin()
{
    m_receiver.emplace(std::move(m_socket));
    m_watch = LoopSource::OnInput(m_receiver->ReadyEnd(), [this] {
        m_receiver->Acknowledge();
        Wake();
    });
}

std::size_t SocketBytes::Read(std::uint8_t* bytes, std::size_t size)
{
    if (!m_receiver) {
        Begin();
    }
    if (m_queue.Size() == 0) {
        m_taken.Clear();
        m_receiver->Take(m_taken);
        m_taken.ForEach([this](ByteView datagram, std::int64_t arrival) {
            m_bytes += datagram.Size();
            m_rtp ? m_rtp->Push(datagram, arrival) : m_queue.Add(datagram);
        });
    }
    return m_queue.Take(bytes, size);
}

void SocketBytes::AddTo(InputCounters& counters) const
{
    counters.bytes = m_bytes;
    if (m_rtp) {
        RtpWindow::Counters const& count = m_rtp->Count();
        counters.lost = count.lost;
        counters.duplicated = count.duplicated;
        counters.reordered = count.reordered;
        counters.malformed = m_rtp->Malformed();
        counters.jitter = m_rtp->Jitter().Microseconds();
    } else if (m_receiver) {
        counters.lost = m_receiver->Lost();
    }
}

} // namespace zviptv::sim

// SPDX-License-Identifier: MIT
#include "Fuzz.h"

#include "input/RtpStream.h"
#include "stream/Demux.h"

// Datagrams as RTP, and their payload as a transport stream: two bytes of length, then a datagram, over and
// over.

using namespace zviptv;
using namespace zviptv::sim;
using zviptv::fuzz::Require;

namespace {

/// A live source with the packets that the payloads carry.
class Packets : public PacketSource
{
public:
    explicit Packets(std::vector<std::uint8_t> bytes) : m_bytes(std::move(bytes)) {}

    bool Read(TsBytes& packet) override
    {
        if (m_at + packet.size() > m_bytes.size()) {
            return false;
        }
        std::copy_n(m_bytes.begin() + static_cast<std::ptrdiff_t>(m_at), packet.size(), packet.begin());
        m_at += packet.size();
        return true;
    }

    void Rewind() override { throw StreamError("live"); }
    bool IsLive() const override { return true; }

private:
    std::vector<std::uint8_t> m_bytes;
    std::size_t m_at = 0;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    std::vector<std::uint8_t> payload;
    std::uint64_t delivered = 0;
    RtpStream stream([&](ByteView bytes) {
        payload.insert(payload.end(), bytes.begin(), bytes.end());
        ++delivered;
    });
    ByteView rest(data, size);
    std::uint64_t datagrams = 0;
    for (; rest.Size() >= 2; rest = rest.Part(std::size_t{2} + rest.U16(0))) {
        stream.Push(rest.Part(2, rest.U16(0)), static_cast<std::int64_t>(datagrams) * 1000);
        ++datagrams;
    }
    RtpWindow::Counters const& count = stream.Count();
    Require(payload.size() <= size, "no more comes out than went in");
    Require(delivered + count.duplicated + stream.Malformed() <= datagrams, "a datagram counts once");
    Require(count.reordered <= delivered + RtpWindow::Size, "what is put in order is delivered or held");
    Demux demux(std::make_unique<Packets>(std::move(payload)));
    while (auto const event = demux.Next()) {
        Require(event->at.stc < PcrModulus, "the clock has 33 bits");
        Require(event->type != EventType::Pes || demux.Current() != nullptr,
                "a packet belongs to a programme");
    }
    return 0;
}

// SPDX-License-Identifier: MIT
#include "CaptureFormat.h"

#include <pcap/pcap.h>

#include <new>

namespace zviptv::trace {

namespace {

class PcapFormat : public CaptureWriter::Format
{
public:
    explicit PcapFormat(std::FILE* stream)
        : m_pcap(pcap_open_dead(DLT_DBUS, LongestMessage)), m_dumper(pcap_dump_fopen(m_pcap, stream))
    {
        if (m_dumper == nullptr) {
            std::fclose(stream);
            pcap_close(m_pcap);
            throw std::bad_alloc();
        }
    }

    ~PcapFormat() override
    {
        pcap_dump_close(m_dumper);
        pcap_close(m_pcap);
    }

    PcapFormat(PcapFormat const&) = delete;
    PcapFormat& operator=(PcapFormat const&) = delete;

    std::FILE* Stream() const override { return pcap_dump_file(m_dumper); }

    std::size_t Add(Message const& message) override
    {
        constexpr std::size_t recordHead = 16;
        pcap_pkthdr header{};
        header.ts.tv_sec = static_cast<time_t>(message.time / MicrosecondsPerSecond);
        header.ts.tv_usec = static_cast<suseconds_t>(message.time % MicrosecondsPerSecond);
        header.caplen = static_cast<bpf_u_int32>(message.bytes.size());
        header.len = header.caplen;
        pcap_dump(reinterpret_cast<unsigned char*>(m_dumper), &header,
                  reinterpret_cast<unsigned char const*>(message.bytes.data()));
        return recordHead + message.bytes.size();
    }

    std::size_t HeadSize() const override { return sizeof(pcap_file_header); }

private:
    pcap_t* const m_pcap;
    pcap_dumper_t* const m_dumper;
};

} // namespace

std::unique_ptr<CaptureWriter::Format> NewPcapFormat(std::FILE* stream)
{
    return std::make_unique<PcapFormat>(stream);
}

} // namespace zviptv::trace

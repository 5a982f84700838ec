// SPDX-License-Identifier: MIT
#include "CaptureReader.h"

#include <pcap/pcap.h>

#include <algorithm>
#include <cerrno>
#include <system_error>
#include <utility>

namespace zviptv::trace {

namespace {

std::string SourceName(std::string const& path)
{
    return path == "-" ? "standard input" : "'" + path + "'";
}

/// A damaged file may contain any time: a time outside the years 1970 to 9999 becomes the nearest one inside.
std::int64_t TimeOf(pcap_pkthdr const& header)
{
    constexpr std::int64_t lastSecond = 253'402'300'799;
    auto const seconds = std::clamp<std::int64_t>(header.ts.tv_sec, 0, lastSecond);
    return seconds * MicrosecondsPerSecond +
           std::clamp<std::int64_t>(header.ts.tv_usec, 0, MicrosecondsPerSecond - 1);
}

} // namespace

void CaptureReader::Close::operator()(pcap* file) const
{
    pcap_close(file);
}

CaptureReader::CaptureReader(CaptureInput input) : m_input(std::move(input))
{
    std::FILE* const stream = OpenCapture(m_input);
    if (stream == nullptr) {
        throw CaptureError("cannot read " + SourceName(m_input.path) + ": " +
                           std::system_category().message(errno) +
                           "; check that the file exists and is readable");
    }
    char reason[PCAP_ERRBUF_SIZE] = "";
    m_file.reset(pcap_fopen_offline(stream, reason));
    if (m_file == nullptr) {
        std::fclose(stream);
        throw CaptureError("cannot read " + SourceName(m_input.path) + ": " + reason +
                           "; give a file that zviptvctl trace --out, busctl capture or dbus-monitor --pcap "
                           "has written");
    }
    int const type = pcap_datalink(m_file.get());
    if (type != DLT_DBUS) {
        char const* const name = pcap_datalink_val_to_name(type);
        throw CaptureError("cannot read " + SourceName(m_input.path) + ": it is a capture of " +
                           (name != nullptr ? name : "link type " + std::to_string(type)) +
                           ", not of D-Bus messages; record the bus with zviptvctl trace --out");
    }
}

CaptureReader::~CaptureReader() = default;

bool CaptureReader::Next(Message& message)
{
    pcap_pkthdr* header = nullptr;
    unsigned char const* bytes = nullptr;
    int result = pcap_next_ex(m_file.get(), &header, &bytes);
    while (result == 1 && header->caplen < header->len) {
        ++m_cut;
        result = pcap_next_ex(m_file.get(), &header, &bytes);
    }
    if (result == PCAP_ERROR_BREAK) {
        return false;
    }
    if (result != 1) {
        throw CaptureError("cannot read " + SourceName(m_input.path) +
                           " any further: " + pcap_geterr(m_file.get()) + "; " + std::to_string(m_read) +
                           (m_read == 1 ? " message" : " messages") + " before the damage can be read");
    }
    ++m_read;
    message.time = TimeOf(*header);
    message.bytes.assign(reinterpret_cast<char const*>(bytes), header->caplen);
    return true;
}

std::string CaptureReader::CutText() const
{
    return (m_cut == 1 ? "1 incomplete message is" : std::to_string(m_cut) + " incomplete messages are") +
           " left out; record again, and if you use busctl capture, add --size=" +
           std::to_string(LongestMessage);
}

} // namespace zviptv::trace

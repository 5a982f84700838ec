// SPDX-License-Identifier: MIT
#pragma once

#include "CaptureStream.h"
#include "Message.h"

#include <memory>
#include <stdexcept>
#include <string>

struct pcap;

namespace zviptv::trace {

/// A capture file cannot be read or written; the text contains the file, the reason, and what to do.
class CaptureError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

/// Reads the D-Bus messages of a capture file, pcap or pcapng, one after another. The memory that it needs
/// does not grow with the file. Not thread-safe.
class CaptureReader
{
public:
    /// Opens the file and reads its header. @throws CaptureError if it is not a capture of D-Bus messages
    explicit CaptureReader(CaptureInput input);
    ~CaptureReader();

    /// Reads the next message. False at the end of the file. An incomplete message is
    /// skipped. @throws CaptureError if the file is damaged or truncated; earlier messages are valid.
    bool Next(Message& message);

    std::uint64_t Read() const { return m_read; } ///< messages that Next() has returned
    std::uint64_t Cut() const { return m_cut; }   ///< messages that were skipped

    /// A text for the user: how many messages were skipped, and how to avoid that.
    std::string CutText() const;

private:
    struct Close
    {
        void operator()(pcap* file) const;
    };

    CaptureInput const m_input;
    std::unique_ptr<pcap, Close> m_file;
    std::uint64_t m_read = 0;
    std::uint64_t m_cut = 0;
};

} // namespace zviptv::trace

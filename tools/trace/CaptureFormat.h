// SPDX-License-Identifier: MIT
#pragma once

#include "CaptureWriter.h"

#include <cstdio>

namespace zviptv::trace {

/// Writes messages in a format to a stream, which it closes. Failures set the stream's error indicator.
class CaptureWriter::Format
{
public:
    Format() = default;
    virtual ~Format() = default;
    Format(Format const&) = delete;
    Format& operator=(Format const&) = delete;

    virtual std::FILE* Stream() const = 0;

    /// Returns the number of bytes that the message takes in the file.
    virtual std::size_t Add(Message const& message) = 0;

    /// Number of bytes that the constructor has written.
    virtual std::size_t HeadSize() const = 0;
};

/// pcap, through libpcap. Takes `stream`.
std::unique_ptr<CaptureWriter::Format> NewPcapFormat(std::FILE* stream);

/// pcapng, which libpcap reads but does not write. Takes `stream`.
std::unique_ptr<CaptureWriter::Format> NewPcapngFormat(std::FILE* stream, std::string const& program);

} // namespace zviptv::trace

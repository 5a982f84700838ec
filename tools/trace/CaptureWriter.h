// SPDX-License-Identifier: MIT
#pragma once

#include "CaptureReader.h"
#include "Message.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace zviptv::trace {

/// A capture file cannot be written.
class CaptureWriteError : public CaptureError
{
public:
    using CaptureError::CaptureError;
};

/// Writes D-Bus messages to a capture file that Wireshark, busctl and other programs read. Not thread-safe.
class CaptureWriter
{
public:
    /// Creates the file. Its name decides the format: FILE.pcap, FILE.pcapng; "-" writes pcapng to standard
    /// output. `program` is named in a pcapng file as the one that wrote it.
    /// @throws CaptureWriteError for other names, and if the file cannot be created
    CaptureWriter(std::string path, std::string const& program);
    ~CaptureWriter();
    CaptureWriter(CaptureWriter const&) = delete;
    CaptureWriter& operator=(CaptureWriter const&) = delete;

    /// Adds a message, which is in the file after the next Flush(). @throws CaptureWriteError if the file
    /// cannot take it, for example on a full disk: then the file ends after the last message that it has
    /// taken.
    void Write(Message const& message);

    /// Hands over to the system what was added: it stays readable if the process is killed.
    /// @throws CaptureWriteError as Write()
    void Flush();

    /// The name of a file that cannot be written in a known format: why; empty for other names.
    static std::string CheckName(std::string const& path);

    class Format;

private:
    [[noreturn]] void Fail(int error);
    void EndAfterLastMessage(int descriptor) const;

    std::string const m_path;
    std::unique_ptr<Format> m_format;  ///< null after a failure
    std::uint64_t m_size = 0;          ///< of the file with what was added, in bytes
    std::vector<std::uint64_t> m_ends; ///< sizes after the last Flush() and after each message since
};

} // namespace zviptv::trace

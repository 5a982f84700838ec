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
    /// Creates the file. Its name selects the format: FILE.pcap, FILE.pcapng; "-" writes pcapng to standard
    /// output. A pcapng file contains `program` as its writer.
    /// @throws CaptureWriteError for other names, and if the file cannot be created
    CaptureWriter(std::string path, std::string const& program);
    ~CaptureWriter();
    CaptureWriter(CaptureWriter const&) = delete;
    CaptureWriter& operator=(CaptureWriter const&) = delete;

    /// Adds a message, which is in the file after the next Flush(). @throws CaptureWriteError if it cannot
    /// be written, for example on a full disk: then the file ends after the last complete message.
    void Write(Message const& message);

    /// Passes the added messages to the system, so that they stay readable if the process is killed.
    /// @throws CaptureWriteError as Write()
    void Flush();

    /// The reason why the name selects no known format; empty for valid names.
    static std::string CheckName(std::string const& path);

    class Format;

private:
    [[noreturn]] void Fail(int error);
    void EndAfterLastMessage(int descriptor) const;

    std::string const m_path;
    std::unique_ptr<Format> m_format;  ///< null after a failure
    std::uint64_t m_size = 0;          ///< size of the file with the added messages, in bytes
    std::vector<std::uint64_t> m_ends; ///< sizes after the last Flush() and after each message since
};

} // namespace zviptv::trace

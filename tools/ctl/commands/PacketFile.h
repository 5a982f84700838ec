// SPDX-License-Identifier: MIT
#pragma once

#include "output/OutputFile.h"
#include "output/TransportStream.h"
#include "session/Subscription.h"

#include <cstdint>
#include <string>
#include <vector>

namespace zviptv::ctl {

/// The output file of `pes` and `caption`, or standard output for "-". Errors are thrown as a Failure.
class PacketFile
{
public:
    enum class Form
    {
        Packets,          ///< the data as received
        ElementaryStream, ///< PES packets without their headers
        TransportStream
    };

    PacketFile(std::string const& path, Form form) : m_file(path), m_form(form) {}

    /// Returns false if the reader of a pipe has closed it. The last two forms leave out packets without a
    /// PES header.
    bool Write(Packet const& packet);

    /// Returns a text about the packets that were left out.
    std::vector<std::string> Close();

    bool IsStandardOutput() const { return m_file.IsStandardOutput(); }

private:
    OutputFile m_file;
    Form const m_form;
    TransportStream m_stream;
    std::uint64_t m_headless = 0;
};

} // namespace zviptv::ctl

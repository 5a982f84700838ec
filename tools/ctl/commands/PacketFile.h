// SPDX-License-Identifier: MIT
#pragma once

#include "output/OutputFile.h"
#include "output/TransportStream.h"
#include "session/Subscription.h"

#include <cstdint>
#include <string>
#include <vector>

namespace zviptv::ctl {

/// The file that `pes` and `caption` write, or standard output for "-". What goes wrong is a Failure.
class PacketFile
{
public:
    enum class Form
    {
        Packets,          ///< the data as it came
        ElementaryStream, ///< PES packets without their headers
        TransportStream
    };

    PacketFile(std::string const& path, Form form) : m_file(path), m_form(form) {}

    /// False when the reader of a pipe has gone. Packets without a PES header are left out of the last two
    /// forms.
    bool Write(Packet const& packet);

    /// Returns what was left out, in words.
    std::vector<std::string> Close();

    bool IsStandardOutput() const { return m_file.IsStandardOutput(); }

private:
    OutputFile m_file;
    Form const m_form;
    TransportStream m_stream;
    std::uint64_t m_headless = 0;
};

} // namespace zviptv::ctl

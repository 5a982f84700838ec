// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <string>

namespace zviptv::ctl {

/// A file that is written from its start, or standard output for "-". What goes wrong is a Failure that names
/// the file and the reason.
class OutputFile
{
public:
    explicit OutputFile(std::string const& path);
    ~OutputFile();

    OutputFile(OutputFile const&) = delete;
    OutputFile& operator=(OutputFile const&) = delete;

    /// Writes all of it, unbuffered. False when the reader of a pipe has gone, which is no failure: it has
    /// seen enough. SIGPIPE has to be ignored.
    bool Write(void const* data, std::size_t size);

    /// Some file systems tell only now that they are full.
    void Close();

    bool IsStandardOutput() const { return m_path == "-"; }

private:
    [[noreturn]] void Throw(int error) const;
    [[noreturn]] void Throw(std::string const& reason) const;

    std::string const m_path;
    int m_descriptor;
};

/// Writes to standard output. A reader that has seen enough is no failure.
void WriteOutput(std::string const& text);

} // namespace zviptv::ctl

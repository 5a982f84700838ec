// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <string>

namespace zviptv::ctl {

/// A file that is written from its start, or standard output for "-". Errors are thrown as a Failure with the
/// file and the reason.
class OutputFile
{
public:
    explicit OutputFile(std::string const& path);
    ~OutputFile();

    OutputFile(OutputFile const&) = delete;
    OutputFile& operator=(OutputFile const&) = delete;

    /// Writes all data, unbuffered. Returns false if the reader of a pipe has closed it, which is not a
    /// failure. SIGPIPE must be ignored.
    bool Write(void const* data, std::size_t size);

    /// Closes the file: some file systems report only now that they are full.
    void Close();

    bool IsStandardOutput() const { return m_path == "-"; }

private:
    [[noreturn]] void Throw(int error) const;
    [[noreturn]] void Throw(std::string const& reason) const;

    std::string const m_path;
    int m_descriptor;
};

/// Writes to standard output. A reader that has closed the pipe is not a failure.
void WriteOutput(std::string const& text);

} // namespace zviptv::ctl

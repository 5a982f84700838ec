// SPDX-License-Identifier: MIT
#include "OutputFile.h"

#include "Failure.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>
#include <utility>

namespace zviptv::ctl {

OutputFile::OutputFile(std::string const& path)
    : m_path(path),
      m_descriptor(path == "-" ? fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 0)
                               : open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666))
{
    if (m_descriptor < 0) {
        Throw(errno);
    }
    // If standard output was closed when the program started, it is now open for reading.
    if (IsStandardOutput() && (fcntl(m_descriptor, F_GETFL) & O_ACCMODE) == O_RDONLY) {
        close(m_descriptor);
        Throw("it is closed");
    }
}

OutputFile::~OutputFile()
{
    if (m_descriptor >= 0) {
        close(m_descriptor);
    }
}

bool OutputFile::Write(void const* data, std::size_t size)
{
    char const* next = static_cast<char const*>(data);
    while (size > 0) {
        ssize_t const written = write(m_descriptor, next, size);
        if (written < 0 && errno == EPIPE) {
            return false;
        }
        if (written < 0 && errno != EINTR) {
            Throw(errno);
        }
        std::size_t const done = written > 0 ? static_cast<std::size_t>(written) : 0;
        next += done;
        size -= done;
    }
    return true;
}

void OutputFile::Close()
{
    if (m_descriptor >= 0 && close(std::exchange(m_descriptor, -1)) != 0) {
        Throw(errno);
    }
}

void OutputFile::Throw(int error) const
{
    Throw(std::system_category().message(error));
}

void OutputFile::Throw(std::string const& reason) const
{
    std::string const name = IsStandardOutput() ? "standard output" : "'" + m_path + "'";
    throw Failure(ExitCode::CannotWrite, "cannot write " + name + ": " + reason);
}

void WriteOutput(std::string const& text)
{
    OutputFile out("-");
    out.Write(text.data(), text.size());
    out.Close();
}

} // namespace zviptv::ctl

// SPDX-License-Identifier: MIT
#include "Spool.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <system_error>

namespace zviptv::sim {

namespace {

constexpr std::size_t BufferSize = 1024 * 1024;

std::string Folder()
{
    std::error_code failure;
    std::filesystem::path const path = std::filesystem::temp_directory_path(failure);
    return failure ? "/tmp" : path.string();
}

[[noreturn]] void Fail(char const* what, int error)
{
    throw std::runtime_error(std::string(what) + " a temporary file in " + Folder() + ": " +
                             std::generic_category().message(error) +
                             "; set TMPDIR to a folder with room for the recording");
}

FileHandle OpenNameless()
{
    std::string name = Folder() + "/zviptv-sim-XXXXXX";
    FileHandle file(mkostemp(name.data(), O_CLOEXEC));
    if (!file) {
        Fail("cannot create", errno);
    }
    unlink(name.c_str());
    return file;
}

} // namespace

Spool::Spool() : m_file(OpenNameless()) {}

Spool::Piece Spool::Add(std::string_view bytes)
{
    Piece const piece{m_written + m_buffer.size(), static_cast<std::uint32_t>(bytes.size())};
    m_buffer += bytes;
    if (m_buffer.size() >= BufferSize) {
        Flush();
    }
    return piece;
}

void Spool::Flush()
{
    for (std::size_t done = 0; done < m_buffer.size();) {
        ssize_t const count = pwrite(m_file.Get(), m_buffer.data() + done, m_buffer.size() - done,
                                     static_cast<off_t>(m_written));
        if (count < 0 && errno != EINTR) {
            Fail("cannot write", errno);
        }
        if (count > 0) {
            done += static_cast<std::size_t>(count);
            m_written += static_cast<std::size_t>(count);
        }
    }
    m_buffer.clear();
}

std::string Spool::Read(Piece piece)
{
    Flush();
    std::string bytes(piece.size, '\0');
    for (std::size_t done = 0; done < bytes.size();) {
        ssize_t const count = pread(m_file.Get(), bytes.data() + done, bytes.size() - done,
                                    static_cast<off_t>(piece.offset + done));
        if (count == 0 || (count < 0 && errno != EINTR)) {
            Fail("cannot read", count == 0 ? EIO : errno);
        }
        done += count > 0 ? static_cast<std::size_t>(count) : 0;
    }
    return bytes;
}

} // namespace zviptv::sim

// SPDX-License-Identifier: MIT
#include "stream/ByteSource.h"
#include "stream/PacketSource.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstring>

namespace zviptv::sim {

namespace {

std::string Reason()
{
    return std::strerror(errno);
}

FileBytes::File Open(std::string const& path)
{
    // Opens it without blocking, in case it is a pipe.
    int const descriptor = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
    FileBytes::File file(descriptor < 0 ? nullptr : fdopen(descriptor, "rb"));
    struct stat status
    {
    };
    if (!file || fstat(descriptor, &status) != 0) {
        throw StreamError("cannot open " + path + ": " + Reason());
    }
    if (!S_ISREG(status.st_mode) && !S_ISDIR(status.st_mode)) {
        throw StreamError(path + " is not a regular file: save the stream in one first");
    }
    return file;
}

} // namespace

FileBytes::FileBytes(std::string const& path) : FileBytes(Open(path), path) {}

std::size_t FileBytes::Read(std::uint8_t* bytes, std::size_t size)
{
    errno = 0;
    std::size_t const got = std::fread(bytes, 1, size, m_file.get());
    if (got == 0 && std::ferror(m_file.get())) {
        throw StreamError("cannot read " + m_name + ": " + Reason());
    }
    if (got == 0) {
        std::clearerr(m_file.get()); // the file may have grown before it is read again
    }
    return got;
}

void FileBytes::Rewind()
{
    if (std::fseek(m_file.get(), 0, SEEK_SET) != 0) {
        throw StreamError("cannot rewind " + m_name + ": " + Reason());
    }
}

} // namespace zviptv::sim

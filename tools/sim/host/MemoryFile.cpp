#include "MemoryFile.h"

#include <sys/mman.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <system_error>

namespace zviptv::sim {

MemoryFile::MemoryFile(std::string const& contents) : m_file(memfd_create("zviptv-sim", MFD_CLOEXEC))
{
    if (write(Descriptor(), contents.data(), contents.size()) != static_cast<ssize_t>(contents.size())) {
        throw std::system_error(errno, std::generic_category(), "cannot make a file in memory");
    }
}

std::string MemoryFile::Contents() const
{
    std::string contents;
    std::array<char, 1024> buffer;
    for (ssize_t size = 0; (size = pread(Descriptor(), buffer.data(), buffer.size(),
                                         static_cast<off_t>(contents.size()))) > 0;) {
        contents.append(buffer.data(), static_cast<std::size_t>(size));
    }
    return contents;
}

} // namespace zviptv::sim

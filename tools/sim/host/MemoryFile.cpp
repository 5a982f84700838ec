#include "MemoryFile.h"

#include <sys/mman.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <system_error>

namespace zviptv::sim {

MemoryFile::MemoryFile(std::string const& contents) : m_descriptor(memfd_create("zviptv-sim", 0))
{
    bool const isWritten = m_descriptor >= 0 && write(m_descriptor, contents.data(), contents.size()) ==
                                                    static_cast<ssize_t>(contents.size());
    if (!isWritten) {
        int const reason = errno;
        close(m_descriptor);
        throw std::system_error(reason, std::generic_category(), "cannot make a file in memory");
    }
}

MemoryFile::~MemoryFile()
{
    close(m_descriptor);
}

std::string MemoryFile::Contents() const
{
    std::string contents;
    std::array<char, 1024> buffer;
    for (ssize_t size = 0; (size = pread(m_descriptor, buffer.data(), buffer.size(),
                                         static_cast<off_t>(contents.size()))) > 0;) {
        contents.append(buffer.data(), static_cast<std::size_t>(size));
    }
    return contents;
}

} // namespace zviptv::sim

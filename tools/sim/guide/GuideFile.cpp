// SPDX-License-Identifier: MIT
#include "guide/GuideFile.h"

#include "guide/GuideBuilder.h"
#include "guide/GuideProblems.h"
#include "guide/XmltvReader.h"

#include <cerrno>
#include <fcntl.h>
#include <new>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace zviptv::sim {

namespace {

class InputFile
{
public:
    /// Opens the file without blocking, in case it is a pipe.
    explicit InputFile(std::string const& path)
        : m_path(path), m_descriptor(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY))
    {
        if (m_descriptor < 0) {
            Fail(errno);
        }
    }
    InputFile(InputFile const&) = delete;
    InputFile& operator=(InputFile const&) = delete;
    ~InputFile()
    {
        if (m_descriptor >= 0) {
            close(m_descriptor);
        }
    }

    void RequireRegular() const
    {
        struct stat status
        {
        };
        if (fstat(m_descriptor, &status) != 0) {
            Fail(errno);
        }
        if (!S_ISREG(status.st_mode)) {
            throw GuideError(m_path + ": not a regular file");
        }
    }

    std::size_t Read(char* buffer, std::size_t size)
    {
        for (;;) {
            ssize_t const count = read(m_descriptor, buffer, size);
            if (count >= 0) {
                return static_cast<std::size_t>(count);
            }
            if (errno != EINTR) {
                Fail(errno);
            }
        }
    }

private:
    [[noreturn]] void Fail(int error) const
    {
        throw GuideError(m_path + ": " + std::generic_category().message(error));
    }

    std::string m_path;
    int m_descriptor;
};

} // namespace

LoadedGuide ReadGuide(std::string const& name, ReadBytes const& read, ServiceNames const& serviceNames)
{
    LoadedGuide loaded;
    GuideBuilder builder;
    try {
        XmltvReader(name, builder, loaded.warnings).Read(read);
        loaded.guide = builder.Build(serviceNames, loaded.warnings);
    } catch (std::bad_alloc const&) {
        throw GuideError(name + ": not enough memory");
    }
    return loaded;
}

LoadedGuide LoadGuide(std::string const& path, ServiceNames const& serviceNames,
                      std::atomic<bool> const* stop)
{
    InputFile file(path);
    file.RequireRegular();
    auto const read = [&](char* buffer, std::size_t size) {
        if (stop != nullptr && *stop) {
            throw GuideError(path + ": given up");
        }
        return file.Read(buffer, size);
    };
    return ReadGuide(path, read, serviceNames);
}

} // namespace zviptv::sim

// SPDX-License-Identifier: MIT
#include "CaptureWriter.h"

#include "CaptureFormat.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <system_error>
#include <utility>

namespace zviptv::trace {

namespace {

bool EndsWith(std::string const& text, std::string const& end)
{
    return text.size() >= end.size() && text.compare(text.size() - end.size(), end.size(), end) == 0;
}

std::FILE* Open(std::string const& path)
{
    if (path != "-") {
        return std::fopen(path.c_str(), "wbe");
    }
    int const descriptor = dup(STDOUT_FILENO);
    return descriptor < 0 ? nullptr : fdopen(descriptor, "wb");
}

std::string TargetName(std::string const& path)
{
    return path == "-" ? "standard output" : "'" + path + "'";
}

} // namespace

std::string CaptureWriter::CheckName(std::string const& path)
{
    bool const isKnown = path == "-" || EndsWith(path, ".pcap") || EndsWith(path, ".pcapng");
    return isKnown ? std::string()
                   : "cannot write '" + path +
                         "': its name does not say the format; name it FILE.pcapng or FILE.pcap";
}

CaptureWriter::CaptureWriter(std::string path, std::string const& program) : m_path(std::move(path))
{
    std::string const unknown = CheckName(m_path);
    if (!unknown.empty()) {
        throw CaptureWriteError(unknown);
    }
    std::FILE* const stream = Open(m_path);
    if (stream == nullptr) {
        throw CaptureWriteError("cannot write " + TargetName(m_path) + ": " +
                                std::system_category().message(errno) +
                                "; check that the folder exists and is writable");
    }
    m_format = EndsWith(m_path, ".pcap") ? NewPcapFormat(stream) : NewPcapngFormat(stream, program);
    m_size = m_format->HeadSize();
    Flush();
}

CaptureWriter::~CaptureWriter() = default;

void CaptureWriter::Write(Message const& message)
{
    if (m_format == nullptr) {
        return; // the failure was reported
    }
    m_size += m_format->Add(message);
    m_ends.push_back(m_size);
    if (std::ferror(m_format->Stream()) != 0) {
        Fail(errno);
    }
}

void CaptureWriter::Flush()
{
    if (m_format == nullptr) {
        return;
    }
    if (std::fflush(m_format->Stream()) != 0) {
        Fail(errno);
    }
    m_ends = {m_size};
}

void CaptureWriter::Fail(int error)
{
    if (m_format != nullptr) {
        int const descriptor = dup(fileno(m_format->Stream()));
        m_format.reset();
        EndAfterLastMessage(descriptor);
        close(descriptor);
    }
    throw CaptureWriteError("cannot write " + TargetName(m_path) + ": " +
                            std::system_category().message(error) +
                            "; what was written before stays readable");
}

/// Removes an incomplete message at the end of the file.
void CaptureWriter::EndAfterLastMessage(int descriptor) const
{
    struct stat status
    {
    };
    if (fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode) || m_ends.empty()) {
        return;
    }
    auto const next =
        std::upper_bound(m_ends.begin(), m_ends.end(), static_cast<std::uint64_t>(status.st_size));
    if (next != m_ends.begin() && ftruncate(descriptor, static_cast<off_t>(*std::prev(next))) != 0) {
        return; // readers skip an incomplete message at the end
    }
}

} // namespace zviptv::trace

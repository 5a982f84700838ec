// SPDX-License-Identifier: MIT
#include "stream/TsReader.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstring>

namespace zviptv::sim {

namespace {

constexpr std::size_t BufferSize = 64 * 1024;
constexpr std::size_t SearchSize = 16 * 1024; // how far into a file the first packet may be
constexpr std::size_t SyncsWanted = 5;
constexpr std::size_t Distances[] = {188, 192, 204};

std::string Reason()
{
    return std::strerror(errno);
}

TsReader::File Open(std::string const& path)
{
    // Without blocking, in case it is a pipe.
    int const descriptor = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
    TsReader::File file(descriptor < 0 ? nullptr : fdopen(descriptor, "rb"));
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

TsReader::TsReader(std::string const& path) : TsReader(Open(path), path) {}

TsReader::TsReader(File file, std::string name)
    : m_file(std::move(file)), m_name(std::move(name)), m_buffer(BufferSize)
{
    if (!FindDistance()) {
        throw StreamError(m_name + " holds no transport stream: no sync byte 0x47 at a 188-byte distance");
    }
}

/// Sees to it that `count` bytes (far fewer than the buffer holds) are at hand; false at the end of the file.
bool TsReader::Have(std::size_t count)
{
    if (m_end - m_begin >= count) {
        return true;
    }
    std::memmove(m_buffer.data(), m_buffer.data() + m_begin, m_end - m_begin);
    m_end -= m_begin;
    m_begin = 0;
    while (m_end < count) {
        errno = 0;
        std::size_t const got = std::fread(m_buffer.data() + m_end, 1, m_buffer.size() - m_end, m_file.get());
        if (got == 0 && std::ferror(m_file.get())) {
            throw StreamError("cannot read " + m_name + ": " + Reason());
        }
        if (got == 0) {
            return false;
        }
        m_end += got;
    }
    return true;
}

TsReader::Run TsReader::FollowSyncs(std::size_t offset, std::size_t distance)
{
    Run run;
    for (; run.syncs < SyncsWanted; ++run.syncs, offset += distance) {
        if (!Have(offset + 1)) {
            std::size_t const left = m_end - m_begin;
            run.atEnd = true;
            run.exact = run.syncs > 0 && (left == offset || left == offset - distance + TsPacketSize);
            break;
        }
        if (m_buffer[m_begin + offset] != TsSyncByte) {
            break;
        }
    }
    return run;
}

/// Short files are told by fewer sync bytes, but only if they begin with a packet.
bool TsReader::IsStart(std::size_t offset, std::size_t distance)
{
    Run const run = FollowSyncs(offset, distance);
    if (run.syncs == SyncsWanted) {
        return true;
    }
    return run.atEnd && offset < distance && (run.syncs > 1 || (run.exact && offset == 0));
}

bool TsReader::FindDistance()
{
    for (std::size_t offset = 0; offset < SearchSize && Have(offset + TsPacketSize); ++offset) {
        for (std::size_t const distance : Distances) {
            if (!IsStart(offset, distance)) {
                continue;
            }
            m_distance = distance;
            m_begin += offset;
            m_skipped += distance == 192 && offset == 4 ? 0 : offset;
            return true;
        }
    }
    return false;
}

/// Goes on at the next byte from which packets follow one another again.
bool TsReader::Resynchronise()
{
    for (; Have(TsPacketSize); ++m_begin, ++m_skipped) {
        if (m_buffer[m_begin] != TsSyncByte) {
            continue;
        }
        Run const run = FollowSyncs(0, m_distance);
        if (run.syncs == SyncsWanted || (run.atEnd && (run.syncs > 1 || run.exact))) {
            return true;
        }
    }
    return false;
}

bool TsReader::Read(TsBytes& packet)
{
    if (!Have(TsPacketSize)) {
        return false;
    }
    if (m_buffer[m_begin] != TsSyncByte && !Resynchronise()) {
        return false;
    }
    std::memcpy(packet.data(), m_buffer.data() + m_begin, packet.size());
    m_begin += Have(m_distance) ? m_distance : m_end - m_begin;
    return true;
}

void TsReader::Rewind()
{
    if (std::fseek(m_file.get(), 0, SEEK_SET) != 0) {
        throw StreamError("cannot rewind " + m_name + ": " + Reason());
    }
    m_begin = m_end = 0;
    FindDistance();
}

} // namespace zviptv::sim

// SPDX-License-Identifier: MIT
#include "stream/TsReader.h"

#include <cstring>

namespace zviptv::sim {

namespace {

constexpr std::size_t BufferSize = 64 * 1024;
constexpr std::size_t SearchSize = 16 * 1024; // the largest offset of the first packet in a file
constexpr std::size_t SyncsWanted = 5;
constexpr std::size_t Distances[] = {188, 192, 204};

} // namespace

TsReader::TsReader(std::string const& path) : TsReader(std::make_unique<FileBytes>(path)) {}

TsReader::TsReader(File file, std::string name)
    : TsReader(std::make_unique<FileBytes>(std::move(file), std::move(name)))
{
}

TsReader::TsReader(std::unique_ptr<ByteSource> bytes) : m_bytes(std::move(bytes)), m_buffer(BufferSize)
{
    m_hasStarted = !m_bytes->IsLive() && FindDistance();
    if (!m_hasStarted && m_bytes->HasEnded()) {
        throw StreamError(m_bytes->Name() + " is not a transport stream: no sync bytes 0x47 every 188 bytes");
    }
}

/// Ensures that `count` bytes (far fewer than the buffer holds) are available; returns false if there are not
/// as many.
bool TsReader::FillTo(std::size_t count)
{
    if (m_end - m_begin >= count) {
        return true;
    }
    std::memmove(m_buffer.data(), m_buffer.data() + m_begin, m_end - m_begin);
    m_end -= m_begin;
    m_begin = 0;
    while (m_end < count) {
        std::size_t const got = m_bytes->Read(m_buffer.data() + m_end, m_buffer.size() - m_end);
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
        if (!FillTo(offset + 1)) {
            std::size_t const left = m_end - m_begin;
            run.isCut = true;
            run.atEnd = m_bytes->HasEnded();
            run.exact =
                run.atEnd && run.syncs > 0 && (left == offset || left == offset - distance + TsPacketSize);
            break;
        }
        if (m_buffer[m_begin + offset] != TsSyncByte) {
            break;
        }
    }
    return run;
}

/// For short files, fewer sync bytes are sufficient, but only if they begin with a packet.
bool TsReader::IsStart(Run const& run, std::size_t offset, std::size_t distance)
{
    if (run.syncs == SyncsWanted) {
        return true;
    }
    return run.atEnd && offset < distance && (run.syncs > 1 || (run.exact && offset == 0));
}

/// Also returns false if more bytes are needed to decide.
bool TsReader::FindDistance()
{
    std::size_t offset = 0;
    for (; offset < SearchSize && FillTo(offset + TsPacketSize); ++offset) {
        for (std::size_t const distance : Distances) {
            Run const run = FollowSyncs(offset, distance);
            if (run.isCut && !run.atEnd) {
                return false;
            }
            if (!IsStart(run, offset, distance)) {
                continue;
            }
            m_distance = distance;
            m_begin += offset;
            m_skipped += distance == 192 && offset == 4 ? 0 : offset;
            return true;
        }
    }
    if (offset == SearchSize && m_bytes->IsLive()) { // packets may still follow
        m_begin += SearchSize;
        m_skipped += SearchSize;
    }
    return false;
}

/// Continues at the next byte from which packets follow one another again. Also returns false if more bytes
/// are needed to decide, and after much of a live input was skipped, so that other work can run.
bool TsReader::Resynchronise()
{
    std::uint64_t const limit = m_bytes->IsLive() ? m_skipped + SearchSize : UINT64_MAX;
    for (; m_skipped < limit && FillTo(TsPacketSize); ++m_begin, ++m_skipped) {
        if (m_buffer[m_begin] != TsSyncByte) {
            continue;
        }
        Run const run = FollowSyncs(0, m_distance);
        if (run.syncs == SyncsWanted || (run.atEnd && (run.syncs > 1 || run.exact))) {
            return true;
        }
        if (run.isCut && !run.atEnd) {
            return false;
        }
    }
    return false;
}

bool TsReader::Read(TsBytes& packet)
{
    m_hasStarted = m_hasStarted || FindDistance();
    if (!m_hasStarted) {
        return false;
    }
    if (!FillTo(TsPacketSize)) {
        return false;
    }
    if (m_buffer[m_begin] != TsSyncByte && !Resynchronise()) {
        return false;
    }
    if (!FillTo(m_distance) && !m_bytes->HasEnded()) {
        return false;
    }
    std::memcpy(packet.data(), m_buffer.data() + m_begin, packet.size());
    m_begin += FillTo(m_distance) ? m_distance : m_end - m_begin;
    return true;
}

void TsReader::Rewind()
{
    m_bytes->Rewind();
    m_begin = m_end = 0;
    m_hasStarted = FindDistance();
}

} // namespace zviptv::sim

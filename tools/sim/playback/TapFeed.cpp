// SPDX-License-Identifier: MIT
#include "TapFeed.h"

#include <fcntl.h>
#include <poll.h>

#include <algorithm>
#include <cerrno>

namespace zviptv::sim {

namespace {

constexpr std::uint16_t ClockPid = TsWriter::PmtPid + 1;

} // namespace

TapFeed::TapFeed(FileHandle pipe, std::vector<TsWriter::Stream> const& streams) : m_pipe(std::move(pipe))
{
    fcntl(m_pipe.Get(), F_SETFL, O_NONBLOCK);
    for (TsWriter::Stream const& stream : streams) {
        m_pids.push_back(stream.pid);
    }
    m_writer.AddTables(m_pending, streams, ClockPid);
    Write();
}

bool TapFeed::Add(PesPacket const& pes)
{
    if (m_isFinishing || std::find(m_pids.begin(), m_pids.end(), pes.pid) == m_pids.end()) {
        return !m_isBroken;
    }
    if ((pes.pid == m_pids.front() && m_time.JumpsAt(pes)) || m_pending.size() > MaxPending) {
        return false;
    }
    if (pes.kind == StreamKind::Teletext && pes.pts) {
        // ffmpeg takes the time of teletext from the clock: it adds this to it
        constexpr std::uint64_t lead = 9000;
        constexpr std::uint64_t wrap = std::uint64_t{1} << 33;
        TsWriter::AddClock(m_pending, ClockPid, (*pes.pts - lead) % wrap, false);
    }
    m_writer.AddPes(m_pending, pes.pid, pes.bytes);
    Write();
    return !m_isBroken;
}

void TapFeed::Write()
{
    std::size_t written = 0;
    while (written < m_pending.size()) {
        ssize_t const size = write(m_pipe.Get(), m_pending.data() + written, m_pending.size() - written);
        if (size < 0 && errno == EINTR) {
            continue;
        }
        if (size < 0) {
            m_isBroken = errno != EAGAIN;
            break;
        }
        written += static_cast<std::size_t>(size);
    }
    m_pending.erase(m_pending.begin(), m_pending.begin() + static_cast<std::ptrdiff_t>(written));
    bool const goesOn = !m_pending.empty() && !m_isBroken;
    if (goesOn && !m_writing.IsRunning()) {
        m_writing = LoopSource::OnOutput(m_pipe.Get(), [this] { Write(); });
    } else if (!goesOn) {
        m_writing.Stop();
    }
    if (!goesOn && m_isFinishing) {
        m_pipe.Reset();
    }
}

bool TapFeed::IsBroken() const
{
    pollfd state = {m_pipe.Get(), POLLOUT, 0};
    return m_isBroken || (poll(&state, 1, 0) > 0 && (state.revents & POLLERR) != 0);
}

void TapFeed::Finish()
{
    m_isFinishing = true;
    Write();
}

} // namespace zviptv::sim

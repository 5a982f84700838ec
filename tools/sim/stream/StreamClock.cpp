// SPDX-License-Identifier: MIT
#include "stream/StreamClock.h"

namespace zviptv::sim {

namespace {

constexpr std::uint64_t LongestStep =
    10 * std::uint64_t{27'000'000}; // a longer time between samples is a jump

std::int64_t Distance(std::uint64_t from, std::uint64_t to)
{
    return static_cast<std::int64_t>(to) - static_cast<std::int64_t>(from);
}

} // namespace

ClockPoint StreamClock::At(std::uint64_t packet) const
{
    std::int64_t const ticks = m_linePace.Over(Distance(m_packet, packet));
    return {m_point.time + StreamTime(ticks), MoveStc(m_point.stc, ticks)};
}

/// The pace between two samples; nullopt if they do not belong together.
std::optional<StreamClock::Pace> StreamClock::Measure(Mark from, Mark to, bool jump)
{
    std::uint64_t const step = (to.value + PcrModulus - from.value) % PcrModulus;
    if (jump || step > LongestStep) {
        return std::nullopt;
    }
    Pace const pace{static_cast<std::int64_t>(step), Distance(from.packet, to.packet)};
    if (step > 0) {
        m_pace = pace;
        m_measured = true;
    }
    return pace;
}

/// The same line with the STC of the mark.
void StreamClock::AlignTo(Mark mark)
{
    m_linePace = m_pace;
    m_point.stc = MoveStc(mark.value, m_linePace.Over(Distance(mark.packet, m_packet)));
}

/// Continues the line from the mark.
void StreamClock::StartAt(Mark mark)
{
    m_point = {At(mark.packet).time, mark.value};
    m_packet = mark.packet;
    m_linePace = m_pace;
}

bool StreamClock::First(Mark mark)
{
    if (!m_measured) {
        m_waiting = mark;
        return false;
    }
    AlignTo(mark);
    m_last = mark;
    return true;
}

void StreamClock::Next(Mark mark, bool jump)
{
    if (m_waiting) {
        Measure(*m_waiting, mark, jump);
        AlignTo(*m_waiting);
        m_waiting.reset();
    } else {
        StartAt(*m_last);
        m_linePace = Measure(*m_last, mark, jump).value_or(m_pace);
    }
    m_last = mark;
}

bool StreamClock::Sample(std::uint64_t packet, std::uint64_t value, bool jump)
{
    m_hasSamples = true;
    Mark const mark{packet, value % PcrModulus};
    auto const& before = m_waiting ? m_waiting : m_last;
    if (!before) {
        return First(mark);
    }
    if (packet > before->packet) {
        Next(mark, jump);
    }
    return m_last.has_value();
}

void StreamClock::FinishLine()
{
    if (m_waiting) {
        AlignTo(*m_waiting);
        m_last = m_waiting;
        m_waiting.reset();
    }
    if (m_last) {
        StartAt(*m_last);
    }
}

void StreamClock::Restart(std::uint64_t packet)
{
    FinishLine();
    m_point = At(packet);
    m_packet = packet;
    m_linePace = m_pace;
    m_last.reset();
}

} // namespace zviptv::sim

// SPDX-License-Identifier: MIT
#include "Traffic.h"

#include "Words.h"

#include <cstdio>

namespace zviptv::ctl {

namespace {

double SecondsBetween(Traffic::Clock::time_point start, Traffic::Clock::time_point end)
{
    return std::chrono::duration<double>(end - start).count();
}

} // namespace

Traffic::Traffic(Clock::time_point start) : m_start(start), m_measured(start) {}

void Traffic::Add(std::size_t bytes)
{
    ++m_packets;
    m_bytes += bytes;
}

void Traffic::Measure(Clock::time_point now)
{
    double const seconds = SecondsBetween(m_measured, now);
    m_rate = seconds > 0 ? static_cast<double>(m_bytes - m_bytesAtMeasure) / seconds : 0;
    m_measured = now;
    m_bytesAtMeasure = m_bytes;
}

std::string Traffic::Now() const
{
    return Counted(m_packets, "packet") + ", " + Counted(m_bytes, "byte") + ", " + RateText(m_rate);
}

std::string Traffic::Summary(Clock::time_point now) const
{
    double const seconds = SecondsBetween(m_start, now);
    char time[32];
    std::snprintf(time, sizeof time, " in %.1f s", seconds);
    return Counted(m_packets, "packet") + ", " + Counted(m_bytes, "byte") + time + " (" +
           RateText(seconds > 0 ? static_cast<double>(m_bytes) / seconds : 0) + ")";
}

std::string RateText(double bytesPerSecond)
{
    char text[32];
    std::snprintf(text, sizeof text, "%.1f kB/s", bytesPerSecond / 1000);
    return text;
}

} // namespace zviptv::ctl

// SPDX-License-Identifier: MIT
#include "SubRip.h"

#include "ClockText.h"

#include <algorithm>

namespace zviptv::ctl {

namespace {

constexpr std::int64_t Second = 90000;

} // namespace

void SubRip::See(std::uint64_t pts)
{
    m_first = m_first.value_or(pts);
    m_last = std::max(m_last, Time(pts));
}

/// After the first time stamp; those that are older by less than half of the clock's range are before it.
std::int64_t SubRip::Time(std::uint64_t pts) const
{
    constexpr std::uint64_t range = std::uint64_t{1} << 33U;
    std::uint64_t const after = (pts - m_first.value_or(pts)) % range;
    return after < range / 2 ? static_cast<std::int64_t>(after) : 0;
}

std::string SubRip::Add(Caption const& caption)
{
    See(caption.pts.value_or(0));
    std::int64_t const time = Time(caption.pts.value_or(0));
    Place const place(caption.kind, caption.pid, caption.page, caption.language);
    std::string ended;
    auto const former = m_shown.find(place);
    if (former != m_shown.end()) {
        ended = Entry(former->second, time);
        m_shown.erase(former);
    }
    if (!caption.IsEmpty()) {
        m_shown[place] = {time, caption.Text()};
    }
    return ended;
}

std::string SubRip::Finish()
{
    std::string entries;
    for (auto const& [place, shown] : m_shown) {
        entries += Entry(shown, std::max(m_last, shown.start + Second));
    }
    m_shown.clear();
    return entries;
}

std::string SubRip::Entry(Shown const& shown, std::int64_t end)
{
    if (end <= shown.start) {
        return "";
    }
    auto const text = [](std::int64_t time) { return ClockText(static_cast<std::uint64_t>(time), ','); };
    return std::to_string(++m_entries) + "\n" + text(shown.start) + " --> " + text(end) + "\n" + shown.text +
           "\n\n";
}

} // namespace zviptv::ctl

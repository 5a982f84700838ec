// SPDX-License-Identifier: MIT
#include "EventPrinter.h"

#include "EventText.h"
#include "output/Answer.h"

namespace zviptv::ctl {

namespace {

constexpr std::size_t Enough = 64 * 1024;

} // namespace

bool EventPrinter::Print(trace::Event const& event)
{
    m_lines += (m_asJson ? Compact(trace::ToJson(event)) : LineText(event)) + "\n";
    return m_lines.size() < Enough ? m_isRead : Flush();
}

bool EventPrinter::Flush()
{
    if (m_isRead && !m_lines.empty()) {
        m_isRead = m_out.Write(m_lines.data(), m_lines.size());
    }
    m_lines.clear();
    return m_isRead;
}

} // namespace zviptv::ctl

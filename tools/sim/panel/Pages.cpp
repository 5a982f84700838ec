// SPDX-License-Identifier: MIT
#include "Pages.h"

namespace zviptv::sim {

void Pages::Add(SoupWebsocketConnection* connection)
{
    m_pages.emplace_back(
        connection, [this](PageSocket&) { Advance(); },
        [this](PageSocket& socket) {
            m_pages.remove_if([&socket](Page const& page) { return &page == &socket; });
        });
    Advance();
}

void Pages::Advance()
{
    for (Page& page : m_pages) {
        Advance(page);
    }
}

void Pages::Advance(Page& page)
{
    if (page.Unanswered() > 0) {
        return;
    }
    std::string const next = m_feed.Next(page.place);
    if (!next.empty()) {
        page.Send(next);
    }
}

} // namespace zviptv::sim

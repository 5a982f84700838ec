// SPDX-License-Identifier: MIT
#pragma once

#include "Feed.h"
#include "PageSocket.h"

#include <list>

namespace zviptv::sim {

/// The pages that show the television. A page gets the next part of the feed after it has processed the
/// previous one. Therefore a slow page skips intermediate states, and delays no other page.
class Pages
{
public:
    explicit Pages(Feed const& feed) : m_feed(feed) {}

    void Add(SoupWebsocketConnection* connection);
    bool IsEmpty() const { return m_pages.empty(); }

    /// Reports that the feed has news.
    void Advance();

private:
    struct Page : PageSocket
    {
        using PageSocket::PageSocket;
        Feed::Place place;
    };

    void Advance(Page& page);

    Feed const& m_feed;
    std::list<Page> m_pages;
};

} // namespace zviptv::sim

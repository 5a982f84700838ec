// SPDX-License-Identifier: MIT
#pragma once

#include "Feed.h"
#include "PageSocket.h"

#include <list>

namespace zviptv::sim {

/// The pages that show the television. A page is sent the next part of the feed when it has worked off the
/// one before, so a slow page gets fewer of the states in between, and delays nobody.
class Pages
{
public:
    explicit Pages(Feed const& feed) : m_feed(feed) {}

    void Add(SoupWebsocketConnection* connection);
    bool IsEmpty() const { return m_pages.empty(); }

    /// The feed has something new.
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

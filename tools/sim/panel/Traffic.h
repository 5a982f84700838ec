// SPDX-License-Identifier: MIT
#pragma once

#include "Feed.h"
#include "input/LoopSource.h"
#include "trace/Conversation.h"
#include "trace/Monitor.h"
#include "trace/ProcessNames.h"

#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace zviptv::sim {

/// What applications and the service say to each other on the bus, for the pages: every message in short,
/// with notifications that follow one another in one, and the last ones in full on demand. Lives on the
/// thread whose default main context calls back.
class Traffic
{
public:
    static constexpr std::size_t MaxKept = 20000;
    static constexpr std::size_t MaxBytes = std::size_t{64} * 1024 * 1024;

    /// Adds to `feed`, which has to outlive this, and calls `onNews` now and then. A bus that cannot be
    /// watched is told the pages as the property PanelConversation.
    Traffic(std::string const& address, Feed& feed, std::function<void()> onNews);
    Traffic(Traffic const&) = delete;
    Traffic& operator=(Traffic const&) = delete;

    /// A message as a JSON object: `event` decoded, `raw` its bytes in base64. Nothing if it is not kept any
    /// more.
    std::optional<std::string> Details(std::string const& number) const;

private:
    struct Kept
    {
        trace::Event event;
        std::string bytes;
    };

    void Watch(std::string const& address);
    void Take(trace::Message const& message);
    void Keep(trace::Event const& event, std::string const& bytes);
    void AddPush(trace::Event const& event);
    void EndPushes();
    void ReportError(std::string const& error);

    Feed& m_feed;
    std::function<void()> m_onNews;
    std::unique_ptr<trace::ProcessNames> m_names;
    trace::Conversation m_conversation;
    std::deque<Kept> m_kept;
    std::size_t m_bytes = 0;
    Json::Value m_pushes; ///< that have followed one another; null if there are none
    LoopSource m_ending;  ///< of them
    std::unique_ptr<trace::Monitor> m_monitor;
};

} // namespace zviptv::sim

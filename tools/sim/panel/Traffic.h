// SPDX-License-Identifier: MIT
#pragma once

#include "Feed.h"
#include "input/LoopSource.h"
#include "trace/Conversation.h"
#include "trace/Monitor.h"
#include "trace/ProcessNames.h"

#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>

namespace zviptv::sim {

/// The messages between applications and the service, for the pages: a short form of each message, one for
/// successive notifications, and the complete form of the last messages on request. For the thread whose
/// default main context calls back.
class Traffic
{
public:
    static constexpr std::size_t MaxKept = 20000;
    static constexpr std::size_t MaxBytes = std::size_t{64} * 1024 * 1024;

    /// Adds messages to `feed`, which must outlive this object, and calls `onNews` after some of them. If the
    /// bus cannot be watched, the property PanelConversation contains the reason.
    Traffic(std::string const& address, Feed& feed, std::function<void()> onNews);
    Traffic(Traffic const&) = delete;
    Traffic& operator=(Traffic const&) = delete;

    /// A message as a JSON object: `event` is the decoded message, `raw` its bytes in base64. Empty if the
    /// message has been discarded.
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
    std::map<std::string, Json::Value> m_pushes; ///< successive pushes, by application
    LoopSource m_ending;                         ///< the end of m_pushes
    std::unique_ptr<trace::Monitor> m_monitor;
};

} // namespace zviptv::sim

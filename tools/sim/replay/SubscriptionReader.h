// SPDX-License-Identifier: MIT
#pragma once

#include "Recording.h"

#include <chrono>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <utility>

namespace zviptv::sim {

/// Assigns the pushes of a recording to their subscriptions. Times count from the first message of the
/// recording.
class SubscriptionReader
{
public:
    /// An application and the function by which it subscribes, or the notification that it gets.
    using Line = std::pair<std::string, std::string>;

    /// `recording` must outlive the reader.
    explicit SubscriptionReader(Recording& recording) : m_recording(recording) {}

    static bool IsSubscription(std::string const& function);

    /// The application requests a subscription or ends it. Pushes before Begin() belong to no subscription.
    void TakeRequest(Line const& line);

    /// The service grants the subscription.
    void Begin(Line const& line, std::chrono::microseconds now);

    /// The application ends all its subscriptions.
    void End(std::string const& application);

    /// The service has died.
    void EndAll() { m_open.clear(); }

    /// A notification. Without an earlier request, the subscription began before the recording.
    void TakePush(Line const& notification, std::chrono::microseconds now, std::string_view bytes);

    /// The recording ends: subscriptions that began before it are granted.
    void Finish();

    bool HasPushes() const { return m_hasPushes; }

private:
    struct Open
    {
        std::chrono::microseconds begin;
        std::size_t index; ///< index of its pushes
    };

    Recording& m_recording;
    std::map<Line, Open> m_open;
    std::set<Line> m_known; ///< lines whose start or end was recorded
    bool m_hasPushes = false;
};

} // namespace zviptv::sim

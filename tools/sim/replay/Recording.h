// SPDX-License-Identifier: MIT
#pragma once

#include "Spool.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace zviptv::sim {

/// What the recorded service sent, in order: the answers to one request, or the pushes of successive
/// subscriptions. Items of an earlier life of the service are skipped.
template <typename Item>
class InTurn
{
public:
    std::vector<Item> items; ///< each has a member `life`

    /// The next item for that life; after the last item, the last item again. Requires items.
    Item const& Take(std::size_t life)
    {
        while (m_next + 1 < items.size() && items[m_next].life < life) {
            ++m_next;
        }
        Item const& item = items[m_next];
        m_next += m_next + 1 < items.size() ? 1U : 0U;
        return item;
    }

    void Restart() { m_next = 0; }

private:
    std::size_t m_next = 0;
};

struct RecordedAnswer
{
    enum class Kind
    {
        Unknown, ///< the recording ends before the answer
        Message, ///< a reply, or a D-Bus error
        Missing, ///< the service did not answer
        Granted  ///< the recording begins after a subscription
    };

    Kind kind = Kind::Unknown;
    std::size_t life = 0;
    std::chrono::microseconds latency{0};
    Spool::Piece message; ///< the D-Bus message
};

/// The pushes that an application got for one subscription.
struct RecordedPushes
{
    struct Push
    {
        std::chrono::microseconds after; ///< time since the answer to the subscription
        Spool::Piece message;
    };

    std::size_t life = 0;
    std::vector<Push> pushes;
};

/// A life of the service, from when it took its name until it lost it. Times count from the first message of
/// the recording.
struct RecordedLife
{
    std::chrono::microseconds begin{0};
    std::optional<std::chrono::microseconds> firstCall; ///< first call of an application
    std::optional<std::chrono::microseconds> death;
    std::optional<std::chrono::microseconds> comeBack; ///< start of the next life
};

/// The content of a recording. Its messages are in the spool.
struct Recording
{
    Spool spool;
    std::map<std::string, InTurn<RecordedAnswer>> answers; ///< by the texts of RequestKey
    std::map<std::string, InTurn<RecordedPushes>> pushes;  ///< by the function that subscribes
    std::vector<RecordedLife> lives{RecordedLife()};
    std::vector<std::string> warnings; ///< why parts of the file are not replayed
};

} // namespace zviptv::sim

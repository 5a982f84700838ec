// SPDX-License-Identifier: MIT
#pragma once

#include "Damage.h"
#include "FaultRule.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <random>
#include <string>
#include <vector>

namespace zviptv::sim {

/// The present and future faults, with which applications test their error paths. Not thread-safe.
class Faults
{
public:
    using Time = std::chrono::steady_clock::time_point;
    using Clock = std::function<Time()>;

    /// A message to which faults may apply.
    struct Message
    {
        FaultRule::Target target;
        std::string function;
        std::string application;   ///< bus name
        std::string applicationId; ///< empty if there is none
        bool followsHeld = false;  ///< it releases a message that `reorder` holds, and is not held itself
    };

    /// A fault and its progress, with which another object can continue it.
    struct Progress
    {
        std::string text;        ///< FaultRule::Text()
        Time since;              ///< when it was added
        std::uint64_t met = 0;   ///< messages to which it has applied
        std::uint64_t drawn = 0; ///< messages for which its probability was used
    };

    /// A fault as it is shown to people.
    struct State
    {
        Progress progress;
        std::optional<std::uint64_t> left; ///< remaining messages; unlimited if empty
        Time begin;
        std::optional<Time> end;
    };

    /// `seed` determines to which messages a fault with a probability applies. `onRandom` is called when the
    /// first such fault is added.
    Faults(
        Clock clock, std::uint64_t seed, std::function<void()> onRandom = [] {});

    /// Adds a fault, whose time begins now. Returns its normalised text.
    /// @throws std::invalid_argument like FaultRule::Parse; then nothing has changed
    std::string Add(std::string const& text);
    std::string Add(FaultRule const& rule);

    /// Adds a fault that continues with its progress.
    /// @throws std::invalid_argument as FaultRule::Parse does
    void Resume(Progress const& progress);

    /// Removes all faults with this text; for FUNCTION=FAULT without options, also those that have options.
    /// Returns false if there are none. @throws std::invalid_argument as FaultRule::Parse does
    bool Remove(std::string const& text);
    void Clear() { m_faults.clear(); }

    /// The faults that have not ended, in the order in which they were added.
    std::vector<State> List() const;

    /// Returns the effect of the faults on the message, and counts the message. Faults of all requests are
    /// applied first, then those of the function, each in the order in which they were added. Later faults
    /// replace earlier ones that they contradict.
    Damage To(Message const& message);

private:
    struct Fault
    {
        FaultRule rule;
        Progress progress;
        std::mt19937_64 random;
    };

    void Insert(FaultRule const& rule, Progress progress);
    static Time BeginOf(Fault const& fault);
    static std::optional<Time> EndOf(Fault const& fault);
    static bool HasEnded(Fault const& fault, Time now);
    static bool AppliesTo(Fault& fault, Message const& message, Time now);

    Clock m_clock;
    std::uint64_t m_seed;
    std::function<void()> m_onRandom;
    bool m_isRandom = false;
    std::vector<Fault> m_faults;
};

} // namespace zviptv::sim

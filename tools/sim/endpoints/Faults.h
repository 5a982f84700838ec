// SPDX-License-Identifier: MIT
#pragma once

#include <zviptv/MessageBuffer.h>

#include <chrono>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace zviptv::sim {

/// A rule: what the answers of a function suffer.
struct Fault
{
    enum class Kind
    {
        Delay,   ///< answered late
        Drop,    ///< not answered
        Error,   ///< answered with a D-Bus error
        Result,  ///< answered with another result
        Missing, ///< answered without a key
        Garbage, ///< answered with letters for a value
        Short    ///< answered with half a value
    };

    std::string function; ///< "*" for all
    Kind kind = Kind::Drop;
    std::chrono::milliseconds delay{};
    int result = 0;
    std::string key;
    std::string text;             ///< as it was added
    std::optional<unsigned> left; ///< answers that it still spoils; all when empty
    /// When it ends, on the clock of Faults; never when empty.
    std::optional<std::chrono::steady_clock::time_point> until;
};

/// What all rules together do to the answer of one request.
class Damage
{
public:
    /// How late the answer comes; zero for at once.
    std::chrono::milliseconds Delay() const { return m_delay; }

    bool IsDrop() const { return m_whole == Whole::Drop; }
    bool IsError() const { return m_whole == Whole::Error; }

    /// What is left of the reply.
    CMessageBuffer Spoil(CMessageBuffer const& reply) const;

    /// One more rule, which counts instead of those that contradict it.
    void Add(Fault const& fault);

private:
    enum class Whole
    {
        Reply,
        Drop,
        Error
    };

    std::chrono::milliseconds m_delay{};
    Whole m_whole = Whole::Reply;
    std::map<std::string, Fault> m_values; ///< by their keys
};

/// Faults on demand, so that applications can test their error paths.
class Faults
{
public:
    using Time = std::chrono::steady_clock::time_point;

    /// Adds "METHOD=delay:MS|drop|error|result:N|missing:KEY|garbage:KEY|short:KEY", METHOD a function of the
    /// service or *, for a number of answers and until a time if these are given.
    /// @throws std::invalid_argument with a line for the user
    void Add(std::string const& text, std::optional<unsigned> count = {}, std::optional<Time> until = {});

    /// Removes those that were added as this text. False when there are none.
    bool Remove(std::string const& text);
    void Clear() { m_faults.clear(); }

    /// Those that are in force at that time.
    std::vector<Fault> const& At(Time now);

    /// What an answer suffers at that time, which is counted. The rules for all functions come first, then
    /// those for this one, so that these count.
    Damage To(std::string const& function, Time now);

private:
    std::vector<Fault> m_faults;
};

} // namespace zviptv::sim

#pragma once

#include <zviptv/MessageBuffer.h>

#include <chrono>
#include <optional>
#include <string>
#include <vector>

namespace zviptv::sim {

/// One fault that requests of a function meet.
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
};

/// Faults on demand, so that applications can test their error paths.
class Faults
{
public:
    /// Adds "METHOD=delay:MS|drop|error|result:N|missing:KEY|garbage:KEY|short:KEY".
    /// @throws std::invalid_argument with a line for the user
    void Add(std::string const& text);

    bool IsDropped(std::string const& function) const { return Find(function, Fault::Kind::Drop) != nullptr; }
    bool IsError(std::string const& function) const { return Find(function, Fault::Kind::Error) != nullptr; }

    /// How late an answer comes; zero for at once.
    std::chrono::milliseconds Delay(std::string const& function) const;

    /// The reply as the faults leave it.
    CMessageBuffer Spoil(std::string const& function, CMessageBuffer const& reply) const;

private:
    Fault const* Find(std::string const& function, Fault::Kind kind) const;

    std::vector<Fault> m_faults;
};

} // namespace zviptv::sim

// SPDX-License-Identifier: MIT
#pragma once

#include "Words.h"

#include <map>
#include <string>
#include <vector>

namespace zviptv::sim {

/// A request of an application, with the values as on the bus.
struct SeenRequest
{
    std::string function;
    std::map<std::string, std::string> arguments;
};

/// "MuteAudio onoff=1", in the order of the keys
std::string ToText(SeenRequest const& request);

/// A pattern for requests: METHOD [KEY=VALUE...], in the words of the protocol.
class Pattern
{
public:
    /// Reads the words from `next` on that belong to the pattern.
    /// @throws LineError if the protocol has no such function, key or value
    static Pattern Take(std::vector<Word> const& words, std::size_t& next);

    bool Matches(SeenRequest const& request) const;
    std::string const& Function() const { return m_function; }

private:
    void TakeValue(Word const& word);

    std::string m_function;
    std::map<std::string, std::string> m_values; ///< values as on the bus
};

} // namespace zviptv::sim

// SPDX-License-Identifier: MIT
#pragma once

#include "Words.h"

#include <map>
#include <string>
#include <vector>

namespace zviptv::sim {

/// A request as an application has sent it: values as they are on the bus.
struct SeenRequest
{
    std::string function;
    std::map<std::string, std::string> arguments;
};

/// "MuteAudio onoff=1", in the order of the keys
std::string ToText(SeenRequest const& request);

/// What a request has to be: METHOD [KEY=VALUE...], in the words of the protocol.
class Pattern
{
public:
    /// Takes the words from `next` on, as far as they belong to the pattern.
    /// @throws LineError when the protocol has no such function, key or value
    static Pattern Take(std::vector<Word> const& words, std::size_t& next);

    bool Matches(SeenRequest const& request) const;
    std::string const& Function() const { return m_function; }

private:
    void TakeValue(Word const& word);

    std::string m_function;
    std::map<std::string, std::string> m_values; ///< as they are on the bus
};

} // namespace zviptv::sim

// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <string>

namespace zviptv::sim {

/// The source of an input, as the user writes it: a path, `-`, udp://[@]HOST:PORT[?iface=NAME], rtp://
/// with the same parts, http:// or https://.
struct InputUrl
{
    enum class Kind
    {
        File, ///< or a FIFO
        StandardInput,
        Udp,
        Rtp,
        Http
    };

    Kind kind = Kind::File;
    std::string text; ///< all of it, as given
    std::string host; ///< for a socket: address or name without brackets; empty for every address
    std::uint16_t port = 0;
    std::string interface; ///< for a socket: network interface; may be empty
};

/// A text without :// is a path. @throws StreamError if any other text is malformed
InputUrl ParseInputUrl(std::string const& text);

} // namespace zviptv::sim

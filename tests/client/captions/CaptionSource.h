// SPDX-License-Identifier: MIT
#pragma once

#include "StreamTestSupport.h"

#include <zviptv/client/CaptionDecoder.h>
#include <zviptv/client/PesPacket.h>

#include "playback/Captions.h"

#include <memory>
#include <string>
#include <vector>

namespace zviptv::test {

/// The PES packets of a transport stream as the service pushes them.
inline std::vector<PesPacket> PacketsOf(std::string const& path)
{
    std::vector<PesPacket> packets;
    sim::Demux demux(path);
    for (sim::Event& event : Drain(demux)) {
        auto const bytes = std::make_shared<Bytes const>(std::move(event.pes.bytes));
        packets.emplace_back(static_cast<PesKind>(sim::TypeOf(event.pes.kind)), event.pes.pid, bytes,
                             ByteView(*bytes));
    }
    return packets;
}

/// "888 eng 133200: One", with " / " between lines; "-" for unknown values.
inline std::string Described(Caption const& caption)
{
    std::string text = caption.Text();
    for (std::size_t at = 0; (at = text.find('\n', at)) != std::string::npos;) {
        text.replace(at, 1, " / ");
    }
    std::string const name = caption.page != 0 ? std::to_string(caption.page) : ToString(caption.kind);
    std::string const language = caption.language.empty() ? "-" : caption.language;
    std::string const pts = caption.pts ? std::to_string(*caption.pts) : "-";
    return name + " " + language + " " + pts + ":" + (text.empty() ? "" : " " + text);
}

inline std::vector<std::string> Described(std::vector<Caption> const& captions)
{
    std::vector<std::string> texts;
    for (Caption const& caption : captions) {
        texts.push_back(Described(caption));
    }
    return texts;
}

} // namespace zviptv::test

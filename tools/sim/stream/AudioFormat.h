// SPDX-License-Identifier: MIT
#pragma once

#include "stream/Programme.h"

#include <map>

namespace zviptv::sim {

/// What the head of an audio frame says. Numbers are 0 where it does not tell.
struct AudioFormat
{
    std::uint32_t sampleRate = 0; ///< Hz
    std::uint32_t bitRate = 0;    ///< bits a second; AAC never tells
    std::uint8_t channels = 0;    ///< low frequency effects included
    std::optional<bool> dualMono; ///< two independent sounds
};

/// One frame of audio; it may end after the bytes that it was read from.
struct AudioFrame
{
    std::size_t size = 0;              ///< in bytes, head included; never 0
    std::optional<AudioFormat> format; ///< nothing where the frame refers to one before it
};

using AudioFormats = std::map<std::uint16_t, AudioFormat>; ///< by PID

/// Looks for a whole frame at the beginning of a PES packet, another one or the packet's end behind it. Gives
/// nothing for DTS.
///
/// MPEG-4 audio that announces a higher sampling rate, or two channels, for its extension counts as that;
/// one whose extension is not announced as what its core has. E-AC-3 counts by its first substream.
std::optional<AudioFormat> ParseAudioFormat(AudioCodec codec, ByteView pes);

} // namespace zviptv::sim

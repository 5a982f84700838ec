// SPDX-License-Identifier: MIT
#pragma once

#include "stream/Programme.h"

#include <map>

namespace zviptv::sim {

/// The format in the header of an audio frame. Numbers that it does not contain are 0.
struct AudioFormat
{
    std::uint32_t sampleRate = 0; ///< Hz
    std::uint32_t bitRate = 0;    ///< bits per second; never known for AAC
    std::uint8_t channels = 0;    ///< including low frequency effects
    std::optional<bool> dualMono; ///< two independent sounds
};

/// One frame of audio; it may end after the bytes that it was read from.
struct AudioFrame
{
    std::size_t size = 0;              ///< in bytes, including the header; never 0
    std::optional<AudioFormat> format; ///< empty if the frame refers to an earlier one
};

using AudioFormats = std::map<std::uint16_t, AudioFormat>; ///< by PID

/// Finds a whole frame at the beginning of a PES packet that is followed by another frame or the end of the
/// packet. Returns nullopt for DTS.
/// If MPEG-4 audio announces a higher sampling rate or two channels for its extension, these count; otherwise
/// those of the core. The first substream of E-AC-3 counts.
std::optional<AudioFormat> ParseAudioFormat(AudioCodec codec, ByteView pes);

} // namespace zviptv::sim

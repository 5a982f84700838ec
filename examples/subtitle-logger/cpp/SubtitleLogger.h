// SPDX-License-Identifier: MIT
#pragma once

#include <zviptv/client/Client.h>

#include <functional>
#include <string>

/// What is logged.
struct LoggerOptions
{
    zviptv::Language audio;      ///< language of the audio track to select
    std::uint16_t pid = 0x101;   ///< PID whose packets and gaps are counted
    std::uint64_t serviceId = 1; ///< service in the programme guide
};

/// Selects an audio track, and writes lines about the programmes, the captions and the restarts of the
/// service. For the thread that iterates the default main context.
class SubtitleLogger
{
public:
    SubtitleLogger(LoggerOptions options, std::function<void(std::string const&)> write);

    /// "PID 257: 12 packets, 26088 bytes, 0 gaps".
    std::string Summary() const;

private:
    void OnAvailability(bool isAvailable);
    void OnState(zviptv::StateEvent const& event);
    void Count();
    void Decode(zviptv::PesPacket const& packet);
    void SelectAudio(std::vector<zviptv::AudioTrack> const& tracks);
    void ShowProgrammes(std::optional<zviptv::Programme> const& present);
    void Report(zviptv::Failure const& failure);

    LoggerOptions const m_options;
    std::function<void(std::string const&)> const m_write;
    std::uint64_t m_gaps = 0;
    zviptv::CaptionDecoder m_decoder;
    zviptv::Television m_television; // ends outstanding calls, whose completions use the members above
    zviptv::StateWatcher m_watcher;
    zviptv::Listener m_availability;
    zviptv::Subscription m_counted;
    zviptv::Subscription m_captions;
};

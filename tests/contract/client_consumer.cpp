// SPDX-License-Identifier: MIT
// A user's program for the client layer that uses something from every header.
#include <zviptv/client/Client.h>

#include <iostream>

int main()
{
    zviptv::Television television;
    zviptv::Listener const listener = television.OnAvailability([](bool) {});
    television.OnError([](zviptv::Failure const& failure) { std::cout << ToString(failure) << "\n"; });
    zviptv::Result<void> const muted = television.Player().MuteAudio(true);
    std::cout << "muted: " << (muted ? "yes" : ToString(muted.GetFailure().kind)) << "\n";
    auto const tracks = television.Broadcast().AudioTracks();
    std::cout << "tracks: " << tracks.ValueOr({}).size() << "\n";
    auto const film = television.Guide().GetPresentProgram(1);
    std::cout << "guide: " << (film ? "there" : film.GetFailure().function) << "\n";
    television.Player().MuteAudio(false, [](zviptv::Result<void> const& result) {
        std::cout << "at the end: " << (result ? "muted" : ToString(result.GetFailure().kind)) << "\n";
    });
    zviptv::AudioTrack track;
    track.language = zviptv::Language("ENG");
    std::cout << ToString(track.language) << ", " << ToString(zviptv::SourceState::Playing) << "\n";
}

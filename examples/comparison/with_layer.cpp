// SPDX-License-Identifier: MIT
// Shows state, tracks, now and next, mutes the sound and receives PES packets, also after restarts of the
// service.
#include <zviptv/client/Client.h>

#include <glib.h>

#include <iostream>

using namespace zviptv;

namespace {

void Show(Television& television, TelevisionState const& state)
{
    std::cout << "state: " << ToString(*state.source) << "\n";
    for (AudioTrack const& track : state.audioTracks) {
        std::cout << "audio: " << ToString(track.language) << ", PID " << track.pid << "\n";
    }
    for (Subtitle const& subtitle : state.subtitles) {
        std::cout << "subtitle: " << ToString(subtitle.language) << ", PID " << subtitle.pid << "\n";
    }
    if (state.present) {
        std::cout << "now: " << state.present->title << "\n";
        auto const next = television.Guide().GetProgram(state.present->Id(), Neighbour::Next);
        std::cout << "next: " << (next && *next ? (*next)->title : "unknown") << "\n";
    }
    auto const muted = television.Player().MuteAudio(true);
    std::cout << (muted ? "muted" : "not muted: " + ToString(muted.GetFailure())) << std::endl;
}

} // namespace

int main()
{
    Television television;
    StateWatcher watcher;
    Subscription subscription;
    bool isShown = false;
    auto const onState = [&](StateEvent const&) {
        TelevisionState const& state = watcher.State();
        if (!isShown && state.source == SourceState::Playing && !state.audioTracks.empty()) {
            isShown = true;
            Show(television, state);
        }
    };
    auto const onPacket = [&](PesPacket const& packet) {
        if (subscription.Counters().packets <= 3) {
            std::cout << "packet: PID " << packet.Pid() << ", " << packet.Data().Size() << " bytes"
                      << std::endl;
        }
    };
    auto const listener = television.OnAvailability([&](bool isAvailable) {
        std::cout << (isAvailable ? "service" : "no service") << std::endl;
        if (isAvailable) {
            isShown = false;
            watcher = StateWatcher(television, {std::chrono::milliseconds(200), 1}, onState);
            subscription = television.SubscribePes({{0x101}, {}}, onPacket);
        }
    });
    g_main_loop_run(g_main_loop_new(nullptr, FALSE));
}

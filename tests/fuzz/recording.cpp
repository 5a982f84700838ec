// SPDX-License-Identifier: MIT
#include "Fuzz.h"
#include "MemoryFile.h"
#include "RecordedSession.h"
#include "dbus/PeerMessage.h"
#include "replay/PushReplay.h"
#include "replay/RecordingReader.h"

#include <algorithm>
#include <stdexcept>

// Any session of applications and a service as a recording: it is replayed, life by life, to applications
// that ask all of its requests.

using namespace zviptv;
using namespace zviptv::fuzz;

namespace {

CMessageBuffer ToBuffer(BusMessage::Pairs const& entries)
{
    CMessageBuffer buffer;
    for (auto const& [key, value] : entries) {
        buffer.AddValue(key.c_str(), static_cast<int>(value.size()), value.data());
    }
    return buffer;
}

void Check(sim::ReplayedAnswer const& answer)
{
    Require(answer.delay.count() >= 0 && answer.delay <= std::chrono::hours(24 * 49), "a delay fits a timer");
    Error error;
    Owned<GVariant> const body = EncodePeerMessage(answer.reply, error);
    Require(body != nullptr || bool(error), "a reply is sent, or refused");
}

std::optional<sim::ReplayedAnswer> Ask(sim::Replay& replay, Step const& step, std::string const& handle)
{
    Function const& function = FunctionOf(step);
    auto const answer =
        replay.Answer(function.endpoint, ToBuffer(EntriesOf(function, handle, ValueOf(step.value))));
    if (answer) {
        Check(*answer);
    }
    return answer;
}

/// Replays the session in order, then again, which repeats the last answers.
void CheckTurns(sim::Replay& replay, Session::Expected const& expected)
{
    for (auto const& [asked, answers] : expected) {
        if (Functions[asked.first].name == std::string("SetAppID")) {
            continue; // its argument does not count
        }
        Step const step{0, 0, static_cast<std::uint8_t>(asked.first), asked.second, 0};
        for (std::size_t i = 0; i <= answers.size() && *Functions[asked.first].name != '\0'; ++i) {
            auto const answer = Ask(replay, step, "256");
            Require(answer && answer->isRecorded, "a recorded request is known");
            Require(answer->reply.GetValue("number") == answers[std::min(i, answers.size() - 1)],
                    "answers come in turn");
        }
    }
}

void Play(sim::Replay& replay, MainLoop& loop, Session const& session, std::size_t life)
{
    replay.Begin(life);
    sim::PushReplay pushes(replay, loop,
                           [](std::string const& function, std::string const&, CMessageBuffer const& push) {
                               Error error;
                               EncodePeerMessage(push, error);
                               return function == "requestPESCB" || push.Size() > 1;
                           });
    for (char const* const type : {"BROADCASTDATA", "IPTVDATASUBSCRIBER", ""}) {
        for (bool const comesUp : {true, false}) {
            if (auto const answer = replay.Announce(type, comesUp, ":1.9")) {
                Check(*answer);
            }
        }
    }
    for (Step const& step : session.Asked()) {
        Ask(replay, step, step.value % 5 == 0 ? "7" : "256");
        pushes.Start(FunctionOf(step).name, NameOf(step.application), std::chrono::milliseconds(0));
    }
    for (int turn = 0; turn < 50 && g_main_context_iteration(nullptr, FALSE) != FALSE; ++turn) {
    }
    pushes.StopAll();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    FuzzedDataProvider input(data, size);
    auto const unrecorded =
        input.PickValueInArray({sim::ReplayOptions::Unrecorded::Error, sim::ReplayOptions::Unrecorded::False,
                                sim::ReplayOptions::Unrecorded::Stream});
    double const speed = input.PickValueInArray({1.0, 0.01, 1000.0, 1e12});
    Session const session(input);
    MemoryFile const file(session.Bytes());
    MainLoop loop;
    try {
        sim::Replay replay({file.Path(), unrecorded, speed}, loop);
        std::size_t deaths = 0;
        replay.SetDeathListener([&deaths](std::optional<double> returnAfter) {
            ++deaths;
            Require(!returnAfter || (*returnAfter >= 0 && *returnAfter <= 49 * 86'400),
                    "a return can be awaited");
        });
        std::size_t const lives = replay.Recorded().lives.size();
        for (std::size_t life = 0; life < std::min<std::size_t>(lives + 1, 5); ++life) {
            Play(replay, loop, session, life);
        }
        Require(deaths <= lives + 1, "a life ends once");
        if (session.Answers() != nullptr) {
            replay.Begin(0);
            CheckTurns(replay, *session.Answers());
        }
    } catch (std::runtime_error const& failure) {
        Require(std::string_view(failure.what()).find(": ") != std::string_view::npos, "a refusal says why");
    }
    return 0;
}

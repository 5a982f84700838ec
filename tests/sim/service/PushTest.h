// SPDX-License-Identifier: MIT
#pragma once

#include "DenseStream.h"
#include "SimulatorTest.h"

#include "../stream/NaiveReassembly.h"

#include <algorithm>
#include <numeric>
#include <string>
#include <vector>

namespace zviptv::test {

/// The simulator plays a stream once, from its first packet: 40 packets of each of three PIDs, in turn, the
/// last of which also come as captions.
class FaultyPushes : public Simulator
{
protected:
    static constexpr std::size_t Count = 40;

    /// The simulator waits for two applications: m_application, and the one that Play() starts.
    void Begin(std::vector<std::string> const& faults, std::vector<std::string> const& options = {})
    {
        std::string const path = m_bus.Directory() + "/dense.ts";
        m_stream = WriteDenseStream(path, {10, 200, 4});
        std::vector<std::string> all{"--ts", path, "--wait-for", "2", "--speed", "20"};
        for (std::string const& fault : faults) {
            all.insert(all.end(), {"--fault", fault});
        }
        all.insert(all.end(), options.begin(), options.end());
        Start(all);
        m_application.Announce(Type);
    }

    static WireMessage Request(Application& application, std::string const& function)
    {
        return application.Ask(Type, {{"functionname", function}, {"on", "1"}});
    }

    /// Subscribes to captions, and to packets if wanted.
    static void Subscribe(Application& application, bool packets = true)
    {
        application.Announce(Type);
        EXPECT_EQ(Number(Request(application, "requestCaptionCB"), "result_internal"), "1");
        if (packets) {
            EXPECT_EQ(Number(Request(application, "requestPESCB"), "result_internal"), "1");
        }
    }

    /// The other application subscribes, with which play begins.
    void Play()
    {
        m_begin = std::chrono::steady_clock::now();
        Subscribe(m_other, false);
    }

    /// Plays to the last caption, which arrives after all packets that are not delayed.
    void PlayToTheEnd(std::size_t captions = Count)
    {
        Play();
        EXPECT_TRUE(m_application.Peer().Received().WaitForCount(
            [](WireMessage const& message) { return message.Value("functionname") == "CaptionCB"; },
            captions));
    }

    /// The packets of a PID, as they are in the stream.
    std::vector<std::string> Played(std::uint16_t pid) const
    {
        std::vector<std::string> packets;
        for (Bytes const& packet : ReassembleNaively(m_stream, pid)) {
            packets.emplace_back(packet.begin(), packet.end());
        }
        EXPECT_EQ(packets.size(), Count);
        return packets;
    }

    /// The packets of a PID that have come so far, by their numbers in the stream from 0; -1 for one with
    /// other bytes.
    std::vector<int> Got(std::uint16_t pid)
    {
        std::vector<std::string> const played = Played(pid);
        std::vector<int> numbers;
        for (std::string const& packet : m_application.Packets(std::to_string(pid))) {
            auto const found = std::find(played.begin(), played.end(), packet);
            numbers.push_back(found == played.end() ? -1 : static_cast<int>(found - played.begin()));
        }
        return numbers;
    }

    /// All numbers from this one on.
    static std::vector<int> From(int first)
    {
        std::vector<int> numbers(Count - static_cast<std::size_t>(first));
        std::iota(numbers.begin(), numbers.end(), first);
        return numbers;
    }

    /// The notifications of a function that have come so far.
    std::vector<WireMessage> Notifications(std::string const& function)
    {
        std::vector<WireMessage> notifications;
        for (WireMessage const& message : m_application.Peer().Received().All()) {
            if (message.Value("functionname") == function) {
                EXPECT_TRUE(message.HasOnlyByteArrays());
                notifications.push_back(message);
            }
        }
        return notifications;
    }

    static constexpr char Type[] = "IPTVDATASUBSCRIBER";

    Bytes m_stream;
    Application m_application;
    Application m_other;
    std::chrono::steady_clock::time_point m_begin; ///< of play
};

} // namespace zviptv::test

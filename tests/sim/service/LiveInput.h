// SPDX-License-Identifier: MIT
#pragma once

#include "Crowd.h"
#include "WaitUntil.h"

#include "../input/RtpBytes.h"
#include "../input/UdpSender.h"

#include <functional>

namespace zviptv::test {

constexpr std::uint16_t LiveVideo = 0x100;
constexpr std::uint16_t LiveAudio = 0x101;

/// The simulator with input that the test sends.
class LiveInput : public Crowd
{
protected:
    ChildProcess& StartLive(std::string const& url, std::vector<std::string> options = {})
    {
        std::vector<std::string> all{"--ts", url, "--json"};
        all.insert(all.end(), options.begin(), options.end());
        return Start(all);
    }

    /// Waits until the input in the status fulfils the condition. Returns it.
    Json::Value InputWhere(std::function<bool(Json::Value const&)> const& condition)
    {
        Json::Value input;
        EXPECT_TRUE(WaitUntil(
            [&] {
                Json::Value const status = Status();
                input = status.isNull() ? Json::Value() : status["input"];
                return !input.isNull() && condition(input);
            },
            Patience))
            << input.toStyledString();
        return input;
    }

    std::string SourceState()
    {
        return Number(m_control.Ask("PLAYERCONTROL", {{"functionname", "GetSourceState"}}), "sourcestate");
    }

    bool WaitForState(std::string const& state)
    {
        m_control.Announce("PLAYERCONTROL");
        return WaitUntil([&] { return SourceState() == state; }, Patience);
    }

    void Subscribe()
    {
        m_subscriber.Announce("IPTVDATASUBSCRIBER");
        m_subscriber.Ask("IPTVDATASUBSCRIBER", {{"functionname", "requestPESCB"}, {"on", "1"}});
    }

    /// PAT, PMT, and padding to seven packets.
    static StreamBuilder& AddTables(StreamBuilder& builder)
    {
        return builder.Section(0, MakePat({{1, 0x1000}}))
            .Section(0x1000, MakePmt(1, LiveVideo,
                                     {{0x1B, LiveVideo, {}}, {0x03, LiveAudio, {0x0A, 4, 'e', 'n', 'g', 0}}}))
            .Null(5);
    }

    Application m_control;
    Application m_subscriber;
};

} // namespace zviptv::test

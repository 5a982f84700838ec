// SPDX-License-Identifier: MIT
#pragma once

#include "Bytes.h"
#include "LogCapture.h"
#include "LoopRunner.h"
#include "PrivateBus.h"
#include "WirePeer.h"

#include <zviptv/CommonNative.h>

#include <gtest/gtest.h>

#include <future>
#include <string>

namespace zviptv::test {

constexpr char EndpointPath[] = "/org/corvel/zviptvapi/DbusCommunication/ENDPOINT";
constexpr char ChannelInterface[] = "org.corvel.zviptvapi.DbusCommunication";

/// An endpoint that overrides neither hook.
class Plain : public CCommonNative
{
public:
    Plain() : CCommonNative("ENDPOINT") {}
};

/// A second endpoint on the same connection. After its answer, all earlier messages have been delivered.
class Fence : public CCommonNative
{
public:
    Fence() : CCommonNative("FENCE") {}

    WireTarget Target()
    {
        return {GetPublicName(), "/org/corvel/zviptvapi/DbusCommunication/FENCE", ChannelInterface, "Send"};
    }
};

/// An endpoint "ENDPOINT" on a private bus, and a partner that is not part of the library.
class EndpointTest : public testing::Test
{
protected:
    WireTarget Target(CCommonNative& endpoint, char const* member) const
    {
        return {endpoint.GetPublicName(), EndpointPath, ChannelInterface, member};
    }

    /// Sends a notification from the partner to the endpoint.
    void Notify(CCommonNative& endpoint, WireEntries const& entries)
    {
        m_partner.Emit(Target(endpoint, "SendSignal"), entries);
    }

    /// Makes the partner call the endpoint, while the calling thread iterates the context.
    WireMessage Call(WireTarget const& target, WireEntries const& entries)
    {
        auto answer = std::async(std::launch::async, [&] { return m_partner.Call(target, entries); });
        RunUntil([&] { return answer.wait_for(std::chrono::seconds(0)) == std::future_status::ready; });
        return answer.get();
    }

    /// The priorities and messages of the lines of "CommonNative.cpp: <function>".
    std::vector<std::pair<EZVLogPriority, std::string>> LinesOf(std::string const& function) const
    {
        std::vector<std::pair<EZVLogPriority, std::string>> lines;
        for (LogLine const& line : m_log.Lines()) {
            if (line.Origin() == "CommonNative.cpp: " + function) {
                lines.emplace_back(line.priority, line.Message());
            }
        }
        return lines;
    }

    PrivateBus m_bus;
    LogCapture m_log;
    WirePeer m_partner;
};

using Lines = std::vector<std::pair<EZVLogPriority, std::string>>;

/// An entry line and nothing else.
inline Lines EntryLine()
{
    return {{ZV_LOG_INFO, ""}};
}

} // namespace zviptv::test

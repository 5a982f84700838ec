// SPDX-License-Identifier: MIT
#pragma once

#include "CtlFixture.h"

#include <csignal>
#include <filesystem>

namespace zviptv::test {

/// zviptvctl trace on a bus with a scripted service and an application, both made of libdbus.
class TraceTest : public CtlTest
{
protected:
    /// Starts the command and returns when it sees the bus.
    void Start(Words const& options = {})
    {
        Words words = {"trace"};
        words.insert(words.end(), options.begin(), options.end());
        m_trace = StartCtl(words, {{"TZ", "UTC"}});
        EXPECT_TRUE(m_trace->WaitForErrors("; Ctrl-C ends it\n", patience)) << m_trace->Errors();
    }

    /// The output so far.
    CtlResult End()
    {
        m_trace->Signal(SIGINT);
        return Finish(*m_trace);
    }

    WireMessage Request(std::string const& endpoint, WireEntries const& entries)
    {
        return m_application.Call(
            {m_service.Name(), ChannelPath(endpoint), "org.corvel.zviptvapi.DbusCommunication", "Send"},
            entries);
    }

    void Announce(std::string const& endpoint, char const* add)
    {
        m_application.Call({"org.corvel.zviptvapi.dbushelper", "/org/corvel/zviptvapi/dbushelper",
                            "org.corvel.zviptvapi.dbushelper", "SendSignal"},
                           Pairs({{"dbusname", m_application.Name()}, {"type", endpoint}, {"add", add}}));
    }

    void Push(char const* pid, std::string const& data)
    {
        m_service.Notify(m_application.Name(), "IPTVDATASUBSCRIBER",
                         Entries({{"functionname", "PESCB"},
                                  {"pesDataSize", std::to_string(data.size())},
                                  {"pesType", "2"},
                                  {"pesPID", pid},
                                  {"pesPTS", "133200"},
                                  {"pesData", data}}));
    }

    std::string InFolder(char const* name) const { return m_bus.Directory() + "/" + name; }

    WirePeer m_application;
    std::unique_ptr<ChildProcess> m_trace;
};

} // namespace zviptv::test

// SPDX-License-Identifier: MIT
#pragma once

#include "CtlFixture.h"

namespace zviptv::test {

/// The program subscribed and waits for packets.
class StreamTest : public CtlTest
{
protected:
    /// Starts the program. Returns when it has requested `function`, "requestPESCB" or "requestCaptionCB".
    std::unique_ptr<ChildProcess> StartSubscribed(Words const& arguments,
                                                  std::string const& function = "requestPESCB")
    {
        m_service.ClearRecords();
        auto child = StartCtl(arguments);
        auto const request = m_service.WaitForRequest(function);
        EXPECT_TRUE(request);
        if (request) {
            EXPECT_EQ(request->entries,
                      Entries({{"functionname", function}, {"handleID", "256"}, {"on", "1"}}));
        }
        m_service.ClearRecords();
        m_client = request ? request->sender : "";
        return child;
    }

    void Push(std::initializer_list<TextEntry> entries)
    {
        m_service.Notify(m_client, "IPTVDATASUBSCRIBER", Entries(entries));
    }

    void PushPes(std::string const& type, std::string const& pid, std::string const& pts,
                 std::string const& data)
    {
        Push({{"functionname", "PESCB"},
              {"pesType", type},
              {"pesPID", pid},
              {"pesPTS", pts},
              {"pesDataSize", std::to_string(data.size())},
              {"pesData", data}});
    }

    void PushCaption(std::string const& type, std::string const& data)
    {
        Push({{"functionname", "CaptionCB"},
              {"captionType", type},
              {"captionDataSize", std::to_string(data.size())},
              {"captionData", data}});
    }

    /// Whether the program has ended its subscription.
    bool IsUnsubscribed(std::string const& function = "requestPESCB") const
    {
        auto const request = m_service.WaitForRequest(function);
        return request &&
               request->entries == Entries({{"functionname", function}, {"handleID", "256"}, {"on", "0"}});
    }

    std::string m_client;
};

} // namespace zviptv::test

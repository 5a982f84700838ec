// SPDX-License-Identifier: MIT
#pragma once

#include "CtlFixture.h"

namespace zviptv::test {

/// A service that plays.
class WatchTest : public testing::Test
{
protected:
    WatchTest() { StartService(); }

    void StartService()
    {
        m_service = std::make_unique<FakeService>(m_bus.Address(), [](FakeService& service) {
            service.Answer("GetSourceState", {{"result_internal", "1"}, {"sourcestate", "2"}});
            service.Answer("GetSTCCount", {{"result_internal", "1"}, {"stcCount", "123456"}});
            service.Answer("GetFirstPTS", {{"result_internal", "1"},
                                           {"firstPTS", "90000"},
                                           {"timebaseden", "90000"},
                                           {"timebasenum", "1"},
                                           {"currenttime", "0"}});
        });
    }

    void PushPes(std::string const& pid, std::string const& data)
    {
        m_service->Notify(m_service->ClientOf("IPTVDATASUBSCRIBER"), "IPTVDATASUBSCRIBER",
                          Entries({{"functionname", "PESCB"},
                                   {"pesType", "1"},
                                   {"pesPID", pid},
                                   {"pesPTS", "1"},
                                   {"pesDataSize", std::to_string(data.size())},
                                   {"pesData", data}}));
    }

    PrivateBus m_bus;
    std::unique_ptr<FakeService> m_service;
};

} // namespace zviptv::test

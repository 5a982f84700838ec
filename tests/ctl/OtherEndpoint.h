// SPDX-License-Identifier: MIT
#pragma once

#include "FakeService.h"

#include <string>

namespace zviptv::test {

/// A connection of the service beside that of the helper bus. It accepts every request.
class OtherEndpoint
{
public:
    explicit OtherEndpoint(std::string const& address) : peer(address)
    {
        peer.SetHandler([](WireMessage const&) { return Entries({{"result_internal", "1"}}); });
    }

    void Push(std::string const& client, WireBody const& body,
              std::string const& path = ChannelPath("IPTVDATASUBSCRIBER"))
    {
        peer.Emit({client, path, "org.corvel.zviptvapi.DbusCommunication", "SendSignal"}, body);
    }

    WirePeer peer;
};

/// A packet of one byte.
inline WireEntries PesEntries()
{
    return Entries({{"functionname", "PESCB"},
                    {"pesType", "1"},
                    {"pesPID", "256"},
                    {"pesPTS", "1"},
                    {"pesDataSize", "1"},
                    {"pesData", "x"}});
}

} // namespace zviptv::test

// SPDX-License-Identifier: MIT
#pragma once

#include "FakeService.h"
#include "FaultTest.h"

#include <zviptv/client/Client.h>

#include <memory>
#include <string>
#include <vector>

namespace zviptv::test {

/// The faults of the library, against the client layer.
class ClientFault : public FaultTest
{
protected:
    using FaultTest::FaultTest;

    template <class T>
    static std::string KindOf(Result<T> const& result)
    {
        return result ? "success" : ToString(result.GetFailure().kind);
    }
    /// A call with the given time-out, which adds the kind of its outcome to `kinds`.
    static Pending Mute(Television& television, std::vector<std::string>& kinds,
                        std::chrono::milliseconds timeout = std::chrono::seconds(20))
    {
        return television.Player().MuteAudio(
            true, [&kinds](Result<void> const& result) { kinds.push_back(KindOf(result)); }, {timeout});
    }
    static bool AwaitAvailable(Television const& television, bool isAvailable)
    {
        return RunUntil([&] { return television.IsAvailable() == isAvailable; });
    }
    static std::string const& Subscriber()
    {
        static std::string const type = "IPTVDATASUBSCRIBER";
        return type;
    }
    /// A pushed packet with `size` bytes of data.
    static WireEntries Packet(std::size_t size = 100)
    {
        std::string data(size, '\0');
        data[2] = 1;
        return Entries({{"functionname", "PESCB"},
                        {"pesDataSize", std::to_string(size)},
                        {"pesType", "2"},
                        {"pesPID", "257"},
                        {"pesPTS", "90000"},
                        {"pesData", data}});
    }
};

} // namespace zviptv::test

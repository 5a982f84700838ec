// SPDX-License-Identifier: MIT
#include "BusDaemon.h"

#include "Pipe.h"

namespace zviptv {

BusDaemon StartBusDaemon(BusStart start)
{
    constexpr int addressTarget = 3;
    constexpr std::chrono::seconds timeout{20};
    Pipe address;
    start.descriptors.emplace_back(address.WriteEnd(), addressTarget);
    pid_t const pid =
        start.spawn({{start.program, "--config-file=" + start.config, "--nofork", "--nopidfile", "--nosyslog",
                      "--print-address=" + std::to_string(addressTarget), "--address=" + start.address},
                     {},
                     start.descriptors,
                     true});
    address.CloseWriteEnd();
    return {pid, address.ReadLine(timeout)}; // it listens before it prints its address
}

} // namespace zviptv

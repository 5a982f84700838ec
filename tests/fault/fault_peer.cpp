// SPDX-License-Identifier: MIT
// The other end as a separate process, which tests can kill and stop. Uses only libdbus.
#include "PeerModes.h"

#include "FakeService.h"

#include <unistd.h>

#include <cstdio>

namespace zviptv::test {

void PrintLine(std::string const& line)
{
    std::printf("%s\n", line.c_str());
    std::fflush(stdout);
}

void RunService()
{
    FakeService const service;
    PrintLine(service.Name());
    for (;;) {
        pause();
    }
}

} // namespace zviptv::test

int main(int count, char** arguments)
{
    using namespace zviptv::test;
    Arguments const rest(arguments + (count > 1 ? 2 : 1), arguments + count);
    std::string const mode = count > 1 ? arguments[1] : "";
    if (mode == "partner") {
        RunPartner();
    }
    if (mode == "service") {
        RunService();
    }
    if (mode == "flood" && rest.size() == 4) {
        RunFlood(rest);
    }
    if (mode == "stranger" && rest.size() == 3) {
        RunStranger(rest);
    }
    std::fprintf(stderr,
                 "fault_peer: partner | service | flood KIND TO PATH RATE | stranger VICTIM PATH PARTNER\n");
    return 2;
}

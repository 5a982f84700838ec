#include "StandardStreams.h"
#include "Supervisor.h"

#include <cstdio>
#include <exception>

int main(int argc, char** argv)
{
    zviptv::OccupyStandardStreams();
    std::setvbuf(stdout, nullptr, _IOLBF, BUFSIZ); // a line is seen at once, in a pipe too
    int exitStatus = 0;
    auto const options = zviptv::sim::ParseCommandLine(argc, argv, exitStatus);
    if (!options) {
        return exitStatus;
    }
    try {
        return zviptv::sim::Run(*options);
    } catch (std::exception const& failure) {
        std::fprintf(stderr, "zviptv-sim: %s\n", failure.what());
        return 1;
    }
}

// SPDX-License-Identifier: MIT
#include "common/PrintableText.h"
#include "common/StandardStreams.h"
#include "host/ScenarioFile.h"
#include "host/ServiceRun.h"
#include "host/Supervisor.h"
#include "playback/StreamGuide.h"
#include "scenario/Parser.h"

#include <sys/prctl.h>

#include <csignal>
#include <cstdio>
#include <cstring>
#include <exception>

int main(int argc, char** argv)
{
    zviptv::OccupyStandardStreams();
    std::setvbuf(stdout, nullptr, _IOLBF, BUFSIZ); // a line is written at once, also to a pipe
    int exitStatus = 0;
    auto const options = zviptv::sim::ParseCommandLine(argc, argv, exitStatus);
    if (!options) {
        return exitStatus;
    }
    try {
        if (options->listServices) {
            zviptv::sim::ListServices(options->service.playback, options->service.guide);
            return 0;
        }
        std::signal(SIGPIPE, SIG_IGN); // if a reader closes the pipe, the write fails
        bool const returns = std::strcmp(argv[0], zviptv::sim::ReturningName) == 0;
        if (returns || std::strcmp(argv[0], zviptv::sim::ServiceName) == 0) {
            prctl(PR_SET_NAME, "zviptv-sim"); // the program was executed with another name
            return zviptv::sim::RunService(options->service, returns);
        }
        return zviptv::sim::Run(*options, zviptv::sim::PrepareScenario(*options));
    } catch (zviptv::sim::ScenarioError const& failure) {
        std::fprintf(stderr, "%s\n", zviptv::PrintableText(failure.what()).c_str());
        return 2;
    } catch (std::exception const& failure) {
        std::fprintf(stderr, "zviptv-sim: %s\n", zviptv::EscapeText(failure.what()).c_str());
        return 1;
    }
}

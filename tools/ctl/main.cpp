// SPDX-License-Identifier: MIT
#include "CommandLine.h"
#include "common/StandardStreams.h"

int main(int argc, char* argv[])
{
    zviptv::OccupyStandardStreams();
    return static_cast<int>(zviptv::ctl::CommandLine().Run(argc, argv));
}

// SPDX-License-Identifier: MIT
#include "CtlFixture.h"

#include <csignal>
#include <fstream>
#include <sys/stat.h>

namespace zviptv::test {
namespace {

using testing::HasSubstr;

/// The demo with a client that runs `script`.
CtlResult RunDemo(std::string const& directory, std::string const& script)
{
    std::string const program = directory + "/zviptvctl";
    std::ofstream(program) << "#!/bin/sh\n" << script;
    chmod(program.c_str(), 0755);
    ChildProcess child({DEMO_PATH}, {{"PATH", directory + ":" + getenv("PATH")}, {"ZVIPTV_SIM_PID", ""}});
    return Finish(child);
}

/// Ctrl-C reaches both; the client ends its work properly.
TEST(DemoTest, CtrlCEndsItQuietly)
{
    PrivateBus const directory;
    CtlResult const result = RunDemo(directory.Directory(), "kill -INT $PPID; exit 3");
    EXPECT_EQ(result.code, 128 + SIGINT);
    EXPECT_EQ(result.errors, "");
}

TEST(DemoTest, ReportsAnUnexpectedExitStatus)
{
    PrivateBus const directory;
    CtlResult const result = RunDemo(directory.Directory(), "exit 3");
    EXPECT_EQ(result.code, 1);
    EXPECT_THAT(result.errors, HasSubstr("The demo expected exit status 0, not 3.\n"));
}

} // namespace
} // namespace zviptv::test

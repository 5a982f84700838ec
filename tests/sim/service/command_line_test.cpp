#include "ChildProcess.h"

#include <gmock/gmock.h>

#include <csignal>
#include <filesystem>

namespace zviptv::test {
namespace {

using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

constexpr std::chrono::seconds Patience{20};

ExitStatus EndOf(ChildProcess& process)
{
    return process.Wait(Patience).value_or(ExitStatus{-1, -1});
}

std::vector<std::string> Simulate(std::vector<std::string> options)
{
    options.insert(options.begin(), ZVIPTV_SIM);
    return options;
}

TEST(CommandLine, ComplainsInWords)
{
    struct Case
    {
        std::vector<std::string> options;
        int status;
        char const* words;
    };
    for (Case const& one : std::vector<Case>{
             {{}, 2, "--ts is required"},
             {{"--ts", "/no/such/file", "--bus", "private"}, 1, "cannot open /no/such/file"},
             {{"--ts", ZVIPTV_SIM, "--", "true"}, 1, "holds no transport stream"},
             {{"--ts", ZVIPTV_SAMPLE_FILE, "--program", "7", "--", "true"},
              1,
              "has no programme 7: it has 1"},
             {{"--ts", ZVIPTV_SAMPLE_FILE, "--speed", "0"}, 2, "--speed"},
             {{"--ts", ZVIPTV_SAMPLE_FILE, "--pes", "audio,sounds"}, 2, "'sounds' is no kind of PES packet"},
             {{"--ts", ZVIPTV_SAMPLE_FILE, "--bus", "system", "--", "true"}, 2, "leave out --bus system"},
             {{"--ts", ZVIPTV_SAMPLE_FILE, "--", "/no/such/program"}, 127, "cannot run /no/such/program"},
         }) {
        ChildProcess process(Simulate(one.options));
        EXPECT_EQ(EndOf(process), (ExitStatus{one.status, 0})) << one.words << "\n" << process.Errors();
        EXPECT_THAT(process.Errors(), HasSubstr(one.words));
    }
}

TEST(CommandLine, SaysThatTheBusCannotBeReached)
{
    ChildProcess process(Simulate({"--ts", ZVIPTV_SAMPLE_FILE}),
                         {{"DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/no/such/socket"}});
    EXPECT_EQ(EndOf(process), (ExitStatus{1, 0}));
    EXPECT_THAT(process.Errors(), HasSubstr("the system bus cannot be reached"));
}

TEST(CommandLine, PassesTheCommandsStatusOn)
{
    ChildProcess process(
        Simulate({"--ts", ZVIPTV_SAMPLE_FILE, "--", "sh", "-c", "echo $DBUS_SYSTEM_BUS_ADDRESS; exit 7"}));
    EXPECT_EQ(EndOf(process), (ExitStatus{7, 0}));
    EXPECT_THAT(process.Output(), StartsWith("unix:path="));
}

TEST(CommandLine, RunsTheCommandWhenTheServiceAnswers)
{
    ChildProcess process(
        Simulate({"--ts", ZVIPTV_SAMPLE_FILE, "--", "dbus-send", "--system", "--print-reply",
                  "--dest=org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus.NameHasOwner",
                  "string:org.corvel.zviptvapi.dbushelper"}));
    EXPECT_EQ(EndOf(process), (ExitStatus{0, 0})) << process.Errors();
    EXPECT_THAT(process.Output(), HasSubstr("boolean true"));
}

/// Directory of the private bus, from the address that the simulator tells.
std::filesystem::path BusDirectory(std::string const& address)
{
    std::string const path = address.substr(address.find("unix:path=") + 10);
    return std::filesystem::path(path.substr(0, path.find_first_of(",'\n"))).parent_path();
}

TEST(CommandLine, LeavesNothingBehindWhenItIsTold)
{
    for (int const number : {SIGTERM, SIGINT}) {
        ChildProcess process(Simulate({"--ts", ZVIPTV_SAMPLE_FILE, "--bus", "private"}));
        ASSERT_TRUE(process.WaitForOutput("export DBUS_SYSTEM_BUS_ADDRESS='unix:path=", Patience));
        std::filesystem::path const directory = BusDirectory(process.Output());
        EXPECT_TRUE(std::filesystem::exists(directory / "bus"));
        process.Signal(number);
        EXPECT_EQ(EndOf(process), (ExitStatus{0, 0}));
        EXPECT_FALSE(std::filesystem::exists(directory));
    }
}

TEST(CommandLine, EndsTheCommandWhenItIsTerminated)
{
    ChildProcess process(Simulate({"--ts", ZVIPTV_SAMPLE_FILE, "--", "sh", "-c",
                                   "echo $DBUS_SYSTEM_BUS_ADDRESS; echo $$; echo running; exec sleep 1000"}));
    ASSERT_TRUE(process.WaitForOutput("running\n", Patience));
    std::string const output = process.Output();
    auto const command = static_cast<pid_t>(std::stol(output.substr(output.find('\n') + 1)));
    process.Signal(SIGTERM);
    EXPECT_EQ(EndOf(process), (ExitStatus{128 + SIGTERM, 0}));
    EXPECT_NE(kill(command, 0), 0);
    EXPECT_FALSE(std::filesystem::exists(BusDirectory(output)));
}

TEST(CommandLine, HelpsAndTellsItsVersion)
{
    ChildProcess help(Simulate({"--help"}));
    EXPECT_EQ(EndOf(help), (ExitStatus{0, 0}));
    EXPECT_THAT(help.Output(), HasSubstr("--ts"));
    EXPECT_THAT(help.Errors(), IsEmpty());
    ChildProcess version(Simulate({"--version"}));
    EXPECT_EQ(EndOf(version), (ExitStatus{0, 0}));
    EXPECT_EQ(version.Output(), "zviptv-sim 1.0.0\n");
}

} // namespace
} // namespace zviptv::test

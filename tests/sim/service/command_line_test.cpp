// SPDX-License-Identifier: MIT
#include "SimulatorTest.h"
#include "StreamBuilder.h"

#include <gmock/gmock.h>

#include <csignal>
#include <filesystem>
#include <fstream>

namespace zviptv::test {
namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

ExitStatus EndOf(ChildProcess& process)
{
    return process.Wait(Patience).value_or(ExitStatus{-1, -1});
}

std::vector<std::string> Simulate(std::vector<std::string> options)
{
    options.insert(options.begin(), ZVIPTV_SIM);
    return options;
}

TEST(CommandLine, ReportsMistakes)
{
    struct Case
    {
        std::vector<std::string> options;
        int status;
        char const* words;
    };
    std::string const sample = ZVIPTV_SAMPLE_FILE;
    for (Case const& one : std::vector<Case>{
             {{}, 2, "--ts is required\n'zviptv-sim --help' shows more\n"},
             {{"--ts"}, 2, "--ts needs a value\n'zviptv-sim --help' shows more\n"},
             {{"--ts", sample, "--lopp"}, 2, "unknown option '--lopp'\n'zviptv-sim --help' shows more\n"},
             {{"--", "true"}, 2, "--ts is required\n'zviptv-sim --help' shows more\n"},
             {{"--ts", sample, "--speed", "0", "--", "true"},
              2,
              "--speed: '0' is not a speed from 0.01 to 1000\n"},
             {{"--ts", sample, "--ts", sample}, 2, "--ts is given more than once\n"},
             {{"--ts", sample, "--guide", "/no/such", "--list-services"},
              1,
              "cannot load the guide: /no/such: No such file"},
             {{"--ts", "/no/such/file", "--bus", "private"}, 1, "cannot open /no/such/file: No such file"},
             {{"--ts", ZVIPTV_SIM, "--", "true"}, 1, ZVIPTV_SIM " is not a transport stream"},
             {{"--ts", sample, "--program", "7", "--", "true"},
              1,
              ZVIPTV_SAMPLE_FILE " has no programme 7: it has 1"},
             {{"--ts", sample, "--program", "x"},
              2,
              "--program: 'x' is not a programme number, 0 to 65535\n"},
             {{"--ts", sample, "--program", "1.5"}, 2, "--program: '1.5' is not a programme number"},
             {{"--ts", sample, "--speed", "0"}, 2, "--speed: '0' is not a speed from 0.01 to 1000\n"},
             {{"--ts", sample, "--speed", "nan"}, 2, "--speed: 'nan' is not a speed"},
             {{"--ts", sample, "--time", "99999999999"},
              2,
              "--time: '99999999999' is not a number of seconds since 1970"},
             {{"--ts", sample, "--rating-limit", "old"},
              2,
              "--rating-limit: 'old' is not an age in years, 0 to 99\n"},
             {{"--ts", sample, "--die-after", "-1"},
              2,
              "--die-after: '-1' is not a number of seconds, 0.001 to 1000000\n"},
             {{"--ts", sample, "--restart-after", "-1"},
              2,
              "--restart-after: '-1' is not a number of seconds, 0 to 1000000\n"},
             {{"--ts", sample, "--bus", "mine"}, 2, "--bus: 'mine' is neither system nor private\n"},
             {{"--ts", sample, "--pes", "audio,sounds"},
              2,
              "'sounds' is not a kind of PES packet: use audio"},
             {{"--ts", sample, "--bus", "system", "--", "true"},
              2,
              "a command runs on a private bus: leave out --bus system"},
             {{"--ts", sample, "--guide", "/no/such", "--", "true"},
              1,
              "cannot load the guide: /no/such: No such file"},
             {{"--ts", "udp://@239.255.17.9:5000?iface=lo", "--speed", "2", "--", "true"},
              1,
              "udp://@239.255.17.9:5000?iface=lo is live input, which sets its own pace: leave out --speed, "
              "or play a "
              "file"},
             {{"--input", sample, "--follow", "--loop", "--", "true"},
              1,
              ZVIPTV_SAMPLE_FILE " is live input, which sets its own pace: leave out --loop, or play a file"},
             {{"--ts", "udp://@239.255.17.9:5000?iface=lo", "--follow", "--", "true"},
              1,
              "cannot follow udp://@239.255.17.9:5000?iface=lo: --follow is for files and FIFOs; leave it "
              "out\n"},
             {{"--ts", "udp://@239.255.17.9:5000?iface=lo", "--list-services"},
              1,
              "--list-services needs a file: record"},
             {{"--input", "ftp://host/a.ts", "--", "true"},
              1,
              "cannot open ftp://host/a.ts: unknown kind of"},
             {{"--ts", "udp://239.1.1.1", "--", "true"}, 1, "cannot open udp://239.1.1.1: there is no port"},
             {{"--ts", sample, "--input", sample}, 2, "--ts is given more than once\n"},
             {{"--ts", sample, "--", "/no/such/program"}, 127, "cannot run /no/such/program: No such file"},
         }) {
        ChildProcess process(Simulate(one.options));
        EXPECT_EQ(EndOf(process), (ExitStatus{one.status, 0})) << one.words << "\n" << process.Errors();
        EXPECT_THAT(process.Errors(), StartsWith(std::string("zviptv-sim: ") + one.words));
    }
}

TEST(CommandLine, ReportsTheDamagedSectionsOfAStreamWithoutProgrammes)
{
    std::string const path = testing::TempDir() + "damaged-" + std::to_string(getpid()) + ".ts";
    Bytes damaged = MakePmt(1, 0x101, {});
    damaged.back() ^= 1;
    std::string const refused = "zviptv-sim: " + path + " holds no programme: no PMT found";
    for (auto const& [count, words] : std::map<int, std::string>{
             {0, "; play a stream that has a PAT and a PMT\n"},
             {3, ", but 3 damaged sections of PAT, PMT or SDT; record the stream again\n"}}) {
        StreamBuilder builder;
        builder.Section(0, MakePat({{1, 0x1000}})).Null(10);
        for (int i = 0; i < count; ++i) {
            builder.Section(0x1000, damaged);
        }
        Bytes const& stream = builder.Stream();
        std::ofstream(path, std::ios::binary) << std::string(stream.begin(), stream.end());
        ChildProcess process(Simulate({"--ts", path, "--", "true"}));
        EXPECT_EQ(EndOf(process), (ExitStatus{1, 0}));
        EXPECT_EQ(process.Errors(), refused + words);
    }
    std::filesystem::remove(path);
}

TEST(CommandLine, ReportsAnUnreachableBus)
{
    ChildProcess process(Simulate({"--ts", ZVIPTV_SAMPLE_FILE}),
                         {{"DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/no/such/socket"}});
    EXPECT_EQ(EndOf(process), (ExitStatus{1, 0}));
    EXPECT_THAT(
        process.Errors(),
        StartsWith(
            "zviptv-sim: the system bus cannot be reached (Could not connect: No such file or directory): "
            "start it, set DBUS_SYSTEM_BUS_ADDRESS to a bus that runs, or use --bus private\n"));
}

TEST(CommandLine, PassesTheCommandsStatusOn)
{
    ChildProcess process(
        Simulate({"--ts", ZVIPTV_SAMPLE_FILE, "--", "sh", "-c", "echo $DBUS_SYSTEM_BUS_ADDRESS; exit 7"}));
    EXPECT_EQ(EndOf(process), (ExitStatus{7, 0}));
    EXPECT_THAT(process.Output(), StartsWith("unix:abstract="));
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

TEST(CommandLine, EndsOnRequest)
{
    for (int const number : {SIGTERM, SIGINT}) {
        ChildProcess process(Simulate({"--ts", ZVIPTV_SAMPLE_FILE, "--bus", "private"}));
        ASSERT_TRUE(process.WaitForOutput("export DBUS_SYSTEM_BUS_ADDRESS='unix:abstract=", Patience));
        process.Signal(number);
        EXPECT_EQ(EndOf(process), (ExitStatus{0, 0}));
    }
}

TEST(CommandLine, PrintsTheBusInJson)
{
    ChildProcess process(Simulate({"--ts", ZVIPTV_SAMPLE_FILE, "--bus", "private", "--json"}));
    ASSERT_TRUE(process.WaitForOutput("\"event\":\"bus\"}\n", Patience));
    process.Signal(SIGTERM);
    EXPECT_EQ(EndOf(process), (ExitStatus{0, 0}));
    EXPECT_THAT(process.Output(), HasSubstr("{\"address\":\"unix:abstract="));
    EXPECT_THAT(process.Output(), Not(HasSubstr("export")));
}

TEST(CommandLine, EndsWhenTheBusAddressCannotBeWritten)
{
    ChildProcess process(
        {"sh", "-c", "exec \"$0\" --ts \"$1\" --bus private >/dev/full", ZVIPTV_SIM, ZVIPTV_SAMPLE_FILE});
    EXPECT_EQ(EndOf(process), (ExitStatus{1, 0}));
    EXPECT_THAT(process.Errors(), HasSubstr("zviptv-sim: cannot write standard output: check that"));
}

/// The reader reads the line of the bus, and no more.
TEST(CommandLine, EndsWhenTheReaderOfItsJsonLeaves)
{
    ChildProcess process({"bash", "-c",
                          "\"$0\" --json --ts \"$1\" --loop --bus private | head -n 1; exit ${PIPESTATUS[0]}",
                          ZVIPTV_SIM, ZVIPTV_SAMPLE_FILE});
    EXPECT_EQ(EndOf(process), (ExitStatus{1, 0}));
    EXPECT_THAT(process.Output(), EndsWith("\"event\":\"bus\"}\n"));
    EXPECT_THAT(process.Errors(),
                StartsWith("zviptv-sim: cannot write standard output: check that it is open and "
                           "not full, and that its reader still runs\n"));
}

/// As a shell expects of its commands.
TEST(CommandLine, GivesTheCommandTheUsualHandlingOfABrokenPipe)
{
    ChildProcess process(Simulate({"--ts", ZVIPTV_SAMPLE_FILE, "--", "sh", "-c", "kill -PIPE $$"}));
    EXPECT_EQ(EndOf(process), (ExitStatus{128 + SIGPIPE, 0}));
}

TEST(CommandLine, ListsTheServicesOfTheGuide)
{
    ChildProcess file(
        Simulate({"--ts", ZVIPTV_SAMPLE_FILE, "--guide", ZVIPTV_SAMPLE_GUIDE, "--list-services"}));
    EXPECT_EQ(EndOf(file), (ExitStatus{0, 0}));
    EXPECT_EQ(file.Output(), "1  ZV Sample One\n2  ZV Beispiel Zwei\n3  ZV Exemple Trois\n");
    ChildProcess stream(Simulate({"--ts", ZVIPTV_SAMPLE_FILE, "--list-services"}));
    EXPECT_EQ(EndOf(stream), (ExitStatus{0, 0}));
    EXPECT_EQ(stream.Output(), "1  ZV Sample One\n");
    ChildProcess full(
        {"sh", "-c", "exec \"$0\" --ts \"$1\" --list-services >/dev/full", ZVIPTV_SIM, ZVIPTV_SAMPLE_FILE});
    EXPECT_EQ(EndOf(full), (ExitStatus{1, 0}));
}

TEST(CommandLine, ListsNamesWithoutControlCharacters)
{
    std::string const guide = testing::TempDir() + "list-services-" + std::to_string(getpid()) + ".xml";
    std::ofstream(guide) << "<tv><channel id='1'><display-name>a\xc2\x9b\x7f[2Jé</display-name></channel>"
                            "<programme channel='1' start='2026'/></tv>";
    ChildProcess file(Simulate({"--ts", ZVIPTV_SAMPLE_FILE, "--guide", guide, "--list-services"}));
    EXPECT_EQ(EndOf(file), (ExitStatus{0, 0}));
    EXPECT_EQ(file.Output(), "1  a\\xc2\\x9b\\x7f[2Jé\n");
    std::ofstream(guide) << "<\xc2\x9b/>";
    ChildProcess damaged(Simulate({"--ts", ZVIPTV_SAMPLE_FILE, "--guide", guide}));
    EXPECT_EQ(EndOf(damaged), (ExitStatus{1, 0}));
    EXPECT_EQ(damaged.Errors().find('\x9b'), std::string::npos) << damaged.Errors();
    std::remove(guide.c_str());
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
}

TEST(CommandLine, PrintsHelpAndVersion)
{
    ChildProcess help(Simulate({"--help"}));
    EXPECT_EQ(EndOf(help), (ExitStatus{0, 0}));
    EXPECT_THAT(help.Output(), HasSubstr("--ts"));
    EXPECT_THAT(help.Errors(), IsEmpty());
    EXPECT_THAT(help.Output(), Not(HasSubstr(" \n")));
    EXPECT_THAT(help.Output(), Not(HasSubstr("\n\n\n")));
    EXPECT_THAT(help.Output(), Not(EndsWith("\n\n")));
    ChildProcess unheard({"sh", "-c", "exec \"$0\" --help >&-", ZVIPTV_SIM});
    EXPECT_EQ(EndOf(unheard), (ExitStatus{1, 0}));
    EXPECT_EQ(unheard.Errors(),
              "zviptv-sim: cannot write standard output: check that it is open and not full\n");
    ChildProcess version(Simulate({"--version"}));
    EXPECT_EQ(EndOf(version), (ExitStatus{0, 0}));
    EXPECT_EQ(version.Output(), "zviptv-sim 1.1.0\n");
}

} // namespace
} // namespace zviptv::test

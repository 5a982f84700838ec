// SPDX-License-Identifier: MIT
#include "CtlFixture.h"

namespace zviptv::test {
namespace {

using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

/// Without a bus, errors in the command line are reported nevertheless.
CtlResult RunAlone(Words const& arguments)
{
    return RunCtl(arguments, {{"DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/nonexistent/bus"}});
}

TEST(UsageTest, HelpExistsOnEveryLevel)
{
    for (Words const& command : std::vector<Words>{{},
                                                   {"call"},
                                                   {"methods"},
                                                   {"pes"},
                                                   {"caption"},
                                                   {"watch"},
                                                   {"status"},
                                                   {"audio"},
                                                   {"audio", "select"},
                                                   {"guide", "list"}}) {
        Words words = command;
        words.emplace_back("--help");
        CtlResult const result = RunAlone(words);
        EXPECT_EQ(result.code, 0);
        EXPECT_THAT(result.output, HasSubstr("Usage: zviptvctl"));
        EXPECT_EQ(result.errors, "");
    }
}

TEST(UsageTest, HelpHasNoStrayBlanks)
{
    for (Words const& words : std::vector<Words>{
             {"--help-all"}, {"--help"}, {"help"}, {"audio", "--help"}, {"call", "--help"}, {"--version"}}) {
        std::string const text = RunAlone(words).output;
        EXPECT_THAT(text, Not(HasSubstr(" \n"))) << words.front();
        EXPECT_THAT(text, Not(HasSubstr("\n\n\n"))) << words.front();
        EXPECT_THAT(text, Not(testing::EndsWith("\n\n"))) << words.front();
        EXPECT_THAT(text, testing::EndsWith("\n")) << words.front();
    }
}

TEST(UsageTest, HelpThatCannotBeWrittenEndsWithExitCode6)
{
    for (char const* const output : {">&-", ">/dev/full"}) {
        ChildProcess child({"sh", "-c", std::string("exec \"$0\" --help ") + output, ZVIPTVCTL_PATH});
        CtlResult const result = Finish(child);
        EXPECT_EQ(result.code, 6) << output;
        EXPECT_THAT(result.errors, StartsWith("zviptvctl: cannot write standard output")) << output;
    }
}

TEST(UsageTest, AReaderThatClosesThePipeDuringHelpIsNotAFailure)
{
    for (char const* const help : {"--help-all", "--help", "help", "--version", "methods"}) {
        // The reader has closed the pipe before the program writes.
        ChildProcess child({"bash", "-c",
                            ("coproc read -r; reader=$COPROC_PID; exec 3>&\"${COPROC[1]}\"; echo >&3;"
                             " wait $reader; exec \"$0\" \"$1\" >&3"),
                            ZVIPTVCTL_PATH, help});
        CtlResult const result = Finish(child);
        EXPECT_EQ(result.code, 0) << help;
        EXPECT_EQ(result.errors, "") << help;
    }
}

TEST(UsageTest, HelpListsTheExitCodes)
{
    std::string const help = RunAlone({"--help"}).output;
    for (char const* line : {"\n  0  ", "\n  1  ", "\n  2  ", "\n  3  ", "\n  4  ", "\n  5  ", "\n  6  "}) {
        EXPECT_THAT(help, HasSubstr(line));
    }
    EXPECT_THAT(help, HasSubstr("\"languageCode\""));
}

TEST(UsageTest, HelpIsACommand)
{
    EXPECT_EQ(RunAlone({"help"}).output, RunAlone({"--help"}).output);
    EXPECT_EQ(RunAlone({"help", "call"}).output, RunAlone({"call", "--help"}).output);
    CtlResult const help = RunAlone({"help", "guide", "list"});
    EXPECT_EQ(help.code, 0);
    EXPECT_EQ(help.output, RunAlone({"guide", "list", "--help"}).output);
    EXPECT_THAT(help.output, HasSubstr("\n  SERVICE REQUIRED            Id of the service"));
    EXPECT_THAT(help.output,
                HasSubstr("\n  START REQUIRED              Start, in seconds since 1970 (UTC)\n"));
}

TEST(UsageTest, HelpDescribesEveryArgument)
{
    for (Words const& command : std::vector<Words>{{"call"},
                                                   {"audio", "select"},
                                                   {"subtitle", "select"},
                                                   {"ttx", "select"},
                                                   {"captions", "select"},
                                                   {"mute", "audio"},
                                                   {"mute", "video"},
                                                   {"guide", "now"},
                                                   {"guide", "list"},
                                                   {"guide", "find"},
                                                   {"guide", "get"},
                                                   {"guide", "rating"},
                                                   {"guide", "genre"},
                                                   {"guide", "load"}}) {
        Words words = command;
        words.emplace_back("--help");
        std::string const help = RunAlone(words).output;
        EXPECT_THAT(help, HasSubstr("\nPositionals:\n"));
        EXPECT_THAT(help, Not(HasSubstr(" \n")));
    }
}

TEST(UsageTest, Version)
{
    CtlResult const result = RunAlone({"--version"});
    EXPECT_EQ(result.code, 0);
    EXPECT_THAT(result.output, testing::MatchesRegex("zviptvctl [0-9]+\\.[0-9]+\\.[0-9]+\n"));
}

TEST(UsageTest, MethodsAreListedWithoutAService)
{
    CtlResult const methods = RunAlone({"methods"});
    EXPECT_EQ(methods.code, 0);
    EXPECT_THAT(methods.output, StartsWith("IPlayerControl\n  SetCurrentAudioByIndex(int32 index)\n"));
    EXPECT_EQ(RunAlone({"call", "--list"}).output, methods.output);
    Json::Value const json = ParseJson(RunAlone({"methods", "--json"}).output);
    EXPECT_TRUE(json["result"].asBool());
    EXPECT_EQ(json["methods"].size(), 54U);
}

struct Mistake
{
    Words arguments;
    std::string message;
};

void PrintTo(Mistake const& mistake, std::ostream* out)
{
    *out << mistake.message;
}

class MistakeTest : public testing::TestWithParam<Mistake>
{
};

TEST_P(MistakeTest, IsExplainedAndEndsWithExitCode2)
{
    CtlResult const result = RunAlone(GetParam().arguments);
    EXPECT_EQ(result.code, 2);
    EXPECT_THAT(result.errors, StartsWith(GetParam().message));
    EXPECT_EQ(result.output, "");
}

INSTANTIATE_TEST_SUITE_P(
    Lines, MistakeTest,
    testing::Values(
        Mistake{{}, "zviptvctl: a command is required\n'zviptvctl --help' shows more\n"},
        Mistake{{"stauts"}, "zviptvctl: unknown command 'stauts'; did you mean status?\n"},
        Mistake{{"--jsno", "status"}, "zviptvctl: unknown option '--jsno'\n"},
        Mistake{{"status", "now"}, "zviptvctl status: unexpected argument: 'now'\n"},
        Mistake{{"audio", "selct", "1"}, "zviptvctl audio: unknown command 'selct'; did you mean select?\n"},
        Mistake{{"audio", "select"}, "zviptvctl audio select: N is required\n"},
        Mistake{{"pes", "--count"}, "zviptvctl pes: --count needs a value\n"},
        Mistake{{"pes", "--count", "1", "--count", "2"}, "zviptvctl pes: --count is given more than once\n"},
        Mistake{{"audio", "select", "x"},
                "zviptvctl: argument 'N' of 'audio select' is a signed 32-bit number"},
        Mistake{{"mute", "audio", "maybe"}, "zviptvctl: argument 'STATE' of 'mute audio' is 1, true or on"},
        Mistake{{"guide", "now", "-1"},
                "zviptvctl: argument 'SERVICE' of 'guide now' is an unsigned 64-bit number"},
        Mistake{{"captions", "select", "text", "0"},
                "zviptvctl: argument 'TYPE' of 'captions select' is EZVISDBText"},
        Mistake{{"call"}, "zviptvctl: no method is given: 'zviptvctl methods' lists them\n"},
        Mistake{{"call", "GetSTC"}, "zviptvctl: unknown method 'GetSTC'; did you mean GetSTCCount"},
        Mistake{{"call", "SetCurrentTTX", "x"},
                "zviptvctl: argument 'index' of SetCurrentTTX is an unsigned 32-bit number (0 to "
                "4294967295), not "
                "'x'\n"},
        Mistake{{"call", "GetProgram", "1", "65536", "2", "3", "0"},
                "zviptvctl: argument 'eventId' of GetProgram is an unsigned 16-bit number"},
        Mistake{{"call", "GetProgram", "1", "2", "3", "4", "5", "6"},
                "zviptvctl: GetProgram takes 1 argument (index)"},
        Mistake{{"call", "MuteAudio", "on", "--jsno"},
                "zviptvctl: unknown option '--jsno'; see zviptvctl call"},
        Mistake{{"call", "SubscribeForPES"},
                "zviptvctl: SubscribeForPES needs a callback: use 'zviptvctl pes'\n"},
        Mistake{{"call", "UnsubscribeForCaption", "1"},
                "zviptvctl: UnsubscribeForCaption needs a callback: use "
                "'zviptvctl caption'\n"},
        Mistake{{"--profile", "x", "status"},
                "zviptvctl: option '--profile' of zviptvctl is a signed 32-bit number"},
        Mistake{{"pes", "--count", "0"}, "zviptvctl: option '--count' of pes is a number above 0, not '0'\n"},
        Mistake{{"pes", "--pid", "0x2000"},
                "zviptvctl: option '--pid' of pes is an unsigned 13-bit number (0 to 8191), not '0x2000'\n"},
        Mistake{{"help", "audio", "selct"},
                "zviptvctl: unknown command 'selct'; 'zviptvctl help' lists them\n"},
        Mistake{{"pes", "--es", "--out", "file"},
                "zviptvctl: --es writes one elementary stream: add --out FILE and one --pid P\n"},
        Mistake{{"pes", "--es", "--out", "file", "--pid", "1", "--pid", "2"},
                "zviptvctl: --es writes one elementary stream: add --out FILE and one --pid P\n"},
        Mistake{{"pes", "--es", "--pid", "1"},
                "zviptvctl: --es writes one elementary stream: add --out FILE and one --pid P\n"},
        Mistake{{"pes", "--ts", "file", "--out", "file"},
                "zviptvctl: --out and --ts exclude each other: give one of them\n"},
        Mistake{{"caption", "--pid", "1"}, "zviptvctl caption: unknown option '--pid'\n"},
        Mistake{{"watch", "--seconds", "0"},
                "zviptvctl: option '--seconds' of watch is a number of seconds"}));

} // namespace
} // namespace zviptv::test

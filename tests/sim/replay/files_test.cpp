// SPDX-License-Identifier: MIT
#include "ReplayTest.h"

#include <sys/stat.h>

#include <fstream>
#include <sstream>

namespace zviptv::test {
namespace {

using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

class ReplayFiles : public Replaying
{
protected:
    /// The simulator's message about a file that it cannot replay.
    static std::string Refusal(std::string const& path)
    {
        ChildProcess process({ZVIPTV_SIM, "--bus", "private", "--replay", path});
        EXPECT_EQ(process.Wait(Patience), (ExitStatus{1, 0}));
        return process.Errors();
    }

    static std::string ReadFile(std::string const& path)
    {
        std::ostringstream text;
        text << std::ifstream(path, std::ios::binary).rdbuf();
        return text.str();
    }

    void Write(std::string const& bytes) const { std::ofstream(Path(), std::ios::binary) << bytes; }
};

TEST_F(ReplayFiles, OfOtherFormatsAreRefused)
{
    EXPECT_THAT(Refusal("/no/such/file"), HasSubstr("No such file"));
    EXPECT_THAT(Refusal(ZVIPTV_SAMPLE_FILE), StartsWith("zviptv-sim: cannot read '" ZVIPTV_SAMPLE_FILE "'"));
    EXPECT_THAT(Refusal("-"), HasSubstr("it is not a regular file"));
    ASSERT_EQ(mkfifo(Path().c_str(), 0600), 0);
    EXPECT_THAT(Refusal(Path()), HasSubstr("it is not a regular file"));
}

TEST_F(ReplayFiles, WithoutMessagesAreRefused)
{
    Recording().Save();
    EXPECT_THAT(Refusal(Path()), HasSubstr(" has no messages: record while an application uses the service"));
}

TEST_F(ReplayFiles, OfOtherTrafficAreRefused)
{
    MadeMessage foreign;
    foreign.sender = ":1.7";
    foreign.destination = "org.example.Service";
    foreign.path = "/";
    foreign.member = "Hello";
    Recording().Add(0, foreign);
    Recording().Save();
    EXPECT_THAT(Refusal(Path()),
                HasSubstr(" has no messages of the service and its applications: record the system bus, as "
                          "root, while"));
}

TEST_F(ReplayFiles, WithoutAnswersAreRefused)
{
    Recording().Ask(0, "BROADCASTDATA", AskAudio("0"));
    Recording().Save();
    EXPECT_THAT(Refusal(Path()), HasSubstr(" has no answer and no notification of the service: record the"));
}

TEST_F(ReplayFiles, CutShortAreReplayedUpToTheCut)
{
    Recording().Exchange(0, "BROADCASTDATA", AskAudio("0"), Answered("whole"));
    Recording().Exchange(1, "BROADCASTDATA", AskAudio("1"), Answered("cut"));
    Recording().Save();
    std::string const bytes = ReadFile(Path());
    Write(bytes.substr(0, bytes.size() - 9));
    Start({"--replay", Path()});
    Application application;
    application.Announce("BROADCASTDATA");
    auto const ask = [&application](std::string const& index) {
        return application.Ask("BROADCASTDATA",
                               {{"functionname", "GetAudio"}, {"handleID", "256"}, {"index", index}});
    };
    EXPECT_EQ(ask("0").Value("audio"), "whole");
    EXPECT_EQ(ask("1").errorName, "org.corvel.zviptvapi.Error.NotRecorded");
    EXPECT_THAT(End(), HasSubstr("any further"));
}

/// busctl capture truncates long messages by default.
TEST_F(ReplayFiles, WithIncompleteMessagesAreReplayedWithAWarning)
{
    constexpr std::size_t originalLength = 24; // in a block of pcapng
    Recording().Exchange(0, "BROADCASTDATA", AskAudio("0"), Answered("whole"));
    Recording().Save();
    std::size_t const begin = ReadFile(Path()).size();
    Recording().Caption(1, "cut");
    Recording().Save();
    std::string bytes = ReadFile(Path());
    ++bytes.at(begin + originalLength);
    Write(bytes);
    Start({"--replay", Path()});
    Application application;
    application.Announce("BROADCASTDATA");
    EXPECT_EQ(
        application.Ask("BROADCASTDATA", {{"functionname", "GetAudio"}, {"handleID", "256"}, {"index", "0"}})
            .Value("audio"),
        "whole");
    EXPECT_THAT(End(), HasSubstr("1 incomplete message is left out; record again, and if you use busctl "
                                 "capture, add --size=134217728\n"));
}

/// The log escapes what is no text.
TEST_F(ReplayFiles, WithDamagedTextsAreReplayed)
{
    Recording().Ask(0, "BROADCASTDATA", AskAudio("0"));
    Recording().Error(1, "org.example.Error.Broken", "the tuner is broken");
    Recording().Exchange(2, "BROADCASTDATA", AskAudio("1"), Entries({{"result_internal", "\x1b[2J"}}));
    Recording().Save();
    std::string bytes = ReadFile(Path());
    bytes.replace(bytes.find("Broken"), 6, "\xff\x1b[2Jn");
    Write(bytes);
    Start({"--verbose", "--replay", Path()});
    Application application;
    application.Announce("BROADCASTDATA");
    auto const ask = [&application](std::string const& index) {
        return application.Ask("BROADCASTDATA",
                               {{"functionname", "GetAudio"}, {"handleID", "256"}, {"index", index}});
    };
    EXPECT_EQ(ask("0").errorName, "org.freedesktop.DBus.Error.Failed");
    EXPECT_EQ(ask("1").Value("result_internal"), "\x1b[2J");
    std::string const errors = End();
    EXPECT_THAT(errors, HasSubstr(" recorded: the error org.example.Error.\\xff\\x1b[2Jn\n"));
    EXPECT_THAT(errors, HasSubstr(" GetAudio index=1 -> \\x1b[2J ("));
    EXPECT_THAT(errors, Not(HasSubstr("\x1b")));
}

TEST_F(ReplayFiles, OfTwoTelevisionsAreReplayedWithAWarning)
{
    Recording().Exchange(0, "BROADCASTDATA", AskAudio("0"), Answered("one"));
    Recording().Owner(1, ":1.2", ":1.3"); // the next two are of one service after another
    Recording().Exchange(2, "BROADCASTDATA", AskAudio("0"), Answered("again"), ":1.3");
    Recording().Exchange(3, "PLAYERCONTROL", AskAudio("0"), Answered("elsewhere"), ":1.4");
    Replay();
    EXPECT_THAT(End(), Not(HasSubstr("two services")));
    Recording().Exchange(4, "BROADCASTDATA", AskAudio("0"), Answered("other"), ":1.4");
    Replay();
    EXPECT_THAT(End(),
                HasSubstr("zviptv-sim: the recording has two services, :1.3 and :1.4, whose answers are "
                          "mixed: record one television at a time\n"));
}

} // namespace
} // namespace zviptv::test

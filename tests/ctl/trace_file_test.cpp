// SPDX-License-Identifier: MIT
#include "Files.h"
#include "TraceFixture.h"
#include "WaitUntil.h"

#include <fstream>

using namespace zviptv::test;
using testing::HasSubstr;
using testing::Not;

namespace {

class TraceFileTest : public TraceTest
{
protected:
    /// Records two calls and three pushes, of which the bus sees nothing else of the protocol.
    std::string Record(char const* name)
    {
        std::string file = InFolder(name);
        m_service.Answer("MuteAudio", {{"result_internal", "0"}});
        m_service.Answer("GetSTCCount", {{"result_internal", "1"}, {"stcCount", "4711"}});
        Start({"--out", file});
        Request("PLAYERCONTROL", Entries({{"functionname", "MuteAudio"}, {"onoff", "1"}}));
        Request("PLAYERCONTROL", Entries({{"functionname", "GetSTCCount"}, {"a<b\x1b", "&\""}}));
        for (char const* const pid : {"257", "257", "258"}) {
            Push(pid, "1234567890");
        }
        m_recorded = End().output;
        return file;
    }

    std::string m_recorded;
};

} // namespace

TEST_F(TraceFileTest, AFileShowsWhatTheRecordingShowed)
{
    for (char const* const name : {"a.pcapng", "a.pcap"}) {
        CtlResult const result = RunCtl({"trace", "--in", Record(name)}, {{"TZ", "UTC"}});
        EXPECT_EQ(result.code, 0);
        EXPECT_THAT(m_recorded, HasSubstr("GetSTCCount true stcCount=4711"));
        EXPECT_EQ(std::count(result.output.begin(), result.output.end(), '\n'), 7) << result.output;
        EXPECT_THAT(result.errors, HasSubstr("zviptvctl: 7 events of "));
    }
}

TEST_F(TraceFileTest, ATruncatedFileIsShownUpToItsEnd)
{
    std::string const whole = ReadFile(Record("a.pcap"));
    std::ofstream(InFolder("cut.pcap"), std::ios::binary) << whole.substr(0, whole.size() - 3);
    CtlResult const result = RunCtl({"trace", "--in", InFolder("cut.pcap")});
    EXPECT_EQ(result.code, 5);
    EXPECT_THAT(result.output, HasSubstr("PLAYERCONTROL MuteAudio onoff=true\n"));
    EXPECT_THAT(result.errors,
                HasSubstr("zviptvctl: cannot read '" + InFolder("cut.pcap") + "' any further: truncated"));
}

TEST_F(TraceFileTest, OtherFilesAreRefused)
{
    CtlResult const result = RunCtl({"trace", "--in", SAMPLE_PATH});
    EXPECT_EQ(result.code, 5);
    EXPECT_THAT(result.errors,
                HasSubstr("zviptvctl: cannot read '" SAMPLE_PATH "': unknown file format; give a file that"));
    EXPECT_EQ(RunCtl({"trace", "--out", "bus.txt"}).code, 2);
    EXPECT_EQ(RunCtl({"trace", "--in", "x.pcap", "--seconds", "1"}).code, 2);
}

TEST_F(TraceFileTest, StandardInputAndOutputAreFilesToo)
{
    std::string const file = Record("a.pcapng");
    ChildProcess copy({"sh", "-c", "exec " ZVIPTVCTL_PATH " trace --in - --out - <" + file});
    ASSERT_EQ(copy.Wait(patience), (ExitStatus{0, 0})) << copy.Errors();
    EXPECT_EQ(copy.Output(), ReadFile(file));
}

TEST_F(TraceFileTest, AGrowingFileIsFollowed)
{
    std::string const whole = ReadFile(Record("a.pcap"));
    std::string const path = InFolder("growing.pcap");
    std::size_t const half = whole.size() / 2;
    std::ofstream file(path, std::ios::binary);
    file << whole.substr(0, half) << std::flush;
    auto const trace = StartCtl({"trace", "--in", path, "--follow"});
    file << whole.substr(half) << std::flush;
    EXPECT_TRUE(trace->WaitForOutput("pid=0x0102 pts=133200 size=10\n", patience));
    trace->Signal(SIGINT);
    CtlResult const result = Finish(*trace);
    EXPECT_EQ(result.code, 0);
    EXPECT_EQ(std::count(result.output.begin(), result.output.end(), '\n'), 7);
}

TEST_F(TraceFileTest, ASignalLosesNoDiagramOfAFollowedFile)
{
    std::string const file = Record("a.pcap");
    for (int const number : {SIGHUP, SIGTERM, SIGINT}) {
        std::string const page = InFolder("page.html");
        auto const trace = StartCtl({"trace", "--in", file, "--follow", "--out", "-", "--html", page});
        EXPECT_TRUE(trace->WaitForOutput("1234567890", patience));
        trace->Signal(number);
        EXPECT_EQ(Finish(*trace).code, 0);
        EXPECT_NE(ReadFile(page).find("30 bytes"), std::string::npos) << "after signal " << number;
        std::filesystem::remove(page);
    }
}

TEST_F(TraceFileTest, ASecondSignalEndsTheWaitForABusThatHangs)
{
    std::string const file = InFolder("a.pcapng");
    Start({"--out", file, "--svg", InFolder("diagram.svg")});
    Push("257", "1234567890");
    EXPECT_TRUE(
        WaitUntil([&file] { return ReadFile(file).find("1234567890") != std::string::npos; }, patience));
    m_bus.Stop();
    m_trace->Signal(SIGINT);
    EXPECT_TRUE(m_trace->WaitForErrors("waiting for messages in transit; Ctrl-C ends the wait\n", patience));
    m_trace->Signal(SIGINT);
    CtlResult const result = Finish(*m_trace);
    m_bus.Continue();
    EXPECT_EQ(result.code, 0);
    EXPECT_THAT(result.errors,
                HasSubstr("zviptvctl: the last messages are missing: the bus has not delivered them yet\n"));
    EXPECT_THAT(RunCtl({"trace", "--in", file}).output, HasSubstr("size=10\n"));
    EXPECT_THAT(ReadFile(InFolder("diagram.svg")), HasSubstr("PESCB"));
}

/// Such as that of a lost connection to the television.
TEST_F(TraceFileTest, TheEndOfItsTerminalLosesNoDiagram)
{
    for (int const number : {SIGHUP, SIGTERM, SIGINT}) {
        Start({"--html", InFolder("page.html"), "--svg", InFolder("diagram.svg")});
        Push("257", "1234567890");
        m_trace->Signal(number);
        EXPECT_EQ(Finish(*m_trace).code, 0);
        EXPECT_THAT(ReadFile(InFolder("page.html")), HasSubstr("PESCB"));
        EXPECT_THAT(ReadFile(InFolder("diagram.svg")), HasSubstr("PESCB"));
    }
}

TEST_F(TraceFileTest, UnderNohupTheEndOfTheTerminalIsIgnored)
{
    ChildProcess trace({"sh", "-c", "trap '' HUP; exec " ZVIPTVCTL_PATH " trace --seconds 1000"});
    ASSERT_TRUE(trace.WaitForErrors("; Ctrl-C ends it\n", patience));
    trace.Signal(SIGHUP);
    Push("257", "1234567890");
    EXPECT_TRUE(trace.WaitForOutput("size=10\n", patience));
    Push("258", "12345678901");
    EXPECT_TRUE(trace.WaitForOutput("size=11\n", patience));
    trace.Signal(SIGINT);
    EXPECT_EQ(trace.Wait(patience), (ExitStatus{0, 0}));
}

TEST_F(TraceFileTest, AFullDiskEndsARecordingThatStaysReadable)
{
    std::string const file = InFolder("full.pcapng");
    ChildProcess trace(
        {"sh", "-c", "trap '' XFSZ; ulimit -f 16; exec " ZVIPTVCTL_PATH " trace --out " + file});
    ASSERT_TRUE(trace.WaitForErrors("; Ctrl-C ends it\n", patience));
    for (int i = 0; i < 20; ++i) {
        Push("257", std::string(1'000, 'x'));
    }
    EXPECT_EQ(trace.Wait(patience), (ExitStatus{6, 0}));
    EXPECT_THAT(trace.Errors(), HasSubstr("zviptvctl: cannot write '" + file +
                                          "': File too large; what was written before stays readable\n"));
    CtlResult const result = RunCtl({"trace", "--in", file});
    EXPECT_EQ(result.code, 0);
    EXPECT_THAT(result.output, HasSubstr("size=1000\n"));
}

TEST_F(TraceFileTest, AFileThatCannotBeCreatedIsReported)
{
    CtlResult const result = RunCtl({"trace", "--out", InFolder("missing/a.pcap")});
    EXPECT_EQ(result.code, 6);
    EXPECT_EQ(result.errors,
              "zviptvctl: cannot write '" + InFolder("missing/a.pcap") +
                  "': No such file or directory; check that the folder exists and is writable\n");
}

TEST_F(TraceFileTest, ADiagramThatCannotBeCreatedIsReportedAtTheStart)
{
    for (char const* const option : {"--svg", "--html"}) {
        CtlResult const result = RunCtl({"trace", option, InFolder("missing/diagram"), "--seconds", "1"});
        EXPECT_EQ(result.code, 6);
        EXPECT_EQ(result.errors, "zviptvctl: cannot write '" + InFolder("missing/diagram") +
                                     "': No such file or directory\n");
    }
}

TEST_F(TraceFileTest, AnUnreadableFileIsReportedAndChangesNoFile)
{
    std::ofstream(InFolder("a.svg")) << "a drawing";
    std::ofstream(InFolder("a.pcap")) << "a recording";
    CtlResult const result = RunCtl(
        {"trace", "--in", InFolder("missing.pcap"), "--out", InFolder("a.pcap"), "--svg", InFolder("a.svg")});
    EXPECT_EQ(result.code, 5);
    EXPECT_EQ(result.errors,
              "zviptvctl: cannot read '" + InFolder("missing.pcap") +
                  "': No such file or directory; check that the file exists and is readable\n");
    EXPECT_EQ(ReadFile(InFolder("a.svg")), "a drawing");
    EXPECT_EQ(ReadFile(InFolder("a.pcap")), "a recording");
}

TEST_F(TraceFileTest, AFileThatIsReadIsNotOverwritten)
{
    std::string const file = Record("a.pcap");
    std::string const recorded = ReadFile(file);
    std::filesystem::create_symlink(file, InFolder("link.pcap"));
    for (char const* const option : {"--out", "--svg", "--html"}) {
        for (std::string const& name : {file, InFolder("link.pcap")}) {
            CtlResult const result = RunCtl({"trace", "--in", file, option, name});
            EXPECT_EQ(result.code, 2);
            EXPECT_EQ(result.errors, std::string("zviptvctl: ") + option +
                                         " would overwrite the file that --in reads: name another file\n");
            EXPECT_TRUE(ReadFile(file) == recorded) << "the recording was changed";
        }
    }
    CtlResult const result =
        RunCtl({"trace", "--in", file, "--svg", InFolder("a.svg"), "--html", InFolder("./a.svg")});
    EXPECT_EQ(result.code, 2);
    EXPECT_EQ(result.errors, "zviptvctl: --html would overwrite the file of --svg: name another file\n");
}

TEST_F(TraceFileTest, SummaryCountsCallsAndPushes)
{
    std::string const file = Record("a.pcapng");
    CtlResult const text = RunCtl({"trace", "--in", file, "--summary"});
    EXPECT_THAT(text.output, HasSubstr("7 events, "));
    EXPECT_THAT(text.output, HasSubstr("PLAYERCONTROL  MuteAudio    1      "));
    EXPECT_THAT(text.output, HasSubstr("0x0101  2 "));
    EXPECT_THAT(text.output, HasSubstr("messages with problems: 1\n  message "));
    Json::Value const sum = ParseJson(RunCtl({"trace", "--in", file, "--summary", "--json"}).output);
    EXPECT_EQ(sum["events"].asInt(), 7);
    EXPECT_EQ(sum["calls"].size(), 2U);
    EXPECT_EQ(sum["calls"][1]["function"].asString(), "MuteAudio");
    EXPECT_EQ(sum["calls"][1]["calls"].asInt(), 1);
    EXPECT_EQ(sum["calls"][1]["refused"].asInt(), 1);
    EXPECT_EQ(sum["calls"][1]["open"].asInt(), 0);
    EXPECT_GT(sum["calls"][1]["p50"].asInt(), 0);
    EXPECT_EQ(sum["pushes"][0]["pid"].asString(), "0x0101");
    EXPECT_EQ(sum["pushes"][0]["packets"].asInt(), 2);
    EXPECT_EQ(sum["pushes"][0]["bytes"].asInt(), 20);
}

TEST_F(TraceFileTest, DiagramsAreSelfContainedAndEscapeForeignTexts)
{
    std::string const file = Record("a.pcapng");
    CtlResult const result =
        RunCtl({"trace", "--in", file, "--svg", InFolder("a.svg"), "--html", InFolder("a.html")});
    EXPECT_EQ(result.code, 0);
    EXPECT_EQ(result.output, "");
    for (char const* const name : {"a.svg", "a.html"}) {
        std::string text = ReadFile(InFolder(name));
        EXPECT_THAT(text, HasSubstr(">MuteAudio</text>"));
        EXPECT_THAT(text, HasSubstr(">3 packets</text>"));
        EXPECT_THAT(text,
                    HasSubstr("a&lt;b\\x1b=&quot;&amp;\\&quot;&quot; ! unexpected key a&lt;b\\x1b</text>"));
        EXPECT_THAT(text, Not(HasSubstr("a<b")));
        EXPECT_THAT(text, Not(HasSubstr("\x1b")));
        std::string const name_space = "http://www.w3.org/2000/svg";
        text.erase(text.find(name_space), name_space.size());
        EXPECT_THAT(text, Not(HasSubstr("://")));
    }
    ChildProcess xml({"/usr/bin/python3", "-c", "import sys,xml.dom.minidom as m; m.parse(sys.argv[1])",
                      InFolder("a.svg")});
    EXPECT_EQ(xml.Wait(patience), (ExitStatus{0, 0})) << xml.Errors();
}

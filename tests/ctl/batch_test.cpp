// SPDX-License-Identifier: MIT
#include "CtlFixture.h"

#include <sstream>

namespace zviptv::test {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

/// The program with its input.
class BatchTest : public CtlTest
{
protected:
    void Start(Words const& options = {})
    {
        Words words = {"batch"};
        words.insert(words.end(), options.begin(), options.end());
        m_child = StartCtl(words);
    }

    CtlResult Run(std::string const& input, Words const& options = {})
    {
        Start(options);
        m_child->WriteInput(input);
        m_child->CloseInput();
        return Finish(*m_child);
    }

    /// One more command, answered.
    Json::Value Ask(std::string const& line)
    {
        ++m_asked;
        m_child->WriteInput(line + "\n");
        while (Lines(m_child->Output()).size() < m_asked) {
            if (!m_child->WaitForOutput("\"command\":\"" + line + "\"", patience)) {
                ADD_FAILURE() << "no answer to " << line;
                break;
            }
        }
        return ParseJson(Lines(m_child->Output()).back());
    }

    static Words Lines(std::string const& text)
    {
        Words lines;
        std::istringstream stream(text);
        for (std::string line; std::getline(stream, line) && !stream.eof();) {
            lines.push_back(line);
        }
        return lines;
    }

    std::unique_ptr<ChildProcess> m_child;
    std::size_t m_asked = 0;
};

TEST_F(BatchTest, AnswersEachCommandWithALine)
{
    m_service.Answer("GetSTCCount", {{"result_internal", "1"}, {"stcCount", "90000"}});
    CtlResult const result = Run("# a comment\n\ncall GetSTCCount\n   \nmute audio on # aloud\n");
    EXPECT_EQ(result.code, 0);
    EXPECT_EQ(result.errors, "");
    EXPECT_EQ(result.output,
              "{\"command\":\"call GetSTCCount\",\"exitCode\":0,\"result\":true,\"stc\":90000}\n"
              "{\"command\":\"mute audio on # aloud\",\"exitCode\":0,\"result\":true}\n");
}

/// Apart from "command" and "exitCode", it is the output of the command by itself.
TEST_F(BatchTest, AnswersAsTheCommandWithJson)
{
    for (std::string const command : {"methods", "status", "rating", "audio list"}) {
        Json::Value answer = ParseJson(Run(command + "\n").output);
        EXPECT_EQ(answer["command"].asString(), command);
        Words words = {"--json"};
        std::istringstream stream(command);
        for (std::string word; stream >> word;) {
            words.push_back(word);
        }
        CtlResult const alone = RunCtl(words);
        EXPECT_EQ(answer["exitCode"].asInt(), alone.code);
        answer.removeMember("command");
        answer.removeMember("exitCode");
        EXPECT_EQ(answer, ParseJson(alone.output)) << command;
    }
}

TEST_F(BatchTest, UsesOneSession)
{
    EXPECT_EQ(Run("mute audio on\nmute audio off\nmute video on\ncall SetAppID x\n").code, 0);
    EXPECT_EQ(m_service.Requests().size(), 4U);
    EXPECT_EQ(m_service.Announcements().size(), 2U); // y and n
}

TEST_F(BatchTest, WordsAreQuotedAsInAShell)
{
    EXPECT_EQ(Run("call SetAppID 'one \"two\"'\\ three\n").code, 0);
    EXPECT_EQ(m_service.LastRequest().entries,
              Entries({{"functionname", "SetAppID"}, {"AppID", "one \"two\" three"}}));
    EXPECT_EQ(Run("call SetAppID [a,b]\n").code, 0);
    EXPECT_EQ(m_service.LastRequest().entries, Entries({{"functionname", "SetAppID"}, {"AppID", "[a,b]"}}));
}

TEST_F(BatchTest, ReportsABadLineAndContinues)
{
    m_service.Answer("MuteVideo", {{"result_internal", "0"}});
    std::string const withZero{"zero \0 byte\n", 12};
    CtlResult const result = Run("call 'GetSTCCount\n"
                                 "nonsense\n"
                                 "mute audio loud\n"
                                 "mute --loud\n"
                                 "call GetSTC\n"
                                 "pes --count 1\n"
                                 "mute --help\n" +
                                 withZero +
                                 "mute video on\n"
                                 "call MuteVideo 1\n"
                                 "mute audio on\n");
    EXPECT_EQ(result.code, 2); // of the first
    EXPECT_EQ(result.errors, "");
    Words const lines = Lines(result.output);
    ASSERT_EQ(lines.size(), 11U) << result.output;
    std::vector<std::pair<int, std::string>> const expected = {
        {2, "the line cannot be read: "},
        {2, "unknown command 'nonsense' ('zviptvctl --help' shows more)"},
        {2, "argument 'STATE' of 'mute audio' is "},
        {2, "unknown option '--loud' ('zviptvctl mute --help' shows more)"},
        {2, "unknown method 'GetSTC'; did you mean GetSTCCount or "},
        {2, "this command cannot run in a batch; run it by itself"},
        {2, "this command cannot run in a batch; run it by itself"},
        {2, "the line contains a zero byte; remove it"},
        {1, "the service refused to "},
        {1, "the service answered \"false\""},
        {0, ""}};
    for (std::size_t i = 0; i < lines.size(); ++i) {
        Json::Value const answer = ParseJson(lines[i]);
        EXPECT_EQ(answer["exitCode"].asInt(), expected[i].first) << lines[i];
        EXPECT_EQ(answer["result"].asBool(), expected[i].first == 0) << lines[i];
        EXPECT_THAT(answer["error"].asString(), StartsWith(expected[i].second)) << lines[i];
        EXPECT_EQ(answer.isMember("error"), expected[i].first != 0) << lines[i];
    }
}

/// Nothing of a line is left in the next one.
TEST_F(BatchTest, OptionsOfALineApplyToThatLineOnly)
{
    Run("call --list\n--profile 2 mute audio on\nmute audio on\n", {"--id", "7"});
    std::vector<WireMessage> const requests = m_service.Requests();
    ASSERT_EQ(requests.size(), 2U);
    EXPECT_EQ(requests[0].entries,
              Entries({{"functionname", "MuteAudio"}, {"handleID", "519"}, {"onoff", "1"}}));
    EXPECT_EQ(requests[1].entries,
              Entries({{"functionname", "MuteAudio"}, {"handleID", "263"}, {"onoff", "1"}}));
}

TEST_F(BatchTest, AnswersAtOnceAndSurvivesTheLossOfTheService)
{
    Start();
    EXPECT_EQ(Ask("mute audio on")["exitCode"].asInt(), 0);
    EXPECT_EQ(Ask("guide exists")["exitCode"].asInt(), 5); // no value
    m_service.Vanish();
    Json::Value const lost = Ask("mute audio off");
    EXPECT_EQ(lost["exitCode"].asInt(), 3);
    EXPECT_NE(lost["error"].asString(), "");
    FakeService next(m_bus.Address(), [](FakeService& service) {
        service.Answer("ExistXmlForIPG", {{"data", "1"}});
    });
    EXPECT_EQ(Ask("mute video on")["exitCode"].asInt(), 0);
    EXPECT_EQ(Ask("guide exists ")["exitCode"].asInt(), 0);
    m_child->CloseInput();
    EXPECT_EQ(Finish(*m_child).code, 5);
}

TEST_F(BatchTest, ReportsAMissingServiceForEachCommand)
{
    m_service.Vanish();
    CtlResult const result = Run("status\nmethods\nmute audio on\n");
    EXPECT_EQ(result.code, 3);
    Words const lines = Lines(result.output);
    ASSERT_EQ(lines.size(), 3U);
    EXPECT_EQ(ParseJson(lines[0])["exitCode"].asInt(), 3);
    EXPECT_EQ(ParseJson(lines[1])["exitCode"].asInt(), 0);
    EXPECT_THAT(ParseJson(lines[2])["error"].asString(), HasSubstr("no service on this bus"));
}

TEST_F(BatchTest, EndsWhenItsReaderClosesThePipe)
{
    ChildProcess child({"bash", "-c",
                        "yes methods | \"$0\" batch | head -n 1 >/dev/null; exit ${PIPESTATUS[1]}",
                        ZVIPTVCTL_PATH});
    EXPECT_EQ(Finish(child).code, 0);
}

} // namespace
} // namespace zviptv::test

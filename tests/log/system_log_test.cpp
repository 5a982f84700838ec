// SPDX-License-Identifier: MIT
#include "ChildProcess.h"

#include <gmock/gmock.h>

#include <cstdint>
#include <map>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

using namespace zviptv::test;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::MatchesRegex;
using testing::StartsWith;

namespace {

struct Entry
{
    std::string kind;
    std::string datagram;

    /// The value of a journal field, whichever of the journal's two forms it has.
    std::string Field(std::string const& name) const
    {
        std::size_t at = 0;
        while (at < datagram.size()) {
            std::size_t const end = datagram.find('\n', at);
            if (end == std::string::npos) {
                return "(a field without an end)";
            }
            std::string const line = datagram.substr(at, end - at);
            std::size_t const equals = line.find('=');
            std::string const key = line.substr(0, equals);
            std::string value;
            if (equals != std::string::npos) {
                value = line.substr(equals + 1);
                at = end + 1;
            } else {
                std::uint64_t size = 0;
                for (std::size_t i = 8; i > 0; --i) {
                    size = size << 8U | static_cast<unsigned char>(datagram.at(end + i));
                }
                if (datagram.size() - end - 9 <= size) {
                    return "(a field longer than the entry)";
                }
                value = datagram.substr(end + 9, static_cast<std::size_t>(size));
                at = end + 9 + value.size() + 1;
            }
            if (key == name) {
                return value;
            }
        }
        return "(no such field)";
    }
};

void PrintTo(Entry const& entry, std::ostream* out)
{
    *out << entry.kind << ' ' << entry.datagram.substr(0, 400);
}

/// The lines of a program in the system's logs; nothing if namespaces are not permitted.
class SystemLog : public testing::Test
{
protected:
    void Run(std::string const& command, std::map<std::string, std::string> environment = {},
             std::size_t longSize = 0)
    {
        environment.emplace("ZV_IPTV_LOG", "system");
        ChildProcess child({LOG_PROBE, command, std::to_string(longSize)}, environment);
        std::optional<ExitStatus> const status = child.Wait(std::chrono::seconds(60));
        ASSERT_TRUE(status);
        if (status->code == 77) {
            GTEST_SKIP() << "cannot replace the log sockets for this test: " << child.Errors();
        }
        ASSERT_EQ(*status, ExitStatus({0, 0}));
        m_errors = child.Errors();
        Parse(child.Output());
    }

    void Parse(std::string const& output)
    {
        for (std::size_t at = 0; at < output.size();) {
            std::size_t const end = output.find('\n', at);
            ASSERT_NE(end, std::string::npos) << output;
            std::string const head = output.substr(at, end - at);
            std::size_t const blank = head.find(' ');
            std::size_t const size = std::stoul(head.substr(blank + 1));
            m_entries.push_back({head.substr(0, blank), output.substr(end + 1, size)});
            at = end + 1 + size + 1;
        }
    }

    std::vector<std::string> Syslog() const
    {
        std::vector<std::string> lines;
        for (Entry const& entry : m_entries) {
            EXPECT_EQ(entry.kind, "syslog");
            lines.push_back(entry.datagram);
        }
        return lines;
    }

    std::vector<Entry> m_entries;
    std::string m_errors;
};

/// A line of /dev/log: priority, time, program and text.
auto SyslogLine(std::string const& priority, std::string const& text)
{
    return MatchesRegex("<" + priority +
                        ">[^:]+:[0-9]+:[0-9]+ log_probe: ZV_IPTV_API: log_probe\\.cpp: "
                        "WriteLines\\([0-9]+\\) > " +
                        text);
}

TEST_F(SystemLog, WithoutJournalSyslogGetsEveryLine)
{
    ASSERT_NO_FATAL_FAILURE(Run("syslog"));
    if (IsSkipped()) {
        return;
    }
    EXPECT_THAT(Syslog(), ElementsAre(SyslogLine("15", "a debug line"),
                                      SyslogLine("14", "an info line, 100% of it: 50%s%n"),
                                      SyslogLine("11", "an error line\n?"), SyslogLine("14", "")));
    EXPECT_EQ(m_errors, "");
}

TEST_F(SystemLog, SyslogGetsLongLinesWhole)
{
    ASSERT_NO_FATAL_FAILURE(Run("syslog", {}, 100000));
    if (IsSkipped()) {
        return;
    }
    ASSERT_EQ(m_entries.size(), 1U);
    EXPECT_THAT(m_entries[0].datagram, EndsWith(") > " + std::string(100000, 'x')));
}

TEST_F(SystemLog, TheJournalGetsStructuredFieldsAndSyslogNothing)
{
    ASSERT_NO_FATAL_FAILURE(Run("journal"));
    if (IsSkipped()) {
        return;
    }
    ASSERT_EQ(m_entries.size(), 4U);
    std::vector<std::string> priorities;
    std::vector<std::string> messages;
    for (Entry const& entry : m_entries) {
        EXPECT_EQ(entry.kind, "journal");
        EXPECT_EQ(entry.Field("SYSLOG_IDENTIFIER"), "ZV_IPTV_API");
        EXPECT_EQ(entry.Field("CODE_FILE"), "log_probe.cpp");
        EXPECT_EQ(entry.Field("CODE_FUNC"), "WriteLines");
        EXPECT_THAT(entry.Field("CODE_LINE"), MatchesRegex("[1-9][0-9]*"));
        std::string const prefix = "log_probe.cpp: WriteLines(" + entry.Field("CODE_LINE") + ") > ";
        EXPECT_THAT(entry.Field("MESSAGE"), StartsWith(prefix));
        messages.push_back(entry.Field("MESSAGE").substr(prefix.size()));
        priorities.push_back(entry.Field("PRIORITY"));
    }
    EXPECT_THAT(priorities, ElementsAre("7", "6", "3", "6"));
    EXPECT_THAT(messages,
                ElementsAre("a debug line", "an info line, 100% of it: 50%s%n", "an error line\n", ""));
}

TEST_F(SystemLog, TheJournalGetsLongLinesWhole)
{
    ASSERT_NO_FATAL_FAILURE(Run("journal", {}, 3000000));
    if (IsSkipped()) {
        return;
    }
    ASSERT_EQ(m_entries.size(), 1U);
    EXPECT_EQ(m_entries[0].kind, "journal");
    EXPECT_TRUE(m_entries[0].Field("MESSAGE").find(std::string(3000000, 'x')) != std::string::npos);
}

TEST_F(SystemLog, LinesThatAJournalDoesNotReadAreDroppedAndCounted)
{
    ASSERT_NO_FATAL_FAILURE(Run("full-journal"));
    if (IsSkipped()) {
        return;
    }
    ASSERT_GE(m_entries.size(), 4U);
    std::size_t const taken = m_entries.size() - 3;
    EXPECT_LT(taken, 20001U);
    std::size_t const last = m_entries.size() - 1;
    EXPECT_THAT(m_entries[last - 2].Field("MESSAGE"), EndsWith(" > read again"));
    EXPECT_EQ(m_entries[last - 1].Field("MESSAGE"), std::to_string(20001 - taken) + " log lines dropped");
    EXPECT_THAT(m_entries[last].Field("MESSAGE"), EndsWith(" > and again"));
}

TEST_F(SystemLog, ReconnectsToTheJournal)
{
    ASSERT_NO_FATAL_FAILURE(Run("new-journal"));
    if (IsSkipped()) {
        return;
    }
    ASSERT_EQ(m_entries.size(), 4U);
    EXPECT_THAT(m_entries[0].Field("MESSAGE"), EndsWith(" > to the first"));
    EXPECT_THAT(m_entries[1].Field("MESSAGE"), EndsWith(" > to the second"));
    EXPECT_EQ(m_entries[2].kind, "syslog");
    EXPECT_THAT(m_entries[2].datagram, EndsWith(" > to none"));
    EXPECT_EQ(m_entries[3].kind, "journal");
    EXPECT_THAT(m_entries[3].Field("MESSAGE"), EndsWith(" > to the last"));
}

TEST_F(SystemLog, WritesNothingToAReusedDescriptor)
{
    ASSERT_NO_FATAL_FAILURE(Run("closed-journal"));
    if (IsSkipped()) {
        return;
    }
    ASSERT_EQ(m_entries.size(), 2U);
    EXPECT_THAT(m_entries[1].Field("MESSAGE"), EndsWith(" > for the journal alone"));
    EXPECT_EQ(m_entries[1].kind, "journal");
}

TEST_F(SystemLog, UnknownWordsAreReportedBeforeTheLines)
{
    ASSERT_NO_FATAL_FAILURE(Run("journal", {{"ZV_IPTV_LOG", "stdout"}, {"ZV_IPTV_LOG_LEVEL", "loud"}}));
    if (IsSkipped()) {
        return;
    }
    ASSERT_EQ(m_entries.size(), 6U);
    EXPECT_THAT(m_entries[0].Field("MESSAGE"), HasSubstr("ZV_IPTV_LOG=stdout"));
    EXPECT_THAT(m_entries[1].Field("MESSAGE"), HasSubstr("ZV_IPTV_LOG_LEVEL=loud"));
    for (std::size_t const complaint : {0U, 1U}) {
        EXPECT_EQ(m_entries[complaint].Field("PRIORITY"), "3");
        EXPECT_EQ(m_entries[complaint].Field("SYSLOG_IDENTIFIER"), "ZV_IPTV_API");
        EXPECT_THAT(m_entries[complaint].Field("MESSAGE"),
                    MatchesRegex("[A-Za-z]+\\.cpp: [A-Za-z]+\\([0-9]+\\) > .*"));
    }
}

TEST_F(SystemLog, ReceivesNothingIfTheEnvironmentSelectsAnother)
{
    ASSERT_NO_FATAL_FAILURE(Run("journal", {{"ZV_IPTV_LOG", "none"}}));
    EXPECT_THAT(m_entries, testing::IsEmpty());
    if (IsSkipped()) {
        return;
    }
    ASSERT_NO_FATAL_FAILURE(Run("journal", {{"ZV_IPTV_LOG", "stderr"}}));
    EXPECT_THAT(m_entries, testing::IsEmpty());
    EXPECT_THAT(m_errors, StartsWith("ZV_IPTV_API debug: "));
}

TEST_F(SystemLog, NoneAlsoSilencesTheReport)
{
    ASSERT_NO_FATAL_FAILURE(Run("journal", {{"ZV_IPTV_LOG", "none"}, {"ZV_IPTV_LOG_LEVEL", "loud"}}));
    EXPECT_THAT(m_entries, testing::IsEmpty());
}

} // namespace

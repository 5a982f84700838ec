// SPDX-License-Identifier: MIT
#include "Crowd.h"
#include "Files.h"
#include "Terminal.h"

#include <set>

namespace zviptv::test {
namespace {

using testing::HasSubstr;
using testing::Not;

/// The simulator whose standard error is a terminal.
class StatusLine : public Crowd
{
protected:
    void PlayOnTerminal(DensePlan const& plan, std::vector<std::string> const& options)
    {
        std::string const path = m_bus.Directory() + "/dense.ts";
        WriteDenseStream(path, plan);
        std::vector<std::string> command{"sh",       "-c",    "exec \"$0\" \"$@\" 2>\"$TERMINAL\"",
                                         ZVIPTV_SIM, "--bus", "system",
                                         "--ts",     path,    "--loop"};
        command.insert(command.end(), options.begin(), options.end());
        m_simulator.emplace(command, std::map<std::string, std::string>{{"TERMINAL", m_terminal.Name()}});
        ASSERT_TRUE(m_watcher.WaitForOwner("org.corvel.zviptvapi.dbushelper", true));
    }

    /// True when the terminal shows it in time.
    bool Shows(std::string const& pattern)
    {
        auto const deadline = std::chrono::steady_clock::now() + Patience;
        while (!testing::Value(m_shown, testing::ContainsRegex(pattern))) {
            if (std::chrono::steady_clock::now() >= deadline) {
                return false;
            }
            m_shown += m_terminal.Read(std::chrono::milliseconds(100));
        }
        return true;
    }

    Terminal m_terminal{200};
    std::string m_shown;
};

void Subscribe(Application& application)
{
    application.Announce("IPTVDATASUBSCRIBER");
    application.Ask("IPTVDATASUBSCRIBER", {{"functionname", "requestPESCB"}, {"on", "1"}});
}

TEST_F(StatusLine, ShowsClientsSubscribersRateAndDrops)
{
    PlayOnTerminal({50, 1500, 4}, {"--pes", "video"});
    EXPECT_TRUE(Shows("0 clients, 0 subscribers, 0 packets/s, 0 dropped")) << m_shown;
    Application first;
    first.Announce("PLAYERCONTROL");
    Application second;
    Subscribe(second);
    // 50 pictures a second; a loaded machine gives some of them a little later.
    EXPECT_TRUE(Shows("\r\x1b\\[K2 clients, 1 subscriber, (4[5-9]|5[0-5]) packets/s, 0 dropped")) << m_shown;
    Application third;
    Subscribe(third);
    EXPECT_TRUE(Shows("3 clients, 2 subscribers, (9[0-9]|10[0-9]|110) packets/s, 0 dropped")) << m_shown;
}

TEST_F(StatusLine, MakesRoomForOtherLines)
{
    PlayOnTerminal({}, {});
    ASSERT_TRUE(Shows("0 dropped"));
    Application application;
    application.Announce("PLAYERCONTROL");
    application.Ask("PLAYERCONTROL", {{"functionname", "MuteAudio"}, {"handleID", "256"}, {"onoff", "1"}});
    EXPECT_TRUE(Shows("0 dropped\r\x1b\\[K:1\\.[0-9]+ PLAYERCONTROL handle=256 MuteAudio onoff=1 -> 1 "
                      "\\([0-9]+\\.[0-9][0-9] ms\\)\r?\n"))
        << m_shown;
}

TEST_F(StatusLine, ShowsWhatIsMutedOrLocked)
{
    PlayOnTerminal({}, {"--lock-service"});
    Application application;
    application.Announce("PLAYERCONTROL");
    application.Ask("PLAYERCONTROL", {{"functionname", "MuteAudio"}, {"onoff", "1"}});
    application.Ask("PLAYERCONTROL", {{"functionname", "MuteVideo"}, {"onoff", "1"}});
    EXPECT_TRUE(Shows("0 dropped, audio muted, video muted, locked")) << m_shown;
}

TEST_F(StatusLine, ShowsWhatAStoppedApplicationLost)
{
    PlayOnTerminal({50, 60000, 2}, {"--pes", "video", "--speed", "4"});
    Application standing;
    standing.Peer().SetHandler([](WireMessage const&) { return WireAnswer::Nothing(); });
    Subscribe(standing);
    EXPECT_TRUE(Shows("1 client, 1 subscriber, 0 packets/s, [1-9][0-9]* dropped")) << m_shown;
}

/// In a file, or a pipe, it would be a line that never ends.
TEST_F(Crowd, NoStatusLineWithoutATerminal)
{
    ChildProcess& simulator = Play({});
    Application application;
    Subscribe(application);
    ASSERT_TRUE(
        application.WaitForPackets(std::to_string(DenseVideo), 35)); // longer than three status periods
    simulator.Signal(SIGTERM);
    EXPECT_EQ(simulator.Wait(Patience), (ExitStatus{0, 0}));
    EXPECT_THAT(simulator.Errors(), HasSubstr("requestPESCB"));
    EXPECT_THAT(simulator.Errors(), Not(HasSubstr("packets/s")));
    EXPECT_THAT(simulator.Errors(), Not(HasSubstr("\r")));
}

/// The members of an object as the page documents them: the first column of the table below `heading`.
std::set<std::string> Documented(std::string const& heading)
{
    std::string const page = ReadFile(ZVIPTV_SIMULATOR_PAGE);
    std::size_t const begin = page.find(heading);
    std::string const text = page.substr(begin, page.find("\n\n", page.find("\n|", begin)) - begin);
    std::string const row = "\n| `";
    std::set<std::string> members;
    for (std::size_t at = 0; (at = text.find(row, at)) != std::string::npos;) {
        at += row.size();
        members.insert(text.substr(at, text.find('`', at) - at));
    }
    return members;
}

std::set<std::string> MembersOf(Json::Value const& object)
{
    auto const names = object.getMemberNames();
    return {names.begin(), names.end()};
}

TEST_F(Crowd, JsonHasTheDocumentedMembers)
{
    ChildProcess& simulator =
        Play({}, {"--json", "--fault", "MuteVideo=error", "--fault", "MuteVideo=delay:1"});
    Application application;
    Subscribe(application);
    application.Announce("PLAYERCONTROL");
    application.Ask("PLAYERCONTROL", {{"functionname", "MuteAudio"}, {"handleID", "256"}, {"onoff", "1"}});
    EXPECT_EQ(application.Ask("PLAYERCONTROL", {{"functionname", "MuteVideo"}, {"onoff", "1"}}).kind,
              WireKind::Error);
    ASSERT_TRUE(WaitForSubscribers(1));
    simulator.Signal(SIGTERM);
    ASSERT_EQ(simulator.Wait(Patience), (ExitStatus{0, 0}));

    std::set<std::string> kinds;
    std::set<std::string> faults;
    for (Json::Value const& line : JsonLines(simulator.Output())) {
        std::string const kind = line["event"].asString();
        kinds.insert(kind);
        if (kind == "request") {
            faults.insert(line["fault"].asString());
            EXPECT_EQ(line["reply"].isNull(), line["request"]["functionname"] == "MuteVideo");
        }
        EXPECT_EQ(MembersOf(line), Documented("### Line of a " + kind)) << line.toStyledString();
        if (kind == "status") {
            EXPECT_EQ(MembersOf(line["input"]), Documented("### `input`"));
        }
        for (Json::Value const& subscriber : line["subscribers"]) {
            EXPECT_EQ(MembersOf(subscriber), Documented("### One of `subscribers`"));
        }
    }
    EXPECT_EQ(kinds, (std::set<std::string>{"request", "status"}));
    EXPECT_EQ(faults, (std::set<std::string>{"", "delay:1 error"}));
}

TEST_F(Crowd, JsonReportsRequestsAndReplies)
{
    ChildProcess& simulator = Play({}, {"--json", "--fault", "MuteVideo=error"});
    Application application;
    application.Announce("PLAYERCONTROL");
    for (char const* const function : {"MuteAudio", "MuteVideo"}) {
        application.Ask("PLAYERCONTROL", {{"functionname", function}, {"handleID", "256"}, {"onoff", "1"}});
    }
    ASSERT_TRUE(simulator.WaitForOutput("\"MuteVideo\"", Patience));
    simulator.Signal(SIGTERM);
    ASSERT_EQ(simulator.Wait(Patience), (ExitStatus{0, 0}));
    std::vector<Json::Value> requests;
    for (Json::Value const& line : JsonLines(simulator.Output())) {
        if (line["event"] == "request") {
            requests.push_back(line);
        }
    }
    ASSERT_EQ(requests.size(), 2U);
    for (Json::Value const& request : requests) {
        EXPECT_EQ(request["application"], application.Peer().Name());
        EXPECT_EQ(request["endpoint"], "PLAYERCONTROL");
        EXPECT_EQ(request["request"]["onoff"], "1");
        EXPECT_GE(request["microseconds"].asInt64(), 0);
    }
    EXPECT_EQ(requests[0]["request"]["functionname"], "MuteAudio");
    EXPECT_EQ(requests[0]["reply"]["result_internal"], "1");
    EXPECT_EQ(requests[0]["fault"], "");
    EXPECT_EQ(requests[1]["request"]["functionname"], "MuteVideo");
    EXPECT_TRUE(requests[1]["reply"].isNull());
    EXPECT_EQ(requests[1]["fault"], "error");
}

} // namespace
} // namespace zviptv::test

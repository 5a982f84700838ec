// SPDX-License-Identifier: MIT
#include "../guide/GuideGenerator.h"
#include "SimulatorTest.h"
#include "WaitUntil.h"

#include <csignal>
#include <cstdio>
#include <fstream>

namespace zviptv::test {
namespace {

constexpr std::uint64_t BigGuide = 40'000'000; // bytes; takes many times as long as the requests meanwhile

std::string Clone(std::string const& path)
{
    Application application;
    application.Announce(GuideWord);
    WireMessage const reply = application.Ask(GuideWord, {{"functionname", "CloneUSBToTV"}, {"path", path}});
    EXPECT_EQ(reply.Value("result_internal"), reply.Value("data"));
    return reply.Value("data");
}

/// The simulator with a small guide, and a big one to load.
class GuideLoading : public Simulator
{
protected:
    void Begin(std::vector<std::string> options = {})
    {
        options.insert(options.end(), {"--ts", ZVIPTV_SAMPLE_FILE, "--loop", "--guide", ZVIPTV_SAMPLE_GUIDE});
        Start(options);
        m_application.Announce(GuideWord);
    }

    /// Makes the big guide the next one that the service loads.
    void StartLoading()
    {
        WriteGuide(m_big, BigGuide);
        Application leaving;
        std::string const service = leaving.Announce(GuideWord);
        leaving.Peer().CallWithoutReply(
            {service, ChannelPath(GuideWord), "org.corvel.zviptvapi.DbusCommunication", "Send"},
            Entries({{"functionname", "CloneUSBToTV"}, {"path", m_big}}));
        leaving.Peer().Sync();
    }

    /// Requests a guide that cannot be loaded. While another one is being loaded, the service does not try.
    bool IsLoading()
    {
        std::string const path = "/no/such/guide" + std::to_string(++m_probes);
        EXPECT_EQ(Clone(path), "0");
        EXPECT_TRUE(m_simulator->WaitForErrors(path + ": ", Patience));
        return m_simulator->Errors().find("not loading " + path + ": another guide is being loaded") !=
               std::string::npos;
    }

    /// Of a service that only the guide of this test's file has.
    std::string ProgrammesOf200()
    {
        return m_application
            .Ask(GuideWord, {{"functionname", "GetProgramListSize"},
                             {"inID", "200"},
                             {"startTime", "0"},
                             {"duration", "4294967295"}})
            .Value("data");
    }

    std::string const m_big = m_bus.Directory() + "/big.xml";
    Application m_application;
    int m_probes = 0;
};

TEST_F(GuideLoading, OtherRequestsAreAnsweredMeanwhile)
{
    Begin();
    StartLoading();
    ASSERT_TRUE(IsLoading());
    EXPECT_EQ(ProgrammesOf200(), "0") << "the guide so far answers";
    Application player;
    player.Announce("PLAYERCONTROL");
    EXPECT_EQ(Number(player.Ask("PLAYERCONTROL", {{"functionname", "GetSourceState"}}), "sourcestate"), "2");
    ASSERT_TRUE(IsLoading()) << "all that happened meanwhile";
    // The requesting application has left, and the guide is loaded nevertheless.
    EXPECT_TRUE(WaitUntil([this] { return ProgrammesOf200() != "0"; }, Patience));
    EXPECT_FALSE(IsLoading());
}

TEST_F(GuideLoading, RequestsForTheSameFileShareOneLoading)
{
    Begin();
    StartLoading();
    ASSERT_TRUE(IsLoading());
    EXPECT_EQ(Clone(m_big), "1");
    EXPECT_FALSE(IsLoading());
    EXPECT_NE(ProgrammesOf200(), "0");
    EXPECT_EQ(Clone(ZVIPTV_SAMPLE_GUIDE), "1") << "and then another one";
    EXPECT_EQ(ProgrammesOf200(), "0");
}

TEST_F(GuideLoading, AFileThatCannotBeLoadedChangesNothing)
{
    Begin();
    WriteGuide(m_big, BigGuide);
    std::ofstream(m_big, std::ios::app) << "</surplus>";
    EXPECT_EQ(Clone(m_big), "0");
    EXPECT_TRUE(m_simulator->WaitForErrors("zviptv-sim: cannot load the guide: " + m_big + ":", Patience));
    EXPECT_TRUE(m_simulator->WaitForErrors("; the previous one stays loaded\n", Patience));
    EXPECT_EQ(m_application.Ask(GuideWord, {{"functionname", "ExistXmlForIPG"}}).Value("data"), "1");
    EXPECT_EQ(ProgrammesOf200(), "0");
}

TEST_F(GuideLoading, EndsOrderlyMeanwhile)
{
    Begin();
    StartLoading();
    ASSERT_TRUE(IsLoading());
    m_simulator->Signal(SIGTERM);
    EXPECT_EQ(m_simulator->Wait(Patience), (ExitStatus{0, 0}));
}

TEST_F(GuideLoading, HasTheFaultsOfOtherRequests)
{
    Begin({"--fault", "CloneUSBToTV=error"});
    WireMessage const reply =
        m_application.Ask(GuideWord, {{"functionname", "CloneUSBToTV"}, {"path", ZVIPTV_SAMPLE_GUIDE}});
    EXPECT_EQ(reply.errorName, "org.corvel.zviptvapi.Error.Injected");
}

/// Programmes with long texts: a list of them all has more bytes than a message carries.
TEST_F(GuideLoading, AListEndsWithTheMessage)
{
    Start({"--ts", ZVIPTV_SAMPLE_FILE, "--loop"});
    m_application.Announce(GuideWord);
    std::string const path = m_bus.Directory() + "/long.xml";
    std::ofstream file(path);
    file << "<tv>";
    std::string const text(60'000, 'x');
    for (int hour = 0; hour < 600; ++hour) { // 36 MB
        char start[32];
        std::snprintf(start, sizeof start, "202603%02d%02d0000", 1 + hour / 24, hour % 24);
        file << "<programme channel='1' start='" << start << "'><title>" << hour << "</title><desc>" << text
             << "</desc></programme>\n";
    }
    file << "</tv>";
    file.close();
    ASSERT_EQ(Clone(path), "1");
    auto const ask = [&](char const* function) {
        return m_application
            .Ask(GuideWord,
                 {{"functionname", function}, {"inID", "1"}, {"startTime", "0"}, {"duration", "4294967295"}})
            .Value("data");
    };
    EXPECT_EQ(ask("GetProgramListSize"), "600");
    std::string const list = ask("GetProgramList");
    EXPECT_LE(list.size(), 32U * 1024 * 1024);
    EXPECT_GT(list.size(), 32U * 1024 * 1024 - 2 * text.size());
    EXPECT_EQ(list.substr(list.size() - 19), "\"translations\":[]}]");
}

} // namespace
} // namespace zviptv::test

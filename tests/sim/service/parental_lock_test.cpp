// SPDX-License-Identifier: MIT
#include "SimulatorTest.h"
#include "WaitUntil.h"

#include <ctime>
#include <fstream>

namespace zviptv::test {
namespace {

constexpr std::time_t Now = 1774735200;

std::string XmltvTime(std::time_t time)
{
    std::tm parts{};
    gmtime_r(&time, &parts);
    char text[32];
    std::strftime(text, sizeof text, "%Y%m%d%H%M%S +0000", &parts);
    return text;
}

/// A guide of films for people of 16 years, one after the other, each of this many seconds.
void WriteFilms(std::string const& path, std::time_t begin, std::time_t seconds, std::time_t count)
{
    std::ofstream file(path);
    file << "<tv>";
    for (std::time_t start = begin; start < begin + count * seconds; start += seconds) {
        file << "<programme channel='1' start='" << XmltvTime(start) << "' stop='"
             << XmltvTime(start + seconds) << "'><title>Film at " << start
             << "</title><rating system='FSK'><value>16</value></rating></programme>\n";
    }
    file << "</tv>";
}

/// The locks that the PIN for one film unlocks.
class LockOfFilms : public Simulator
{
protected:
    void Begin()
    {
        Start({"--ts", ZVIPTV_SAMPLE_FILE, "--loop", "--guide", m_guide, "--time", std::to_string(Now),
               "--rating-limit", "12"});
        m_application.Announce(BroadcastWord);
        EXPECT_TRUE(IsLocked());
        EXPECT_EQ(Number(m_application.Ask(BroadcastWord, {{"functionname", "UnMuteByRatingPin"}}),
                         "result_internal"),
                  "1");
    }

    bool IsLocked()
    {
        return Number(m_application.Ask(BroadcastWord, {{"functionname", "GetRatingLockState"}}),
                      "lockState") == "1";
    }

    std::string Load(std::string const& path)
    {
        return m_application.Ask("IPGUTIL", {{"functionname", "CloneUSBToTV"}, {"path", path}}).Value("data");
    }

    std::string const m_guide = m_bus.Directory() + "/films.xml";
    Application m_application;
};

TEST_F(LockOfFilms, TheNextFilmIsLockedAgain)
{
    WriteFilms(m_guide, Now - 10, 2, 300);
    Begin();
    EXPECT_TRUE(WaitUntil([this] { return IsLocked(); }, Patience));
}

TEST_F(LockOfFilms, AnotherFilmInItsPlaceIsLockedAgain)
{
    WriteFilms(m_guide, Now - 60, 7200, 1);
    Begin();
    EXPECT_FALSE(IsLocked());
    EXPECT_EQ(Load(m_guide), "1");
    EXPECT_FALSE(IsLocked()) << "the same film";
    std::string const other = m_bus.Directory() + "/other.xml";
    WriteFilms(other, Now - 120, 7200, 1);
    EXPECT_EQ(Load(other), "1");
    EXPECT_TRUE(IsLocked());
}

} // namespace
} // namespace zviptv::test

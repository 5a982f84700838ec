// SPDX-License-Identifier: MIT
#include "playback/Player.h"
#include "playback/Selection.h"

#include "../stream/StreamBuilder.h"

#include <gio/gio.h>
#include <gmock/gmock.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>

namespace zviptv::test {
namespace {

using sim::Player;
using sim::Programme;
using testing::StartsWith;

constexpr std::uint16_t Audio = 0x101;
constexpr std::uint16_t Second = 0x201;

/// A player of files that the test makes.
class PlayerOpen : public testing::Test
{
protected:
    PlayerOpen() : m_folder(testing::TempDir() + "player-" + std::to_string(getpid()))
    {
        std::filesystem::create_directory(m_folder);
        StreamBuilder two;
        two.Section(0, MakePat({{1, 0x1000}, {2, 0x1001}}))
            .Section(0x1000, MakePmt(1, Audio, {{0x03, Audio, {0x0A, 4, 'e', 'n', 'g', 0}}}))
            .Section(0x1001, MakePmt(2, Second, {{0x0F, Second, {0x0A, 4, 'd', 'e', 'u', 0}}}));
        for (unsigned i = 0; i < 20; ++i) {
            two.Pcr(Audio, i * 300 * 9000).Pcr(Second, 1'000'000 + i * 300 * 9000);
            two.Pes(Audio, MakePes(1000 + i, Noise(20, i), false, {}, 0xC0));
            two.Pes(Second, MakePes(70'000 + i, Noise(20, i), false, {}, 0xC0));
        }
        Write("two.ts", two);
        StreamBuilder other;
        other.Section(0, MakePat({{1, 0x1000}})).Section(0x1000, MakePmt(1, Audio, {{0x11, Audio, {}}}));
        for (unsigned i = 0; i < 20; ++i) {
            other.Pcr(Audio, 500'000 + i * 300 * 9000);
            other.Pes(Audio, MakePes(5000 + i, Noise(20, 100 + i), false, {}, 0xC0));
        }
        Write("other.ts", other);
        m_player.emplace(sim::PlayerOptions{{Path("two.ts")}, {}, 1000, false}, m_clock,
                         [this](sim::PesPacket const& pes) { m_pids.push_back(pes.pid); });
        m_player->SetProgrammeListener([this](Programme const& next) { m_numbers.push_back(next.number); });
        m_player->SetWakeUp([this] { ++m_wakes; });
    }

    ~PlayerOpen() override
    {
        m_player.reset();
        std::filesystem::remove_all(m_folder);
    }

    std::string Path(std::string const& name) const { return m_folder + "/" + name; }

    void Write(std::string const& name, StreamBuilder const& builder) const
    {
        Bytes const& stream = builder.Stream();
        std::ofstream(Path(name), std::ios::binary) << std::string(stream.begin(), stream.end());
    }

    std::string Open(std::string const& url, bool follow = false)
    {
        std::string outcome = "nothing";
        m_player->Open({url, follow}, [&outcome](std::string const& error) { outcome = error; });
        return outcome;
    }

    void PlayToTheEnd()
    {
        while (m_player->Advance()) {
        }
        EXPECT_EQ(m_player->State(), ZV_SOURCE_STATE_ENDED);
    }

    std::string m_folder;
    sim::SimulatedClock m_clock{1000, {}};
    std::optional<Player> m_player;
    std::vector<int> m_pids;
    std::vector<int> m_numbers;
    int m_wakes = 0;
};

TEST_F(PlayerOpen, ForgetsThePreviousInput)
{
    PlayToTheEnd();
    EXPECT_EQ(m_player->FirstPts(), 1000U);
    m_pids.clear();
    EXPECT_EQ(Open(Path("other.ts")), "");
    EXPECT_EQ(m_wakes, 1);
    EXPECT_EQ(m_numbers, (std::vector<int>{0, 1}));
    EXPECT_EQ(m_player->State(), ZV_SOURCE_STATE_STARTING);
    EXPECT_EQ(m_player->FirstPts(), std::nullopt);
    EXPECT_EQ(m_player->Programmes().size(), 1U);
    EXPECT_EQ(m_player->Current().audio.at(0).codec, sim::AudioCodec::AacLatm);
    EXPECT_EQ(m_player->Counters().url, Path("other.ts"));
    PlayToTheEnd();
    EXPECT_EQ(m_player->FirstPts(), 5000U);
    EXPECT_EQ(m_pids, std::vector<int>(20, Audio));
}

TEST_F(PlayerOpen, ContinuesThePreviousInputAfterAnError)
{
    Write("empty.ts", StreamBuilder());
    Write("null.ts", StreamBuilder().Null(10));
    for (auto const& [url, reason] : std::map<std::string, std::string>{
             {Path("nothing.ts"), "cannot open " + Path("nothing.ts") + ": No such file"},
             {Path("empty.ts"), Path("empty.ts") + " is not a transport stream"},
             {Path("null.ts"), Path("null.ts") + " holds no programme: no PMT found"},
             {"ftp://host/", "cannot open ftp://host/: unknown kind of input 'ftp'"},
             {"udp://@239.1.1.1:1?iface=nosuch0",
              "cannot receive udp://@239.1.1.1:1?iface=nosuch0: there is no"},
             {"http://", "cannot open http://: it is not an address"},
         }) {
        EXPECT_THAT(Open(url), StartsWith(reason));
    }
    EXPECT_THAT(Open("udp://127.0.0.1:5000", true),
                StartsWith("cannot follow udp://127.0.0.1:5000: --follow is for"));
    EXPECT_EQ(m_wakes, 0);
    EXPECT_TRUE(m_numbers.empty());
    EXPECT_EQ(m_player->Counters().url, Path("two.ts"));
    PlayToTheEnd();
    EXPECT_EQ(m_pids.size(), 20U);
}

TEST_F(PlayerOpen, ReportsLaterWhetherHttpCouldBeOpened)
{
    std::optional<std::string> outcome;
    std::optional<std::string> earlier;
    m_player->Open({"http://127.0.0.1:1/", false}, [&](std::string const& error) { earlier = error; });
    EXPECT_FALSE(earlier);
    m_player->Open({"http://127.0.0.1:1/", false}, [&](std::string const& error) { outcome = error; });
    EXPECT_EQ(earlier, "another input was opened meanwhile");
    EXPECT_FALSE(outcome);
    while (!outcome) {
        g_main_context_iteration(nullptr, TRUE);
    }
    EXPECT_THAT(*outcome, StartsWith("cannot open http://127.0.0.1:1/: Could not connect"));
    EXPECT_EQ(m_player->Counters().url, Path("two.ts"));
}

TEST_F(PlayerOpen, LearnsTheProgrammeOfLiveInput)
{
    ASSERT_EQ(mkfifo(Path("fifo").c_str(), 0600), 0);
    EXPECT_EQ(Open(Path("fifo")), "");
    EXPECT_EQ(m_numbers, std::vector<int>{0});
    EXPECT_EQ(m_player->Current().number, 0);
    EXPECT_EQ(m_player->Advance(), std::nullopt);
    EXPECT_EQ(m_player->State(), ZV_SOURCE_STATE_STARTING);
    std::ofstream(Path("fifo"), std::ios::binary)
        << std::ifstream(Path("other.ts"), std::ios::binary).rdbuf();
    EXPECT_EQ(m_player->Advance(), std::nullopt);
    EXPECT_EQ(m_numbers, (std::vector<int>{0, 1}));
    EXPECT_EQ(m_player->State(), ZV_SOURCE_STATE_ENDED);
    EXPECT_EQ(m_pids.size(), 20U);
}

TEST_F(PlayerOpen, SelectsAProgramme)
{
    m_clock.Pause(true); // the whole file lasts two milliseconds
    m_player->Advance();
    EXPECT_TRUE(m_player->SelectProgramme(1)); // it is played already
    EXPECT_TRUE(m_numbers.empty());
    EXPECT_FALSE(m_player->SelectProgramme(3));
    EXPECT_EQ(m_player->Current().number, 1);
    EXPECT_TRUE(m_player->SelectProgramme(2));
    EXPECT_EQ(m_numbers, std::vector<int>{2});
    EXPECT_EQ(m_player->FirstPts(), std::nullopt);
    EXPECT_EQ(m_player->Current().audio.at(0).pid, Second);
    m_pids.clear();
    m_clock.Pause(false);
    PlayToTheEnd();
    EXPECT_THAT(m_pids, testing::Each(Second));
    EXPECT_FALSE(m_pids.empty());
    EXPECT_GE(m_player->FirstPts(), 70'000U);
}

} // namespace
} // namespace zviptv::test

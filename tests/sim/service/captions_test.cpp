// SPDX-License-Identifier: MIT
#include "SimulatorTest.h"

#include "../stream/CaptionText.h"
#include "../stream/NaiveReassembly.h"

namespace zviptv::test {
namespace {

using testing::ElementsAre;

/// The sample's captions, from applications that subscribed to them.
class Captions : public Simulator
{
protected:
    void Begin(std::vector<std::string> options = {})
    {
        std::vector<std::string> all{"--ts", ZVIPTV_SAMPLE_FILE, "--loop", "--speed", "20"};
        all.insert(all.end(), options.begin(), options.end());
        Start(all);
        m_application.Announce("IPTVDATASUBSCRIBER");
        m_application.Ask("IPTVDATASUBSCRIBER", {{"functionname", "requestCaptionCB"}, {"on", "1"}});
    }

    /// The data of the given number of first captions of a type, oldest first.
    std::vector<std::string> Wait(std::string const& type, std::size_t count)
    {
        auto const isWanted = [&type](WireMessage const& message) {
            return message.Value("functionname") == "CaptionCB" && message.Value("captionType") == type;
        };
        EXPECT_TRUE(m_application.Peer().Received().WaitForCount(isWanted, count));
        std::vector<std::string> captions;
        for (WireMessage const& message : m_application.Peer().Received().All()) {
            if (isWanted(message) && captions.size() < count) {
                EXPECT_EQ(message.Value("captionDataSize"),
                          std::to_string(message.Value("captionData").size()));
                captions.push_back(message.Value("captionData"));
            }
        }
        return captions;
    }

    Application m_application;
};

/// The text of a caption, page by page; "blank" if it erases the text.
std::string TeletextShown(std::string const& data)
{
    std::string shown;
    for (TeletextRow const& row : ReadTeletext(Bytes(data.begin(), data.end()))) {
        if (row.row != 0) {
            shown += (row.page == 0x888 ? "E " : row.page == 0x889 ? "D " : "? ") + row.text + ".";
        }
    }
    return shown.empty() ? "blank" : shown;
}

TEST_F(Captions, OfTeletextAreTheRowsOfItsSubtitlePages)
{
    Begin();
    std::vector<std::string> shown;
    for (std::string const& data : Wait("4", 20)) { // two passes, from any caption on
        shown.push_back(TeletextShown(data));
    }
    auto const first = std::find(shown.begin(), shown.end(), "E One.D Eins.");
    ASSERT_GE(shown.end() - first, 10);
    EXPECT_THAT(std::vector<std::string>(first, first + 10),
                ElementsAre("E One.D Eins.", "blank", "E Two.D Zwei.", "blank", "E Three.D Drei.", "blank",
                            "E Four.D Vier.", "blank", "E Five.D Fünf.", "blank"));
}

TEST_F(Captions, OfAribAreTheWholeDataField)
{
    Begin();
    std::vector<std::string> sent;
    for (Bytes const& pes : ReassembleNaively(ReadWholeFile(ZVIPTV_SAMPLE_FILE), 0x105)) {
        Bytes const field = PesPayload(pes);
        sent.emplace_back(field.begin(), field.end());
    }
    std::vector<std::string> const got = Wait("5", 2 * sent.size());
    bool isPlaying = false;
    for (std::size_t start = 0; start < sent.size() && !isPlaying; ++start) {
        isPlaying = true;
        for (std::size_t i = 0; i < got.size(); ++i) {
            isPlaying = isPlaying && got[i] == sent[(start + i) % sent.size()];
        }
    }
    EXPECT_TRUE(isPlaying) << "the captions of the stream in their order, from any of them on";
}

/// `--pes` is about packets.
TEST_F(Captions, ArriveAlsoWithoutPackets)
{
    Begin({"--pes", "none"});
    EXPECT_EQ(Wait("4", 1).size(), 1U);
    EXPECT_THAT(m_application.Packets("260"), testing::IsEmpty());
}

} // namespace
} // namespace zviptv::test

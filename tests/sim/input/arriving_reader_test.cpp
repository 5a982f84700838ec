// SPDX-License-Identifier: MIT
#include "stream/TsReader.h"

#include "StreamTestSupport.h"

#include <gtest/gtest.h>

namespace zviptv::test {
namespace {

/// Bytes that the test lets come.
class Arriving : public sim::ByteSource
{
public:
    struct State
    {
        Bytes bytes;
        bool hasEnded = false;
    };

    explicit Arriving(std::shared_ptr<State> state) : m_state(std::move(state)) {}

    std::size_t Read(std::uint8_t* bytes, std::size_t size) override
    {
        std::size_t const count = std::min(size, m_state->bytes.size());
        std::copy_n(m_state->bytes.begin(), count, bytes);
        m_state->bytes.erase(m_state->bytes.begin(),
                             m_state->bytes.begin() + static_cast<std::ptrdiff_t>(count));
        return count;
    }

    bool HasEnded() const override { return m_state->hasEnded && m_state->bytes.empty(); }
    void Rewind() override {}
    bool IsLive() const override { return true; }
    std::string const& Name() const override { return m_name; }

private:
    std::shared_ptr<State> m_state;
    std::string m_name = "arriving";
};

class ArrivingReader : public testing::Test
{
protected:
    /// `count` packets whose PID is their number, from `first` on.
    static Bytes Packets(int first, int count)
    {
        Bytes stream;
        for (int i = first; i < first + count; ++i) {
            PacketParts parts;
            parts.pid = static_cast<std::uint16_t>(i);
            parts.payload = Bytes(184, 0);
            stream = stream + MakePacket(parts);
        }
        return stream;
    }

    void Come(Bytes const& bytes) { m_state->bytes = m_state->bytes + bytes; }

    /// The PIDs of the packets that can be read now.
    std::vector<int> Read()
    {
        std::vector<int> pids;
        TsBytes bytes;
        while (m_reader.Read(bytes)) {
            pids.push_back(ParseTsPacket(bytes).value().pid);
        }
        return pids;
    }

    std::shared_ptr<Arriving::State> m_state = std::make_shared<Arriving::State>();
    sim::TsReader m_reader{std::make_unique<Arriving>(m_state)};
};

using Pids = std::vector<int>;

TEST_F(ArrivingReader, StartsAfterFiveSyncBytesInStep)
{
    EXPECT_EQ(Read(), Pids());
    Come(Packets(1, 4));
    EXPECT_EQ(Read(), Pids());
    Come(Packets(5, 1));
    EXPECT_EQ(Read(), (Pids{1, 2, 3, 4, 5}));
    Come(Packets(6, 1));
    EXPECT_EQ(Read(), Pids{6});
    EXPECT_FALSE(m_reader.HasEnded());
}

TEST_F(ArrivingReader, WaitsForTheRestOfAPacket)
{
    Come(Packets(1, 7));
    EXPECT_EQ(Read().size(), 7U);
    Bytes const packet = Packets(8, 1);
    for (std::uint8_t const byte : packet) {
        EXPECT_EQ(Read(), Pids());
        Come({byte});
    }
    EXPECT_EQ(Read(), Pids{8});
}

TEST_F(ArrivingReader, ResynchronisesAfterAForeignDatagram)
{
    Come(Packets(1, 7));
    EXPECT_EQ(Read().size(), 7U);
    Come(Bytes(100, 0x55));
    EXPECT_EQ(Read(), Pids());
    Come(Packets(8, 7));
    EXPECT_EQ(Read(), (Pids{8, 9, 10, 11, 12, 13, 14}));
    EXPECT_EQ(m_reader.SkippedBytes(), 100U);
}

TEST_F(ArrivingReader, FindsPacketsAfterOtherData)
{
    Come(Bytes(100'000, 0));
    Come(Packets(1, 7));
    Pids found;
    for (int turn = 0; turn < 20 && found.empty(); ++turn) { // it gives way to others in between
        found = Read();
    }
    EXPECT_EQ(found, (Pids{1, 2, 3, 4, 5, 6, 7}));
    EXPECT_EQ(m_reader.SkippedBytes(), 100'000U);
}

TEST_F(ArrivingReader, TakesFewerPacketsAtTheEnd)
{
    Come(Packets(1, 2));
    EXPECT_EQ(Read(), Pids());
    m_state->hasEnded = true;
    EXPECT_EQ(Read(), (Pids{1, 2}));
    EXPECT_TRUE(m_reader.HasEnded());
}

TEST_F(ArrivingReader, ReadsPacketsFollowedByParity)
{
    Bytes stream;
    for (int i = 1; i <= 8; ++i) {
        stream = stream + Packets(i, 1) + Bytes(16, 9);
    }
    for (std::uint8_t const byte : stream) {
        Come({byte});
    }
    EXPECT_EQ(Read(), (Pids{1, 2, 3, 4, 5, 6, 7, 8}));
    EXPECT_EQ(m_reader.PacketDistance(), 204U);
}

} // namespace
} // namespace zviptv::test

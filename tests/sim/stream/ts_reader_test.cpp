// SPDX-License-Identifier: MIT
#include "StreamTestSupport.h"

#include "stream/TsReader.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <unistd.h>

using namespace zviptv;
using namespace zviptv::sim;
using namespace zviptv::test;

namespace {

/// A reader of bytes in memory, by way of stdio.
class ReaderOf
{
public:
    explicit ReaderOf(Bytes bytes)
        : m_bytes(std::move(bytes)),
          m_reader(TsReader::File(fmemopen(m_bytes.data(), m_bytes.size(), "rb")), "memory")
    {
    }

    TsReader* operator->() { return &m_reader; }

    std::vector<std::uint8_t> Marks()
    {
        std::vector<std::uint8_t> marks;
        TsBytes packet;
        while (m_reader.Read(packet)) {
            marks.push_back(packet[4]);
        }
        return marks;
    }

private:
    Bytes m_bytes;
    TsReader m_reader;
};

/// A packet without a second 0x47, marked in its fifth byte.
Bytes Marked(std::uint8_t mark)
{
    return Bytes{0x47, 0x01, 0x00, 0x10, mark} + Bytes(183, 0xAA);
}

Bytes Joined(std::vector<Bytes> const& parts)
{
    Bytes all;
    for (Bytes const& part : parts) {
        all = all + part;
    }
    return all;
}

std::string ErrorOf(std::string const& path)
{
    try {
        TsReader reader(path);
    } catch (StreamError const& error) {
        return error.what();
    }
    return "no error";
}

} // namespace

TEST(TsReader, ReadsPacketAfterPacket)
{
    ReaderOf reader(Joined({Marked(1), Marked(2), Marked(3), Marked(4), Marked(5), Marked(6)}));
    EXPECT_EQ(reader.Marks(), (Bytes{1, 2, 3, 4, 5, 6}));
    EXPECT_EQ(reader->PacketDistance(), 188u);
    EXPECT_EQ(reader->SkippedBytes(), 0u);
}

TEST(TsReader, ReadsFilesOver2GiB)
{
    std::string const path = testing::TempDir() + "large." + std::to_string(getpid()) + ".ts";
    std::filesystem::copy_file(ZVIPTV_SAMPLE_FILE, path);
    std::filesystem::resize_file(path, 3ULL << 30U); // a hole that takes no space
    TsBytes packet;
    EXPECT_EQ(ErrorOf(path), "no error");
    EXPECT_TRUE(TsReader(path).Read(packet));
    std::filesystem::remove(path);
}

TEST(TsReader, ReadsAFileOfOnePacket)
{
    EXPECT_EQ(ReaderOf(Marked(9)).Marks(), Bytes{9});
}

TEST(TsReader, IgnoresAnIncompletePacketAtTheEnd)
{
    Bytes stream = Joined({Marked(1), Marked(2), Marked(3)});
    stream.resize(stream.size() - 1);
    EXPECT_EQ(ReaderOf(stream).Marks(), (Bytes{1, 2}));
}

TEST(TsReader, SkipsBytesBeforeTheFirstPacket)
{
    ReaderOf reader(Joined({Bytes{0x47, 0, 0, 0x47}, Marked(1), Marked(2), Marked(3), Marked(4), Marked(5)}));
    EXPECT_EQ(reader.Marks(), (Bytes{1, 2, 3, 4, 5}));
    EXPECT_EQ(reader->SkippedBytes(), 4u);
}

TEST(TsReader, Resynchronises)
{
    Bytes const lost = Bytes{0x00} + Bytes(56, 0x47); // looks like sync bytes, leads nowhere
    ReaderOf reader(
        Joined({Marked(1), Marked(2), Marked(3), Marked(4), Marked(5), lost, Marked(6), Marked(7)}));
    EXPECT_EQ(reader.Marks(), (Bytes{1, 2, 3, 4, 5, 6, 7}));
    EXPECT_EQ(reader->SkippedBytes(), 57u);
}

TEST(TsReader, LosesOnlyThePacketWhoseSyncByteIsWrong)
{
    Bytes broken = Marked(6);
    broken[0] = 0x46;
    ReaderOf reader(
        Joined({Marked(1), Marked(2), Marked(3), Marked(4), Marked(5), broken, Marked(7), Marked(8)}));
    EXPECT_EQ(reader.Marks(), (Bytes{1, 2, 3, 4, 5, 7, 8}));
    EXPECT_EQ(reader->SkippedBytes(), 188u);
}

TEST(TsReader, ReadsPacketsPrecededByATimeStamp)
{
    Bytes const stamp{1, 2, 3, 4};
    ReaderOf reader(Joined({stamp, Marked(1), stamp, Marked(2), stamp, Marked(3)}));
    EXPECT_EQ(reader.Marks(), (Bytes{1, 2, 3}));
    EXPECT_EQ(reader->PacketDistance(), 192u);
    EXPECT_EQ(reader->SkippedBytes(), 0u);
}

TEST(TsReader, ReadsPacketsFollowedByParity)
{
    Bytes const parity(16, 0x55);
    ReaderOf reader(Joined({Marked(1), parity, Marked(2), parity, Marked(3), parity}));
    EXPECT_EQ(reader.Marks(), (Bytes{1, 2, 3}));
    EXPECT_EQ(reader->PacketDistance(), 204u);
}

TEST(TsReader, ReadsFilesLongerThanItsBuffer)
{
    Bytes stream;
    Bytes wanted;
    for (unsigned i = 0; i < 2000; ++i) {
        wanted.push_back(static_cast<std::uint8_t>(i % 71));
        Bytes const packet = Marked(wanted.back());
        stream.insert(stream.end(), packet.begin(), packet.end());
    }
    ReaderOf reader(stream);
    EXPECT_EQ(reader.Marks(), wanted);
    reader->Rewind();
    EXPECT_EQ(reader.Marks(), wanted);
}

TEST(TsReader, RewindsAtAnyPlace)
{
    ReaderOf reader(Joined({Marked(1), Marked(2), Marked(3), Marked(4), Marked(5)}));
    TsBytes packet;
    ASSERT_TRUE(reader->Read(packet));
    reader->Rewind();
    EXPECT_EQ(reader.Marks(), (Bytes{1, 2, 3, 4, 5}));
}

TEST(TsReader, ReportsWhyAFileCannotBeOpened)
{
    EXPECT_EQ(ErrorOf("/nowhere/at/all.ts"), "cannot open /nowhere/at/all.ts: No such file or directory");
    EXPECT_EQ(ErrorOf("/"), "cannot read /: Is a directory");
    EXPECT_EQ(ErrorOf("/dev/null"), "/dev/null is not a regular file: save the stream in one first");
}

TEST(TsReader, ReportsAFileWithoutATransportStream)
{
    EXPECT_THROW(ReaderOf(Bytes(20'000, 0x00)), StreamError);
    EXPECT_THROW(ReaderOf(Bytes(187, 0x47)), StreamError) << "too short for one packet";
    EXPECT_THROW(ReaderOf(Bytes{'t', 'e', 'x', 't', 'G', '\n'} + Bytes(300, 'x')), StreamError);
}

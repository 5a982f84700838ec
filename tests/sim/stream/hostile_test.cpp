// SPDX-License-Identifier: MIT
#include "NaiveReassembly.h"
#include "StreamTestSupport.h"

#include "mpegts/PesHeader.h"
#include "stream/TsReader.h"
#include "stream/VideoFormat.h"

#include <gtest/gtest.h>

#include <random>

// Damaged and invented input, the same in every run. Sanitizers find most of its errors.

using namespace zviptv;
using namespace zviptv::sim;
using namespace zviptv::test;

namespace {

class Chance
{
public:
    explicit Chance(unsigned seed) : m_engine(seed) {}

    std::size_t Below(std::size_t limit) { return m_engine() % limit; }
    std::uint8_t Byte() { return static_cast<std::uint8_t>(m_engine() & 0xFF); }

    void Damage(Bytes& bytes, std::size_t places)
    {
        for (std::size_t i = 0; i < places && !bytes.empty(); ++i) {
            bytes[Below(bytes.size())] = Byte();
        }
    }

private:
    std::mt19937 m_engine;
};

/// The first 60 KB of the sample: all its tables, some of each stream.
Bytes SampleHead()
{
    Bytes stream = ReadWholeFile(ZVIPTV_SAMPLE_FILE);
    stream.resize(320 * 188);
    return stream;
}

/// Plays twice over; more must not come out than went in, and time must not run back.
void PlayTwice(Demux& demux, std::size_t size)
{
    StreamTime last{};
    for (int pass = 0; pass < 2; ++pass) {
        std::size_t delivered = 0;
        while (auto const event = demux.Next()) {
            ASSERT_GE(event->at.time, last);
            ASSERT_LT(event->at.stc, PcrModulus);
            last = event->at.time;
            if (auto const* pes = AsPes(*event)) {
                delivered += pes->bytes.size();
            }
        }
        ASSERT_LE(delivered, size);
        demux.Rewind();
    }
}

} // namespace

TEST(DamagedStream, DamagedBytesAnywhere)
{
    Bytes const sample = SampleHead();
    ASSERT_EQ(sample.size(), 320u * 188u);
    for (unsigned seed = 0; seed < 60; ++seed) {
        Chance chance(seed);
        Bytes stream = sample;
        chance.Damage(stream, 1 + chance.Below(2000));
        for (std::size_t at = 0; at < stream.size(); at += 188) {
            stream[at] = 0x47;
        }
        Demux demux(InMemory(stream));
        PlayTwice(demux, stream.size());
    }
}

TEST(DamagedStream, DamagedPacketHeaders)
{
    Bytes const sample = SampleHead();
    for (unsigned seed = 0; seed < 60; ++seed) {
        Chance chance(seed);
        Bytes stream = sample;
        for (int i = 0; i < 300; ++i) {
            stream[chance.Below(320) * 188 + 1 + chance.Below(24)] = chance.Byte();
        }
        Demux demux(InMemory(stream));
        PlayTwice(demux, stream.size());
    }
}

TEST(DamagedStream, FilesOutOfStep)
{
    Bytes const sample = SampleHead();
    for (unsigned seed = 0; seed < 40; ++seed) {
        Chance chance(seed);
        Bytes stream = sample;
        for (int i = 0; i < 10; ++i) {
            auto const at = stream.begin() + static_cast<std::ptrdiff_t>(chance.Below(stream.size() - 300));
            if (chance.Below(2)) {
                stream.erase(at, at + static_cast<std::ptrdiff_t>(chance.Below(300)));
            } else {
                stream.insert(at, chance.Below(300), chance.Byte());
            }
        }
        TsReader::File file(fmemopen(stream.data(), stream.size(), "rb"));
        Demux demux(std::make_unique<TsReader>(std::move(file), "memory"));
        PlayTwice(demux, stream.size());
    }
}

TEST(DamagedStream, FilesOfNoise)
{
    int refused = 0;
    for (unsigned seed = 0; seed < 60; ++seed) {
        Chance chance(seed);
        Bytes stream(1 + chance.Below(30'000));
        for (std::uint8_t& byte : stream) {
            byte = chance.Below(3) ? chance.Byte() : 0x47;
        }
        try {
            TsReader::File file(fmemopen(stream.data(), stream.size(), "rb"));
            Demux demux(std::make_unique<TsReader>(std::move(file), "memory"));
            PlayTwice(demux, stream.size());
        } catch (StreamError const&) {
            ++refused;
        }
    }
    EXPECT_GT(refused, 0);
}

TEST(DamagedStream, TablesWithCorrectCrcAndWrongContent)
{
    Bytes const pat = MakePat({{1, 0x1000}, {2, 0x1001}});
    Bytes const streams = Bytes{0xE1, 0x00, 0xF0, 0x02, 0x09, 0x00, 0x1B, 0xE1, 0x00, 0xF0, 0x00, 0x06, 0xE1,
                                0x01, 0xF0, 0x0A, 0x59, 0x08, 'e',  'n',  'g',  0x10, 0x00, 0x01, 0x00, 0x01,
                                0x06, 0xE1, 0x02, 0xF0, 0x07, 0x56, 0x05, 'e',  'n',  'g',  0x11, 0x00, 0x03,
                                0xE1, 0x03, 0xF0, 0x06, 0x0A, 0x04, 'd',  'e',  'u',  0x00};
    Bytes const services{0xFF, 0x01, 0xFF, 0x00, 0x01, 0xFC, 0x80, 0x08,
                         0x48, 0x06, 0x01, 0x01, 'a',  0x02, 'b',  'c'};
    ProgrammeTable table;
    StreamBuilder builder;
    for (unsigned seed = 0; seed < 3000; ++seed) {
        Chance chance(seed);
        bool const isPmt = chance.Below(2) != 0;
        Bytes body = isPmt ? streams : chance.Below(2) ? services : Bytes(pat.begin() + 8, pat.end() - 4);
        std::uint8_t const tableId = isPmt ? 0x02 : body.size() == 8 ? 0x00 : 0x42;
        std::uint16_t const pid = isPmt ? 0x1000 : tableId == 0x42 ? 0x0011 : 0x0000;
        chance.Damage(body, chance.Below(6));
        if (chance.Below(4) == 0) {
            body.resize(chance.Below(body.size()));
        }
        std::uint8_t const last = static_cast<std::uint8_t>(chance.Below(3));
        std::uint8_t const number = static_cast<std::uint8_t>(chance.Below(3));
        auto const version = static_cast<std::uint8_t>(chance.Below(4));
        auto const extension = static_cast<std::uint16_t>(chance.Below(3));
        builder.Section(0x0000, pat)
            .Section(pid, MakeSection(tableId, extension, version, body, number, last));
        if (builder.Packets() < 100) {
            continue;
        }
        ForEachPacket(builder.Stream(), [&](TsPacket const& packet) { table.Push(packet); });
        builder = StreamBuilder();
        ASSERT_LE(table.Programmes().size(), ProgrammeTable::MaxProgrammes);
    }
}

TEST(DamagedStream, HeadersOfPesPacketsAndVideo)
{
    Bytes const pes =
        MakePes(1, Bytes{0,    0,    1,    0x67, 0x64, 0x00, 0x28, 0xAC, 0xD9, 0x40, 0x78, 0x04, 0x4F,
                         0xDE, 0x02, 0x20, 0,    0,    1,    0x42, 0x01, 0x01, 0x01, 0x60, 0x00, 0x00,
                         0x03, 0x00, 0x90, 0x00, 0x00, 0x03, 0,    0,    1,    0xB3, 0x2D, 0x02, 0x40,
                         0x33, 0xFF, 0xFF, 0xE0, 0x18, 0,    0,    1,    0xB5, 0x14, 0x82},
                true, 2, 0xE0);
    for (unsigned seed = 0; seed < 20'000; ++seed) {
        Chance chance(seed);
        Bytes bytes = pes;
        chance.Damage(bytes, 1 + chance.Below(8));
        bytes.resize(chance.Below(bytes.size() + 1));
        auto const header = ParsePesHeader(bytes);
        ASSERT_TRUE(!header || header->payload.Size() + 6 <= bytes.size());
        for (auto const codec : {VideoCodec::Mpeg2, VideoCodec::H264, VideoCodec::Hevc}) {
            auto const format = ParseVideoFormat(codec, bytes);
            ASSERT_TRUE(!format || (format->width > 0 && format->width <= 16384 && format->height > 0));
        }
    }
}

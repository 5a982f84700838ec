// SPDX-License-Identifier: MIT
#include "Files.h"
#include "TemporaryFolder.h"
#include "trace/CaptureWriter.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>

using namespace zviptv::test;
using namespace zviptv::trace;
using testing::HasSubstr;
using testing::StartsWith;

namespace {

/// The result of reading a file.
struct Reading
{
    std::uint64_t read = 0;
    std::uint64_t cut = 0;
    std::string error;
};

Reading ReadAll(std::string const& path)
{
    Reading reading;
    try {
        CaptureReader reader({path});
        try {
            for (Message message; reader.Next(message);) {
            }
        } catch (CaptureError const& error) {
            reading.error = error.what();
        }
        reading.read = reader.Read();
        reading.cut = reader.Cut();
    } catch (CaptureError const& error) {
        reading.error = error.what();
    }
    return reading;
}

class CaptureReaderTest : public testing::Test
{
protected:
    std::string Write(std::string const& bytes) const
    {
        std::ofstream(m_path, std::ios::binary) << bytes;
        return m_path;
    }

    TemporaryFolder m_folder;
    std::string const m_path = m_folder / "file";
};

/// A pcap file as libpcap's page describes it, little endian, microseconds.
std::string PcapHead(unsigned char linkType)
{
    return std::string("\xd4\xc3\xb2\xa1\2\0\4\0\0\0\0\0\0\0\0\0\0\0\0\x08", 20) +
           std::string(1, static_cast<char>(linkType)) + std::string(3, '\0');
}

std::string PcapRecord(std::string const& bytes, std::size_t length)
{
    std::string record("\x10\0\0\0\x20\0\0\0", 8);
    for (std::size_t const number : {bytes.size(), length}) {
        for (unsigned const shift : {0U, 8U, 16U, 24U}) {
            record += static_cast<char>(number >> shift & 0xFFU);
        }
    }
    return record + bytes;
}

} // namespace

TEST_F(CaptureReaderTest, ReadsLiteralPcap)
{
    CaptureReader reader({Write(PcapHead(231) + PcapRecord("hello", 5))});
    Message message;
    ASSERT_TRUE(reader.Next(message));
    EXPECT_EQ(message.time, 16'000'032);
    EXPECT_EQ(message.bytes, "hello");
    EXPECT_FALSE(reader.Next(message));
    EXPECT_EQ(reader.Read(), 1U);
}

TEST_F(CaptureReaderTest, SkipsAndCountsIncompleteMessages)
{
    Reading const reading = ReadAll(Write(PcapHead(231) + PcapRecord("hel", 5) + PcapRecord("world", 5)));
    EXPECT_EQ(reading.read, 1U);
    EXPECT_EQ(reading.cut, 1U);
    EXPECT_EQ(reading.error, "");
}

TEST_F(CaptureReaderTest, RefusesCapturesOfOtherTraffic)
{
    EXPECT_EQ(ReadAll(Write(PcapHead(1))).error,
              "cannot read '" + m_path +
                  "': it is a capture of EN10MB, not of D-Bus messages; record the bus "
                  "with zviptvctl trace --out");
}

TEST_F(CaptureReaderTest, RefusesOtherFiles)
{
    EXPECT_THAT(ReadAll(Write("hello, this is a text file")).error,
                StartsWith("cannot read '" + m_path + "': unknown file format; give a file that"));
    EXPECT_THAT(ReadAll(Write("")).error, StartsWith("cannot read '" + m_path + "': "));
    EXPECT_THAT(ReadAll(m_folder / "missing").error, HasSubstr("No such file or directory"));
}

TEST_F(CaptureReaderTest, ReadsTheMessagesOfATruncatedFile)
{
    for (char const* const suffix : {".pcap", ".pcapng"}) {
        std::string const path = m_folder / ("whole" + std::string(suffix));
        CaptureWriter(path, "test").Write({1, "first"});
        std::size_t const one = ReadFile(path).size();
        {
            CaptureWriter writer(path, "test");
            writer.Write({1, "first"});
            writer.Write({2, "second"});
        }
        std::string const whole = ReadFile(path);
        for (std::size_t size = one + 1; size < whole.size(); ++size) {
            Reading const reading = ReadAll(Write(whole.substr(0, size)));
            EXPECT_EQ(reading.read, 1U) << size;
            EXPECT_THAT(reading.error, StartsWith("cannot read '" + m_path + "' any further: truncated"));
            EXPECT_THAT(reading.error, HasSubstr("; 1 message before the damage can be read"));
        }
    }
}

TEST_F(CaptureReaderTest, TimesAreBetweenTheYears1970And9999)
{
    std::string const path = m_folder / "times.pcapng";
    {
        CaptureWriter writer(path, "test");
        writer.Write({0x7fffffffffffffff, "late"});
        writer.Write({5, "early"});
    }
    CaptureReader reader({path});
    Message message;
    ASSERT_TRUE(reader.Next(message));
    EXPECT_GE(message.time, 253'402'300'799'000'000);
    EXPECT_LE(message.time, 253'402'300'799'999'999);
    ASSERT_TRUE(reader.Next(message));
    EXPECT_EQ(message.time, 5);
}

TEST_F(CaptureReaderTest, ReportsDamageInTheMiddle)
{
    std::string const damaged = PcapRecord("hello", 5).replace(8, 4, "\xff\xff\xff\x7f");
    Reading const reading = ReadAll(Write(PcapHead(231) + PcapRecord("one", 3) + damaged));
    EXPECT_EQ(reading.read, 1U);
    EXPECT_THAT(reading.error, HasSubstr("any further: "));
}

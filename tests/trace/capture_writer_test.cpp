// SPDX-License-Identifier: MIT
#include "Files.h"
#include "TemporaryFolder.h"
#include "trace/CaptureWriter.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <vector>

using namespace zviptv::test;
using namespace zviptv::trace;
using testing::StartsWith;

namespace {

class CaptureWriterTest : public testing::TestWithParam<char const*>
{
protected:
    std::string Path() const { return m_folder / ("bus" + std::string(GetParam())); }

    std::vector<Message> ReadAll() const
    {
        CaptureReader reader({Path()});
        std::vector<Message> messages;
        for (Message message; reader.Next(message);) {
            messages.push_back(message);
        }
        return messages;
    }

    TemporaryFolder m_folder;
};

std::string ErrorOf(std::string const& path)
{
    try {
        CaptureWriter(path, "test").Write({1, "x"});
    } catch (CaptureError const& error) {
        return error.what();
    }
    return "none";
}

/// Limits the size of the files of this process. Writing more is an error instead of a signal.
class SmallDisk
{
public:
    explicit SmallDisk(rlim_t size)
    {
        getrlimit(RLIMIT_FSIZE, &m_former);
        rlimit const small{size, m_former.rlim_max};
        setrlimit(RLIMIT_FSIZE, &small);
        m_handler = std::signal(SIGXFSZ, SIG_IGN);
    }

    ~SmallDisk()
    {
        setrlimit(RLIMIT_FSIZE, &m_former);
        std::signal(SIGXFSZ, m_handler);
    }

    SmallDisk(SmallDisk const&) = delete;
    SmallDisk& operator=(SmallDisk const&) = delete;

private:
    rlimit m_former{};
    void (*m_handler)(int) = nullptr;
};

} // namespace

INSTANTIATE_TEST_SUITE_P(Formats, CaptureWriterTest, testing::Values(".pcap", ".pcapng"),
                         [](auto const& format) { return std::string(format.param + 1); });

TEST_P(CaptureWriterTest, ReadsBackWhatWasWritten)
{
    {
        CaptureWriter writer(Path(), "test");
        writer.Write({1'774'735'200'123'456, "one"});
        writer.Write({1'774'735'200'999'999, std::string("\0\1\2\3", 4)});
        writer.Write({1'774'735'201'000'000, ""});
        writer.Write({1'774'735'202'000'000, std::string(1'000'001, 'x')});
    }
    auto const messages = ReadAll();
    ASSERT_EQ(messages.size(), 4U);
    EXPECT_EQ(messages[0].time, 1'774'735'200'123'456);
    EXPECT_EQ(messages[0].bytes, "one");
    EXPECT_EQ(messages[1].bytes, std::string("\0\1\2\3", 4));
    EXPECT_EQ(messages[2].bytes, "");
    EXPECT_EQ(messages[3].bytes, std::string(1'000'001, 'x'));
}

TEST_P(CaptureWriterTest, FlushedMessagesSurviveAKill)
{
    pid_t const child = fork();
    if (child == 0) {
        CaptureWriter writer(Path(), "test");
        writer.Write({1, "first"});
        writer.Write({2, "second"});
        writer.Flush();
        writer.Write({3, "lost"});
        kill(getpid(), SIGKILL);
    }
    int status = 0;
    waitpid(child, &status, 0);
    ASSERT_EQ(WTERMSIG(status), SIGKILL);
    auto const messages = ReadAll();
    ASSERT_EQ(messages.size(), 2U);
    EXPECT_EQ(messages[1].bytes, "second");
}

TEST_P(CaptureWriterTest, AFullDiskIsAnErrorAndTheFileEndsAfterItsLastMessage)
{
    std::string const content(100, 'x');
    std::string error;
    for (bool const flushes : {true, false}) {
        SmallDisk const disk(1'000);
        CaptureWriter writer(Path(), "test");
        try {
            for (int number = 1; number <= 5000; ++number) {
                writer.Write({number, content});
                if (flushes) {
                    writer.Flush();
                }
            }
            writer.Flush();
        } catch (CaptureError const& failure) {
            error = failure.what();
        }
        EXPECT_EQ(error,
                  "cannot write '" + Path() + "': File too large; what was written before stays readable");
        EXPECT_NO_THROW(writer.Write({1, "x"})) << "it was told";
        auto const messages = ReadAll(); // throws if the last one is cut
        EXPECT_GE(messages.size(), 6U);
        EXPECT_EQ(messages.back().bytes, content);
    }
}

TEST(CaptureWriterNamesTest, TheNameSelectsTheFormat)
{
    EXPECT_EQ(ErrorOf("/tmp/x.cap"), "cannot write '/tmp/x.cap': its name does not say the format; name it "
                                     "FILE.pcapng or FILE.pcap");
    EXPECT_THAT(ErrorOf("/nowhere/x.pcap"), StartsWith("cannot write '/nowhere/x.pcap': No such file"));
}

TEST(CaptureWriterNamesTest, WritesThePcapngBlocksByteByByte)
{
    TemporaryFolder const folder;
    CaptureWriter(folder / "a.pcapng", "me").Write({0x0000000123456789, "hello"});
    unsigned char const expected[] = {0x0a, 0x0d, 0x0d, 0x0a, 40,   0,    0,    0,    0x4d, 0x3c,
                                      0x2b, 0x1a, 1,    0,    0,    0, // section header
                                      0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 4,    0,
                                      2,    0,    'm',  'e',  0,    0,             // its program
                                      0,    0,    0,    0,    40,   0,    0,    0, // its end
                                      1,    0,    0,    0,    20,   0,    0,    0,    231,  0,
                                      0,    0,    0,    0,    0,    8,    20,   0,    0,    0, // interface
                                      6,    0,    0,    0,    40,   0,    0,    0,    0,    0,
                                      0,    0,    1,    0,    0,    0,    0x89, 0x67, 0x45, 0x23, // packet
                                      5,    0,    0,    0,    5,    0,    0,    0,    'h',  'e',
                                      'l',  'l',  'o',  0,    0,    0,    40,   0,    0,    0};
    EXPECT_EQ(ReadFile(folder / "a.pcapng"),
              std::string(reinterpret_cast<char const*>(expected), sizeof(expected)));
}

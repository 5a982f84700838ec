// SPDX-License-Identifier: MIT
#include "output/LiveLine.h"

#include "Terminal.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <unistd.h>

using zviptv::FileHandle;
using zviptv::ctl::LiveLine;
using zviptv::test::Terminal;

namespace {

TEST(LiveLineTest, IsRewrittenInPlaceAndErased)
{
    Terminal const terminal(20);
    ASSERT_GE(terminal.Replica(), 0);
    {
        LiveLine line(terminal.Replica());
        EXPECT_TRUE(line.IsTerminal());
        line.Erase();
        EXPECT_EQ(terminal.Read(), "");
        line.Show("one");
        line.Show("two");
        EXPECT_EQ(terminal.Read(), "\r\033[Kone\r\033[Ktwo");
        line.Erase();
        line.Erase();
        EXPECT_EQ(terminal.Read(), "\r\033[K");
        line.Show("last");
    }
    EXPECT_EQ(terminal.Read(), "\r\033[Klast\r\033[K");
}

TEST(LiveLineTest, IsCutToTheWidth)
{
    Terminal const terminal(20);
    LiveLine line(terminal.Replica());
    line.Show("0123456789012345678901234567890");
    EXPECT_EQ(terminal.Read(), "\r\033[K012345678901234 ...");
}

TEST(LiveLineTest, ShowsAsManyPartsAsFit)
{
    Terminal const terminal(20);
    LiveLine line(terminal.Replica());
    line.Show("12 packets", {": 1", ", 234567"});
    EXPECT_EQ(terminal.Read(), "\r\033[K12 packets: 1 ...");
    line.Show("12 packets", {": 1", ", 2345"}); // fills all columns but the last
    EXPECT_EQ(terminal.Read(), "\r\033[K12 packets: 1, 2345");
    line.Show("12 packets", {": 1", ", 2345", ", 6"});
    EXPECT_EQ(terminal.Read(), "\r\033[K12 packets: 1 ...");
}

TEST(LiveLineTest, StaysWhenItEnds)
{
    Terminal const terminal(20);
    LiveLine line(terminal.Replica());
    line.End();
    EXPECT_EQ(terminal.Read(), "");
    line.Show("last");
    line.End();
    line.Erase();
    EXPECT_EQ(terminal.Read(), "\r\033[Klast\r\n");
}

TEST(LiveLineTest, WritesNothingWithoutATerminal)
{
    int ends[2];
    ASSERT_EQ(pipe2(ends, O_CLOEXEC | O_NONBLOCK), 0);
    FileHandle const reader(ends[0]);
    FileHandle const writer(ends[1]);
    LiveLine line(writer.Get());
    line.Show("text");
    line.Erase();
    EXPECT_FALSE(line.IsTerminal());
    char byte = 0;
    EXPECT_EQ(read(reader.Get(), &byte, 1), -1);
}

} // namespace

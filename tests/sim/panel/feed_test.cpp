// SPDX-License-Identifier: MIT
#include "panel/Feed.h"
#include "panel/MediaKinds.h"

#include <gmock/gmock.h>

namespace zviptv::sim {
namespace {

TEST(Feed, SendsEachPageOnlyNewMessages)
{
    Feed feed;
    Feed::Place early;
    EXPECT_EQ(feed.Next(early), "");
    feed.Set("Speed", 1.0);
    feed.Set("Paused", false);
    feed.Add("{\"number\":1}");
    EXPECT_EQ(feed.Next(early),
              R"({"state":{"Paused":false,"Speed":1.0},"missed":0,"messages":[{"number":1}]})");
    EXPECT_EQ(feed.Next(early), "");
    feed.Set("Speed", 1.0);
    EXPECT_EQ(feed.Next(early), "") << "nothing has changed";
    feed.Set("Speed", 2.0);
    feed.Set("Speed", 3.0);
    EXPECT_EQ(feed.Next(early), R"({"state":{"Speed":3.0},"missed":0,"messages":[]})") << "the newest only";
    Feed::Place late;
    EXPECT_EQ(feed.Next(late),
              R"({"state":{"Paused":false,"Speed":3.0},"missed":0,"messages":[{"number":1}]})");
}

TEST(Feed, KeepsABoundedNumberOfMessages)
{
    Feed feed;
    Feed::Place slow;
    feed.Add("0");
    EXPECT_EQ(feed.Next(slow), R"({"state":{},"missed":0,"messages":[0]})");
    for (std::size_t i = 1; i < Feed::MaxMessages + 8; ++i) {
        feed.Add(std::to_string(i));
    }
    EXPECT_THAT(feed.Next(slow), testing::StartsWith(R"({"state":{},"missed":7,"messages":[8,9,)"));
    std::size_t parts = 1;
    for (; !feed.Next(slow).empty(); ++parts) {
    }
    EXPECT_EQ(parts, Feed::MaxMessages / 500);
    std::string const large(Feed::MaxBytes / 2 + 1, 'x');
    feed.Add(large);
    feed.Add(large);
    EXPECT_EQ(feed.Next(slow).size(),
              large.size() + std::string(R"({"state":{},"missed":1,"messages":[]})").size());
}

TEST(Jpeg, IsTakenWhenComplete)
{
    std::string const head("\xFF\xD8\xFF\xE0\x00\x04\xFF\xD9", 8); // a segment that has the mark of the end
    std::string const picture =
        head + std::string("\xFF\xDA\x00\x02", 4) + "data" + std::string("\xFF\x00", 2) + "more\xFF\xD9";
    for (std::size_t size = 0; size < picture.size(); ++size) {
        std::string part = picture.substr(0, size);
        EXPECT_EQ(TakeJpeg(part), "") << size;
        EXPECT_EQ(part.size(), size);
    }
    std::string two = "rest" + picture + picture + "\xFF";
    EXPECT_EQ(TakeJpeg(two), picture);
    EXPECT_EQ(TakeJpeg(two), picture);
    EXPECT_EQ(TakeJpeg(two), "");
    EXPECT_EQ(two, "\xFF");
}

} // namespace
} // namespace zviptv::sim

#include "guide/TextPool.h"

#include <gtest/gtest.h>
#include <string>

namespace zviptv::sim {
namespace {

TEST(TextPool, GivesBackWhatWasAdded)
{
    TextPool pool;
    std::vector<std::pair<TextRef, std::string>> texts;
    for (std::size_t i = 0; i < 2000; ++i) {
        std::string const text(i * 7 % 1999, static_cast<char>('a' + i % 26));
        texts.emplace_back(pool.Add(text), text);
    }
    for (auto const& [ref, text] : texts)
        ASSERT_EQ(pool.Get(ref), text);
}

TEST(TextPool, EmptyTextIsZero)
{
    TextPool pool;
    EXPECT_EQ(pool.Add(""), 0u);
    EXPECT_EQ(pool.Get(0), "");
    EXPECT_NE(pool.Add("a"), 0u);
}

TEST(TextPool, CutsAbsurdTextsBetweenCharacters)
{
    TextPool pool;
    std::string const exact(TextPool::MaxTextSize, 'x');
    EXPECT_EQ(pool.Get(pool.Add(exact)), exact);
    EXPECT_EQ(pool.Get(pool.Add(exact + "y")), exact);
    std::string const umlaut = std::string(TextPool::MaxTextSize - 1, 'x') + "ü";
    EXPECT_EQ(pool.Get(pool.Add(umlaut)), std::string(TextPool::MaxTextSize - 1, 'x'));
}

TEST(TextPool, KeptBytesFollowTheTexts)
{
    TextPool pool;
    std::size_t const before = pool.KeptBytes();
    for (int i = 0; i < 1000; ++i)
        pool.Add(std::string(1000, 'x'));
    EXPECT_GE(pool.KeptBytes() - before, 1'000'000u - before);
    EXPECT_LE(pool.KeptBytes(), 1'600'000u);
}

TEST(TextInterner, FindsRepeatedTextsAgain)
{
    TextPool pool;
    TextInterner interner(pool);
    TextRef const news = interner.Add("News");
    TextRef const sport = interner.Add("Sport");
    EXPECT_NE(news, sport);
    EXPECT_EQ(interner.Add("News"), news);
    EXPECT_EQ(interner.Add("Sport"), sport);
    EXPECT_EQ(interner.Add(""), 0u);
    EXPECT_EQ(pool.Get(news), "News");
}

TEST(TextInterner, NeverMixesTextsUp)
{
    TextPool pool;
    TextInterner interner(pool);
    for (int round = 0; round < 2; ++round)
        for (int i = 0; i < 600'000; ++i) // more than it has slots
            ASSERT_EQ(pool.Get(interner.Add(std::to_string(i))), std::to_string(i));
}

TEST(CutUtf8, StaysBetweenCharacters)
{
    EXPECT_EQ(CutUtf8("aé€😀", 100), "aé€😀");
    EXPECT_EQ(CutUtf8("aé€😀", 9), "aé€");
    EXPECT_EQ(CutUtf8("aé€😀", 6), "aé€");
    EXPECT_EQ(CutUtf8("aé€😀", 5), "aé");
    EXPECT_EQ(CutUtf8("aé€😀", 2), "a");
    EXPECT_EQ(CutUtf8("aé€😀", 0), "");
}

} // namespace
} // namespace zviptv::sim

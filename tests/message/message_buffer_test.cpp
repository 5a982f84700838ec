// SPDX-License-Identifier: MIT
#include <zviptv/MessageBuffer.h>

#include <gmock/gmock.h>

#include <climits>
#include <stdexcept>
#include <string>
#include <utility>

namespace {

TEST(MessageBuffer, IsEmptyAtFirst)
{
    CMessageBuffer const buffer;
    EXPECT_EQ(buffer.Size(), 0);
    EXPECT_EQ(buffer.GetValue("x"), "");
    EXPECT_EQ(buffer.GetValue(0), "");
    EXPECT_EQ(buffer.GetKey(0), "");
    EXPECT_EQ(buffer.GetValueOfSize(0), -1);
}

TEST(MessageBuffer, IgnoresNullKeysAndValues)
{
    CMessageBuffer buffer;
    buffer.AddValue("k", nullptr);
    buffer.AddValue(nullptr, "v");
    buffer.AddValue("k", 4, nullptr);
    buffer.AddValue(nullptr, 1, "v");
    EXPECT_EQ(buffer.Size(), 0);
    char const* const noKey = nullptr;
    EXPECT_EQ(buffer.GetValue(noKey), "");
}

TEST(MessageBuffer, KeepsEmptyValues)
{
    CMessageBuffer buffer;
    buffer.AddValue("text", "");
    buffer.AddValue("blob", 0, "abc");
    ASSERT_EQ(buffer.Size(), 2);
    EXPECT_EQ(buffer.GetValueOfSize(0), 0);
    EXPECT_EQ(buffer.GetValueOfSize(1), 0);
    EXPECT_EQ(buffer.GetValue(1), "");
}

TEST(MessageBuffer, StoresTextWithoutItsTerminator)
{
    CMessageBuffer buffer;
    buffer.AddValue("k", "abc");
    EXPECT_EQ(buffer.GetValueOfSize(0), 3);
    EXPECT_EQ(buffer.GetValue("k"), std::string("abc"));
    EXPECT_EQ(buffer.GetKey(0), "k");
}

TEST(MessageBuffer, KeepsZeroBytesOfBlobs)
{
    char const bytes[8] = {0, 1, 0, 2, 0, 3, 0, 0};
    CMessageBuffer buffer;
    buffer.AddValue("r", 8, bytes);
    EXPECT_EQ(buffer.GetValue("r"), std::string(bytes, 8));
    EXPECT_EQ(buffer.GetValueOfSize(0), 8);
}

TEST(MessageBuffer, TextAndEqualBlobAreTheSameEntry)
{
    CMessageBuffer buffer;
    buffer.AddValue("k", "abc");
    buffer.AddValue("k", 3, "abc");
    EXPECT_EQ(buffer.GetValue(0), buffer.GetValue(1));
    EXPECT_EQ(buffer.GetValueOfSize(0), buffer.GetValueOfSize(1));
}

TEST(MessageBuffer, FindsTheFirstOfEqualKeys)
{
    CMessageBuffer buffer;
    buffer.AddValue("a", "1");
    buffer.AddValue("a", "2");
    EXPECT_EQ(buffer.Size(), 2);
    EXPECT_EQ(buffer.GetValue("a"), "1");
    EXPECT_EQ(buffer.GetValue(1), "2");
}

TEST(MessageBuffer, ComparesKeysByteByByte)
{
    CMessageBuffer buffer;
    buffer.AddValue("Key", "1");
    EXPECT_EQ(buffer.GetValue("key"), "");
    EXPECT_EQ(buffer.GetValue("Ke"), "");
    EXPECT_EQ(buffer.GetValue("Key"), "1");
}

TEST(MessageBuffer, TheFirstResultIsUsed)
{
    CMessageBuffer buffer;
    buffer.SetResult(0);
    buffer.SetResult(7);
    EXPECT_EQ(buffer.GetResult(), 0);
    EXPECT_EQ(buffer.Size(), 2);
    EXPECT_EQ(buffer.GetValue("result_internal"), "0");
    EXPECT_EQ(buffer.GetValue(1), "7");
}

TEST(MessageBuffer, ReturnsResultsUnchanged)
{
    for (int const result : {-5, 0, 1, INT_MIN, INT_MAX}) {
        CMessageBuffer buffer;
        buffer.SetResult(result);
        EXPECT_EQ(buffer.GetResult(), result);
    }
    CMessageBuffer lowest;
    lowest.SetResult(INT_MIN);
    EXPECT_EQ(lowest.GetValue("result_internal"), "-2147483648");
}

std::string FailureOf(CMessageBuffer const& buffer)
{
    try {
        buffer.GetResult();
    } catch (std::invalid_argument const& failure) {
        return std::string("invalid_argument ") + failure.what();
    } catch (std::out_of_range const& failure) {
        return std::string("out_of_range ") + failure.what();
    }
    return "none";
}

TEST(MessageBuffer, MissingOrMalformedResultIsAConversionFailure)
{
    EXPECT_EQ(FailureOf(CMessageBuffer()), "invalid_argument stoi");
    CMessageBuffer text;
    text.AddValue("result_internal", "yes");
    EXPECT_EQ(FailureOf(text), "invalid_argument stoi");
    CMessageBuffer large;
    large.AddValue("result_internal", "2147483648");
    EXPECT_EQ(FailureOf(large), "out_of_range stoi");
    CMessageBuffer loose;
    loose.AddValue("result_internal", "  -12xyz");
    EXPECT_EQ(loose.GetResult(), -12);
}

TEST(MessageBuffer, CopiesAreIndependent)
{
    CMessageBuffer source;
    source.AddValue("a", "1");
    CMessageBuffer copy(source);
    source.AddValue("b", "2");
    EXPECT_EQ(copy.Size(), 1);
    copy.AddValue("c", "3");
    EXPECT_EQ(source.GetValue("c"), "");
    CMessageBuffer target;
    target.AddValue("old", "x");
    target = source;
    EXPECT_EQ(target.Size(), 2);
    EXPECT_EQ(target.GetValue("old"), "");
    EXPECT_EQ(target.GetValue("b"), "2");
}

TEST(MessageBuffer, MovesItsEntries)
{
    CMessageBuffer source;
    source.AddValue("a", "1");
    CMessageBuffer taken(std::move(source));
    EXPECT_EQ(taken.GetValue("a"), "1");
    CMessageBuffer target;
    target.AddValue("old", "x");
    target = std::move(taken);
    EXPECT_EQ(target.Size(), 1);
    EXPECT_EQ(target.GetValue("a"), "1");
}

TEST(MessageBuffer, RefusesNegativeSizesAndKeepsItsEntries)
{
    CMessageBuffer buffer;
    buffer.AddValue("a", "1");
    EXPECT_THROW(buffer.AddValue("k", -1, "abc"), std::length_error);
    EXPECT_EQ(buffer.Size(), 1);
}

TEST(MessageBuffer, ShowsTheFirstValueUnderAKeyWithoutACopy)
{
    CMessageBuffer buffer;
    buffer.AddValue("a", 3, "x\0y");
    buffer.AddValue("a", "second");
    std::string_view const view = buffer.GetView("a");
    EXPECT_EQ(view, std::string_view("x\0y", 3));
    EXPECT_EQ(view.data(), buffer.GetView("a").data());
    EXPECT_EQ(buffer.GetView("b"), "");
    char const* const noKey = nullptr;
    EXPECT_EQ(buffer.GetView(noKey), "");
}

} // namespace

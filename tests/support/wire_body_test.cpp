// SPDX-License-Identifier: MIT
#include "Bytes.h"
#include "Handles.h"
#include "WireBody.h"
#include "WireCodec.h"

#include <gtest/gtest.h>

#include <stdexcept>

using namespace zviptv::test;

namespace {

/// The message as it is decoded after a trip through the wire format.
WireMessage OverTheWire(WireBody const& body)
{
    MessageHandle const message(dbus_message_new_signal("/a", "b.c", "D"));
    body.AppendTo(message.get());
    dbus_message_set_serial(message.get(), 1);
    char* data = nullptr;
    int size = 0;
    EXPECT_NE(static_cast<int>(dbus_message_marshal(message.get(), &data, &size)), 0);
    MessageHandle const received(dbus_message_demarshal(data, size, nullptr));
    dbus_free(data);
    return DecodeMessage(received.get());
}

} // namespace

TEST(WireBodyTest, EntriesAreByteArraysInOrderWithDuplicatesAndEmptyOnes)
{
    auto const entries =
        Entries({{"k", "1"}, {"k", "2"}, {"empty", ""}, {"", "nokey"}, {"zeros", std::string("\0a\0", 3)}});
    auto const message = OverTheWire(entries);
    EXPECT_EQ(message.signature, "a{sv}");
    EXPECT_EQ(message.entries, entries);
    EXPECT_TRUE(message.HasOnlyByteArrays());
}

/// The bytes of the format, written out by hand, against what is sent.
TEST(WireBodyTest, AnEntryHasTheBytesOfTheFormat)
{
    MessageHandle const message(dbus_message_new_signal("/a", "b.c", "D"));
    WireBody(Entries({{"onoff", "1"}})).AppendTo(message.get());
    dbus_message_set_serial(message.get(), 1);
    char* data = nullptr;
    int size = 0;
    ASSERT_NE(static_cast<int>(dbus_message_marshal(message.get(), &data, &size)), 0);
    std::string const whole(data, static_cast<std::size_t>(size));
    dbus_free(data);
    // Array length, padding to 8, key, signature of the variant, padding to 4, byte array.
    std::string const body("\x15\0\0\0\0\0\0\0"
                           "\x05\0\0\0onoff\0"
                           "\x02"
                           "ay\0\0\0"
                           "\x01\0\0\0"
                           "1",
                           29);
    EXPECT_EQ(Printable(whole.substr(whole.size() - body.size())), Printable(body));
}

TEST(WireBodyTest, PairsKeepOrderAndDuplicates)
{
    auto const pairs = Pairs({{"dbusname", ":1.1"}, {"type", ""}, {"dbusname", ":1.2"}});
    auto const message = OverTheWire(pairs);
    EXPECT_EQ(message.signature, "a(ss)");
    EXPECT_EQ(message.pairs, pairs);
}

TEST(WireBodyTest, EmptyContainersAndNoBodyDiffer)
{
    EXPECT_EQ(OverTheWire(WireEntries()).signature, "a{sv}");
    EXPECT_EQ(OverTheWire(WirePairs()).signature, "a(ss)");
    EXPECT_EQ(OverTheWire(WireBody()).signature, "");
}

TEST(WireBodyTest, VariantsOfAnyTypeShowTheirSignature)
{
    auto const message = OverTheWire(WireBody::Variants(
        {BytesVariant("b", "xy"), TextVariant("t", "text"), NumberVariant("n", 5), BytesVariant("e", "")}));
    WireEntries const expected{{"b", "ay", "xy"}, {"t", "s", ""}, {"n", "i", ""}, {"e", "ay", ""}};
    EXPECT_EQ(message.entries, expected);
    EXPECT_FALSE(message.HasOnlyByteArrays());
}

TEST(WireBodyTest, StringsAndRawBodies)
{
    auto const strings = OverTheWire(WireBody::Strings({"a", "b"}));
    EXPECT_EQ(strings.signature, "ss");
    EXPECT_EQ(strings.strings, (std::vector<std::string>{"a", "b"}));
    auto const raw = OverTheWire(WireBody::Raw([](DBusMessageIter* iter) {
        dbus_bool_t const yes = TRUE;
        dbus_message_iter_append_basic(iter, 'b', &yes);
    }));
    EXPECT_EQ(raw.signature, "b");
    EXPECT_TRUE(raw.entries.empty());
}

TEST(WireBodyTest, RefusesValuesThatCannotBeSent)
{
    EXPECT_THROW(WireBody(Entries({{"\xff", "v"}})), std::invalid_argument);
    EXPECT_THROW(WireBody(Entries({{std::string("a\0b", 3), "v"}})), std::invalid_argument);
    EXPECT_THROW(WireBody(WireEntries{{"k", "s", "v"}}), std::invalid_argument);
    EXPECT_THROW(WireBody(Pairs({{"k", "\xc3"}})), std::invalid_argument);
    EXPECT_THROW(WireBody::Strings({"\xff"}), std::invalid_argument);
    EXPECT_THROW(WireBody::Variants({{"k", "ss", nullptr}}), std::invalid_argument);
    EXPECT_THROW(TextVariant("k", "\xff"), std::invalid_argument);
}

TEST(WireBodyTest, SurvivesAnExceptionWhileAppending)
{
    MessageHandle const message(dbus_message_new_signal("/a", "b.c", "D"));
    auto const body =
        WireBody::Variants({{"k", "ay", [](DBusMessageIter*) { throw std::runtime_error("half way"); }}});
    EXPECT_THROW(body.AppendTo(message.get()), std::runtime_error);
}

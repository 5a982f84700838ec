// SPDX-License-Identifier: MIT
#include "Bytes.h"
#include "MadeMessage.h"
#include "trace/ParsedMessage.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace zviptv::test;
using namespace zviptv::trace;
using testing::ElementsAre;
using testing::HasSubstr;

namespace {

std::string Literal(std::initializer_list<char const*> parts)
{
    std::string bytes;
    for (char const* const part : parts) {
        for (char const* hex = part; *hex != '\0'; hex += *hex == ' ' ? 1 : 2) {
            if (*hex != ' ') {
                bytes += static_cast<char>(std::stoi(std::string(hex, 2), nullptr, 16));
            }
        }
    }
    return bytes;
}

std::string ProblemOf(std::string const& bytes)
{
    try {
        ReadEntries(ParseMessage(bytes));
    } catch (Malformed const& problem) {
        return problem.what();
    }
    return "none";
}

/// A signal whose header announces a body of 26 bytes that is not there.
std::string SignalWithoutBody()
{
    return Literal({
        "6c 04 01 01 1a 00 00 00 07 00 00 00 20 00 00 00", // head: body 26 bytes, serial 7, fields 32 bytes
        "03 01 73 00 01 00 00 00 4d 00 00 00 00 00 00 00", // member "M", padding
        "08 01 67 00 05 61 7b 73 76 7d 00 00 00 00 00 00", // signature "a{sv}", then 5 bytes too many
    });
}

} // namespace

TEST(ParsedMessageTest, ReadsLiteralBytesOfBothByteOrders)
{
    // Fields: member "M" (12 bytes, padded to 16), signature "a{sv}" (11 bytes). Body: array of 18 bytes.
    std::string const little = Literal(
        {"6c 04 01 01 1a 00 00 00 07 00 00 00 1b 00 00 00", "03 01 73 00 01 00 00 00 4d 00 00 00 00 00 00 00",
         "08 01 67 00 05 61 7b 73 76 7d 00 00 00 00 00 00", "12 00 00 00 00 00 00 00 01 00 00 00 6b 00",
         "02 61 79 00 00 00 02 00 00 00 31 32"});
    std::string const big = Literal(
        {"42 04 01 01 00 00 00 1a 00 00 00 07 00 00 00 1b", "03 01 73 00 00 00 00 01 4d 00 00 00 00 00 00 00",
         "08 01 67 00 05 61 7b 73 76 7d 00 00 00 00 00 00", "00 00 00 12 00 00 00 00 00 00 00 01 6b 00",
         "02 61 79 00 00 00 00 00 00 02 31 32"});
    for (std::string const& bytes : {little, big}) {
        ParsedMessage const message = ParseMessage(bytes);
        EXPECT_EQ(message.type, ParsedMessage::Type::Signal);
        EXPECT_EQ(message.serial, 7U);
        EXPECT_EQ(message.member, "M");
        EXPECT_FALSE(message.wantsReply);
        EXPECT_EQ(message.signature, "a{sv}");
        auto const entries = ReadEntries(message);
        ASSERT_EQ(entries.size(), 1U);
        EXPECT_EQ(entries[0].key, "k");
        EXPECT_EQ(entries[0].value, "12");
    }
}

TEST(ParsedMessageTest, ReadsEveryHeaderField)
{
    MadeMessage made = MadeRequest("IPGUTIL", 4242, Entries({{"a", "1"}, {"b", ""}, {"a", "3"}}));
    made.wantsReply = false;
    std::string const request = made.Bytes();
    ParsedMessage const call = ParseMessage(request);
    EXPECT_EQ(call.type, ParsedMessage::Type::Call);
    EXPECT_EQ(call.sender, ":1.5");
    EXPECT_EQ(call.destination, ":1.2");
    EXPECT_EQ(call.path, "/org/corvel/zviptvapi/DbusCommunication/IPGUTIL");
    EXPECT_EQ(call.interface, "org.corvel.zviptvapi.DbusCommunication");
    EXPECT_EQ(call.member, "Send");
    EXPECT_EQ(call.serial, 4242U);
    EXPECT_FALSE(call.wantsReply);
    auto const entries = ReadEntries(call);
    ASSERT_EQ(entries.size(), 3U);
    EXPECT_EQ(entries[2].key, "a");
    EXPECT_EQ(entries[2].value, "3");

    made = MadeReply(9, WireBody::Strings({"it failed"}));
    made.type = DBUS_MESSAGE_TYPE_ERROR;
    made.errorName = "a.b.Failed";
    std::string const failure = made.Bytes();
    ParsedMessage const error = ParseMessage(failure);
    EXPECT_EQ(error.type, ParsedMessage::Type::Error);
    EXPECT_EQ(error.errorName, "a.b.Failed");
    EXPECT_EQ(error.replySerial, 9U);
    EXPECT_THAT(ReadTexts(error), ElementsAre("it failed"));
}

TEST(ParsedMessageTest, ReadsPairs)
{
    MadeMessage made;
    made.type = DBUS_MESSAGE_TYPE_SIGNAL;
    made.path = "/a";
    made.interface = "a.b";
    made.member = "M";
    made.body = Pairs({{"dbusname", ":1.7"}, {"type", "IPGUTIL"}});
    std::string const bytes = made.Bytes();
    auto const pairs = ReadPairs(ParseMessage(bytes));
    ASSERT_EQ(pairs.size(), 2U);
    EXPECT_EQ(pairs[1].key, "type");
    EXPECT_EQ(pairs[1].value, "IPGUTIL");
}

TEST(ParsedMessageTest, SkipsVariantsOfEveryType)
{
    auto const append = [](char const* signature, auto write) { return WireVariant{"k", signature, write}; };
    auto const nested = [](DBusMessageIter* iter) {
        DBusMessageIter structure;
        DBusMessageIter array;
        DBusMessageIter item;
        std::uint64_t const number = 1;
        double const fraction = 2.5;
        char const* const text = "x";
        dbus_message_iter_open_container(iter, DBUS_TYPE_STRUCT, nullptr, &structure);
        dbus_message_iter_append_basic(&structure, DBUS_TYPE_DOUBLE, &fraction);
        dbus_message_iter_open_container(&structure, DBUS_TYPE_ARRAY, "(ts)", &array);
        dbus_message_iter_open_container(&array, DBUS_TYPE_STRUCT, nullptr, &item);
        dbus_message_iter_append_basic(&item, DBUS_TYPE_UINT64, &number);
        dbus_message_iter_append_basic(&item, DBUS_TYPE_STRING, &text);
        dbus_message_iter_close_container(&array, &item);
        dbus_message_iter_close_container(&structure, &array);
        dbus_message_iter_close_container(iter, &structure);
    };
    MadeMessage const made =
        MadeRequest("IPGUTIL", 1,
                    WireBody::Variants({NumberVariant("n", 9), append("(da(ts))", nested),
                                        TextVariant("t", "text"), BytesVariant("last", "here")}));
    std::string const bytes = made.Bytes();
    auto const entries = ReadEntries(ParseMessage(bytes));
    ASSERT_EQ(entries.size(), 4U);
    EXPECT_EQ(entries[1].signature, "(da(ts))");
    EXPECT_EQ(entries[2].signature, "s");
    EXPECT_EQ(entries[3].value, "here");
}

TEST(ParsedMessageTest, ReportsWhatIsMalformed)
{
    std::string const good = MadeRequest("IPGUTIL", 1, Entries({{"key", "value"}})).Bytes();
    EXPECT_EQ(ProblemOf(good), "none");
    EXPECT_EQ(ProblemOf(""), "it does not begin with a byte order");
    EXPECT_EQ(ProblemOf("x" + good.substr(1)), "it does not begin with a byte order");
    EXPECT_THAT(ProblemOf(good + "x"), HasSubstr("its header announces"));
    std::string changed = good;
    changed[3] = '\2';
    EXPECT_EQ(ProblemOf(changed), "its protocol version is not 1");
    changed = good;
    changed[7] = '\x7f';
    EXPECT_EQ(ProblemOf(changed), "its header announces more than 128 MiB");
    EXPECT_EQ(ProblemOf(SignalWithoutBody()), "its header announces 74 bytes, not 48");
}

TEST(ParsedMessageTest, RefusesEveryPartOfAMessage)
{
    std::string const good = MadeRequest("IPGUTIL", 1, Entries({{"key", "value"}})).Bytes();
    for (std::size_t size = 0; size < good.size(); ++size) {
        EXPECT_NE(ProblemOf(good.substr(0, size)), "none") << size;
    }
}

TEST(ParsedMessageTest, RefusesDeeplyNestedVariants)
{
    std::string body(4 + 4, '\0');         // the length of the array, padding
    body += std::string("\1\0\0\0k\0", 6); // the key
    for (int depth = 0; depth < 100; ++depth) {
        body += std::string("\1v\0", 3);
    }
    body += std::string("\1y\0x", 4);
    body[0] = static_cast<char>((body.size() - 8) % 256);
    body[1] = static_cast<char>((body.size() - 8) / 256);
    ParsedMessage message;
    message.signature = "a{sv}";
    message.body = body;
    EXPECT_THROW(ReadEntries(message), Malformed);
}

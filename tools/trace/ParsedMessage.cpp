// SPDX-License-Identifier: MIT
#include "ParsedMessage.h"

#include "Message.h"

#include <string>

namespace zviptv::trace {

namespace {

// Codes of header fields.
constexpr std::uint8_t ReplySerialCode = 5;
constexpr std::uint8_t SignatureCode = 8;

constexpr unsigned NoReplyExpected = 1;

std::string_view* TextField(ParsedMessage& message, std::uint8_t code)
{
    switch (code) {
    case 1:
        return &message.path;
    case 2:
        return &message.interface;
    case 3:
        return &message.member;
    case 4:
        return &message.errorName;
    case 6:
        return &message.destination;
    case 7:
        return &message.sender;
    default:
        return nullptr;
    }
}

void ReadField(WireReader& reader, ParsedMessage& message)
{
    std::uint8_t const code = reader.Byte();
    std::string_view signature = reader.Signature();
    std::string_view const type = WireReader::TakeType(signature);
    std::string_view* const text = TextField(message, code);
    if (text != nullptr && (type == "s" || type == "o")) {
        *text = reader.String();
    } else if (code == ReplySerialCode && type == "u") {
        message.replySerial = reader.Number();
    } else if (code == SignatureCode && type == "g") {
        message.signature = reader.Signature();
    } else {
        reader.Skip(type);
    }
}

} // namespace

ParsedMessage ParseMessage(std::string_view bytes)
{
    char const order = bytes.empty() ? '\0' : bytes.front();
    if (order != 'l' && order != 'B') {
        throw Malformed("it does not begin with a byte order");
    }
    ParsedMessage message;
    message.isLittleEndian = order == 'l';
    WireReader reader(bytes, message.isLittleEndian);
    reader.Byte();
    message.type = static_cast<ParsedMessage::Type>(reader.Byte());
    message.wantsReply = (reader.Byte() & NoReplyExpected) == 0;
    if (reader.Byte() != 1) {
        throw Malformed("its protocol version is not 1");
    }
    std::uint64_t const bodySize = reader.Number();
    message.serial = reader.Number();
    std::uint64_t const fieldsSize = reader.Number();
    std::uint64_t const fieldsEnd = reader.Position() + fieldsSize;
    std::uint64_t const size = (fieldsEnd + 7) / 8 * 8 + bodySize;
    if (size > LongestMessage) {
        throw Malformed("its header announces more than 128 MiB");
    }
    if (size != bytes.size()) {
        throw Malformed("its header announces " + std::to_string(size) + " bytes, not " +
                        std::to_string(bytes.size()));
    }
    while (reader.Position() < fieldsEnd) {
        reader.Align(8);
        ReadField(reader, message);
    }
    if (reader.Position() != fieldsEnd) {
        throw Malformed("a header field ends after the header");
    }
    reader.Align(8);
    message.body = reader.Take(static_cast<std::size_t>(bodySize));
    return message;
}

namespace {

ParsedEntry ReadEntry(WireReader& reader)
{
    ParsedEntry entry;
    entry.key = reader.String();
    std::string_view signature = reader.Signature();
    if (signature == "ay") {
        entry.value = reader.Take(reader.Number());
    } else {
        entry.signature = signature;
        reader.Skip(WireReader::TakeType(signature));
    }
    return entry;
}

ParsedEntry ReadPair(WireReader& reader)
{
    ParsedEntry pair;
    pair.key = reader.String();
    pair.value = reader.String();
    return pair;
}

/// Entries of an array of structures, which is the whole body; an empty body has none.
std::vector<ParsedEntry> ReadArray(ParsedMessage const& message, char const* type,
                                   ParsedEntry (*read)(WireReader&))
{
    if (message.signature.empty()) {
        return {};
    }
    if (message.signature != type) {
        throw Malformed("its body is not of the type " + std::string(type));
    }
    WireReader reader = message.Body();
    std::size_t const size = reader.Number();
    reader.Align(8);
    std::uint64_t const end = std::uint64_t{reader.Position()} + size;
    std::vector<ParsedEntry> entries;
    while (reader.Position() < end) {
        reader.Align(8);
        entries.push_back(read(reader));
    }
    if (reader.Position() != end) {
        throw Malformed("an entry ends after its array");
    }
    return entries;
}

} // namespace

std::vector<ParsedEntry> ReadEntries(ParsedMessage const& message)
{
    return ReadArray(message, "a{sv}", ReadEntry);
}

std::vector<ParsedEntry> ReadPairs(ParsedMessage const& message)
{
    return ReadArray(message, "a(ss)", ReadPair);
}

std::vector<std::string_view> ReadTexts(ParsedMessage const& message)
{
    std::vector<std::string_view> texts;
    WireReader reader = message.Body();
    for (char const type : message.signature) {
        if (type != 's') {
            break;
        }
        texts.push_back(reader.String());
    }
    return texts;
}

} // namespace zviptv::trace

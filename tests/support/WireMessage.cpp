// SPDX-License-Identifier: MIT
#include "WireMessage.h"

#include <algorithm>
#include <array>
#include <ostream>
#include <tuple>

namespace zviptv::test {

namespace {

auto Compared(WireMessage const& message)
{
    return std::tie(message.kind, message.sender, message.destination, message.path, message.interface,
                    message.member, message.errorName, message.signature, message.noReply,
                    message.noAutoStart, message.entries, message.pairs, message.strings);
}

void AppendEscaped(std::string& text, unsigned char byte)
{
    static constexpr std::array<char, 16> digits{'0', '1', '2', '3', '4', '5', '6', '7',
                                                 '8', '9', 'a', 'b', 'c', 'd', 'e', 'f'};
    text += "\\x";
    text += digits[byte >> 4U];
    text += digits[byte & 0xFU];
}

void PrintField(std::ostream& out, char const* name, std::string const& value)
{
    if (!value.empty()) {
        out << ' ' << name << '=' << Printable(value);
    }
}

} // namespace

std::string WireMessage::Value(std::string const& key) const
{
    for (auto const& entry : entries) {
        if (entry.key == key) {
            return entry.bytes;
        }
    }
    for (auto const& [name, text] : pairs) {
        if (name == key) {
            return text;
        }
    }
    return {};
}

bool WireMessage::Has(std::string const& key) const
{
    return std::any_of(entries.begin(), entries.end(), [&](auto const& entry) { return entry.key == key; }) ||
           std::any_of(pairs.begin(), pairs.end(), [&](auto const& pair) { return pair.first == key; });
}

bool WireMessage::HasOnlyByteArrays() const
{
    return signature == "a{sv}" && std::all_of(entries.begin(), entries.end(),
                                               [](auto const& entry) { return entry.signature == "ay"; });
}

bool operator==(WireEntry const& left, WireEntry const& right)
{
    return std::tie(left.key, left.signature, left.bytes) ==
           std::tie(right.key, right.signature, right.bytes);
}

bool operator!=(WireEntry const& left, WireEntry const& right)
{
    return !(left == right);
}

bool operator==(WireMessage const& left, WireMessage const& right)
{
    return Compared(left) == Compared(right);
}

bool operator!=(WireMessage const& left, WireMessage const& right)
{
    return !(left == right);
}

char const* NameOf(WireKind kind)
{
    switch (kind) {
    case WireKind::Call:
        return "call";
    case WireKind::Reply:
        return "reply";
    case WireKind::Error:
        return "error";
    case WireKind::Signal:
        return "signal";
    case WireKind::Invalid:
        break;
    }
    return "invalid";
}

std::string Printable(std::string const& bytes, std::size_t limit)
{
    std::string text = "\"";
    for (char const c : bytes.substr(0, limit)) {
        auto const byte = static_cast<unsigned char>(c);
        if (c == '"' || c == '\\') {
            text += std::string{'\\', c};
        } else if (byte >= 0x20U && byte < 0x7FU) {
            text += c;
        } else {
            AppendEscaped(text, byte);
        }
    }
    text += '"';
    if (bytes.size() > limit) {
        text += "... (" + std::to_string(bytes.size()) + " bytes)";
    }
    return text;
}

void PrintTo(WireKind kind, std::ostream* out)
{
    *out << NameOf(kind);
}

void PrintTo(WireEntry const& entry, std::ostream* out)
{
    *out << '{' << Printable(entry.key) << ": " << entry.signature;
    if (entry.signature == "ay") {
        *out << ' ' << Printable(entry.bytes);
    }
    *out << '}';
}

void PrintTo(WireMessage const& message, std::ostream* out)
{
    *out << NameOf(message.kind) << " #" << message.serial;
    if (message.replySerial != 0) {
        *out << " to #" << message.replySerial;
    }
    PrintField(*out, "sender", message.sender);
    PrintField(*out, "destination", message.destination);
    PrintField(*out, "path", message.path);
    PrintField(*out, "interface", message.interface);
    PrintField(*out, "member", message.member);
    PrintField(*out, "error", message.errorName);
    *out << " signature=" << Printable(message.signature) << (message.noReply ? " no-reply" : "")
         << (message.noAutoStart ? " no-auto-start" : "");
    for (auto const& entry : message.entries) {
        *out << "\n    ";
        PrintTo(entry, out);
    }
    for (auto const& [key, text] : message.pairs) {
        *out << "\n    (" << Printable(key) << ", " << Printable(text) << ')';
    }
    for (auto const& text : message.strings) {
        *out << "\n    " << Printable(text);
    }
}

} // namespace zviptv::test

// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <iosfwd>
#include <string>
#include <utility>
#include <vector>

namespace zviptv::test {

/// One entry of an "a{sv}" body, exactly as it was on the bus.
struct WireEntry
{
    std::string key;
    /// Signature of the variant's content; the contract knows only "ay".
    std::string signature = "ay";
    /// The bytes of an "ay"; empty for any other content.
    std::string bytes;
};

using WireEntries = std::vector<WireEntry>;
using WirePair = std::pair<std::string, std::string>;
using WirePairs = std::vector<WirePair>;

enum class WireKind
{
    Invalid,
    Call,
    Reply,
    Error,
    Signal
};

/// One message of the bus as plain data. Entries and pairs keep their order and their duplicates.
struct WireMessage
{
    WireKind kind = WireKind::Invalid;
    std::string sender;
    std::string destination;
    std::string path;
    std::string interface;
    std::string member;
    /// Name of the error, of error messages only; its text is strings[0].
    std::string errorName;
    /// Signature of the whole body, "a{sv}" for a message of the peer channel.
    std::string signature;
    bool noReply = false;
    bool noAutoStart = false;
    std::uint32_t serial = 0;
    std::uint32_t replySerial = 0;
    /// First argument, if it is an "a{sv}".
    WireEntries entries;
    /// First argument, if it is an "a(ss)".
    WirePairs pairs;
    /// Every top-level argument of type "s", "o", "g" and the elements of every "as", in order.
    std::vector<std::string> strings;

    /// Bytes of the first entry with this key, or text of the first pair; empty if there is none.
    std::string Value(std::string const& key) const;
    /// True if an entry or a pair with this key is there.
    bool Has(std::string const& key) const;
    /// True if the body is an "a{sv}" in which every variant holds an "ay".
    bool HasOnlyByteArrays() const;
};

bool operator==(WireEntry const& left, WireEntry const& right);
bool operator!=(WireEntry const& left, WireEntry const& right);
/// Compares everything except serial and replySerial, which no test can know beforehand.
bool operator==(WireMessage const& left, WireMessage const& right);
bool operator!=(WireMessage const& left, WireMessage const& right);

char const* NameOf(WireKind kind);
/// Text as it is, other bytes as \xNN, cut after `limit` bytes with the full size behind it.
std::string Printable(std::string const& bytes, std::size_t limit = 80);

void PrintTo(WireKind kind, std::ostream* out);
void PrintTo(WireEntry const& entry, std::ostream* out);
void PrintTo(WireMessage const& message, std::ostream* out);

} // namespace zviptv::test

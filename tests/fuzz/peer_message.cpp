// SPDX-License-Identifier: MIT
#include "Variants.h"
#include "dbus/PeerMessage.h"
#include "message/MessageAccess.h"

// The peer channel's decoder on bodies of any type and content, and there and back again.

using namespace zviptv;
using namespace zviptv::fuzz;

namespace {

using Entry = std::pair<std::string, std::string>;

/// Entries with bytes; the others do not travel.
std::vector<Entry> Carried(CMessageBuffer const& message)
{
    std::vector<Entry> entries;
    for (MessageEntry const& entry : MessageAccess::Entries(message)) {
        Require(entry.size == static_cast<int>(entry.value.size()), "an entry's size is its value's");
        if (!entry.value.empty()) {
            entries.emplace_back(entry.key, entry.value);
        }
    }
    return entries;
}

void CheckRoundTrip(CMessageBuffer const& message)
{
    Error error;
    Owned<GVariant> const body = EncodePeerMessage(message, error);
    bool isText = true;
    for (auto const& entry : MessageAccess::Entries(message)) {
        isText = isText && IsUtf8(entry.key);
    }
    Require((body != nullptr) == isText, "what has UTF-8 keys can be sent, and nothing else");
    Require((body == nullptr) == static_cast<bool>(error), "an error is set where there is no body");
    if (body == nullptr) {
        return;
    }
    Require(g_variant_is_of_type(body.get(), G_VARIANT_TYPE("(a{sv})")) != FALSE, "the body's type");
    Require(g_variant_is_normal_form(body.get()) != FALSE, "the body is in normal form");
    CMessageBuffer decoded;
    Require(DecodePeerMessage(body.get(), decoded, error), "what was encoded can be decoded");
    Require(Carried(decoded) == Carried(message), "what was sent arrives");
}

void CheckDecoding(GVariant* body)
{
    CMessageBuffer message;
    Error error;
    bool const isMessage = g_variant_is_of_type(body, G_VARIANT_TYPE("(a{sv})")) != FALSE;
    Require(DecodePeerMessage(body, message, error) == isMessage, "the type alone decides");
    Require(static_cast<bool>(error) != isMessage, "an error is set for another type");
    Require(isMessage || message.Size() == 0, "another type adds nothing");
    std::size_t total = 0;
    for (MessageEntry const& entry : MessageAccess::Entries(message)) {
        total += entry.value.size();
        Require(!entry.value.empty() && IsUtf8(entry.key), "entries have bytes and UTF-8 keys");
    }
    Require(total <= g_variant_get_size(body), "no more comes out than went in");
    CheckRoundTrip(message);
}

CMessageBuffer ConsumeMessage(FuzzedDataProvider& input)
{
    CMessageBuffer message;
    for (int i = input.ConsumeIntegralInRange(0, 12); i > 0; --i) {
        std::string const key = input.ConsumeRandomLengthString(40);
        std::string const value = input.ConsumeRandomLengthString(400);
        message.AddValue(key.c_str(), static_cast<int>(value.size()), value.data());
    }
    return message;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    FuzzedDataProvider input(data, size);
    switch (input.ConsumeIntegralInRange(0, 2)) {
    case 0:
        CheckDecoding(ConsumeUntrusted(input).get());
        break;
    case 1:
        CheckDecoding(SinkFloating(g_variant_new("(@a{sv})", NewDictionary(input))).get());
        break;
    default:
        CheckRoundTrip(ConsumeMessage(input));
    }
    return 0;
}

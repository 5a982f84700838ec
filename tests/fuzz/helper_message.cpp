// SPDX-License-Identifier: MIT
#include "Variants.h"
#include "dbus/HelperMessage.h"
#include "message/MessageAccess.h"

// The helper bus's decoder on bodies of any type and content, and there and back again.

using namespace zviptv;
using namespace zviptv::fuzz;

namespace {

using Pairs = std::vector<std::pair<std::string, std::string>>;

/// As they travel: a value up to its first zero byte.
Pairs PairsOf(CMessageBuffer const& message)
{
    Pairs pairs;
    for (MessageEntry const& entry : MessageAccess::Entries(message)) {
        pairs.emplace_back(entry.key, entry.value.c_str());
    }
    return pairs;
}

void CheckRoundTrip(CMessageBuffer const& message)
{
    Pairs const pairs = PairsOf(message);
    bool isText = true;
    for (auto const& [key, value] : pairs) {
        isText = isText && IsUtf8(key) && IsUtf8(value);
    }
    Error error;
    GVariant* const encoded = helper::Encode(message, error);
    Require((encoded != nullptr) == isText, "texts can be sent, and nothing else");
    Require((encoded == nullptr) == static_cast<bool>(error), "an error is set where there is no body");
    if (encoded == nullptr) {
        return;
    }
    Owned<GVariant> const body = SinkFloating(encoded);
    Require(g_variant_is_normal_form(body.get()) != FALSE, "the body is in normal form");
    Require(PairsOf(helper::Decode(body.get())) == pairs, "what was sent arrives");
}

void CheckDecoding(GVariant* body)
{
    CMessageBuffer const message = helper::Decode(body);
    bool const isMessage = g_variant_is_of_type(body, G_VARIANT_TYPE("(a(ss))")) != FALSE;
    Require(isMessage || message.Size() == 0, "another type is an empty message");
    for (MessageEntry const& entry : MessageAccess::Entries(message)) {
        Require(IsUtf8(entry.key) && IsUtf8(entry.value), "keys and values are UTF-8");
    }
    CheckRoundTrip(message);
}

CMessageBuffer ConsumeMessage(FuzzedDataProvider& input)
{
    CMessageBuffer message;
    for (int i = input.ConsumeIntegralInRange(0, 12); i > 0; --i) {
        std::string const key = input.ConsumeRandomLengthString(40);
        std::string const value = input.ConsumeRandomLengthString(80);
        message.AddValue(key.c_str(), static_cast<int>(value.size()), value.data());
    }
    return message;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    FuzzedDataProvider input(data, size);
    if (input.ConsumeBool()) {
        CheckDecoding(ConsumeUntrusted(input).get());
    } else {
        CheckRoundTrip(ConsumeMessage(input));
    }
    return 0;
}

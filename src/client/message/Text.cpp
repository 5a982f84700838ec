// SPDX-License-Identifier: MIT
#include "client/message/Text.h"

#include <zviptv/client/Result.h>

#include <array>
#include <cstdio>
#include <cstdlib>

namespace zviptv {

std::string client::HexText(std::uint32_t number)
{
    std::array<char, 16> text{};
    std::snprintf(text.data(), text.size(), "0x%x", static_cast<unsigned>(number));
    return text.data();
}

std::string ToString(Language language)
{
    if (!language) {
        return std::string();
    }
    auto const number = static_cast<std::uint32_t>(language.Number());
    std::string const code{static_cast<char>((number >> 16U) & 0xFFU),
                           static_cast<char>((number >> 8U) & 0xFFU), static_cast<char>(number & 0xFFU)};
    return Language(code) == language ? code : client::HexText(number);
}

char const* ToString(FailureKind kind) noexcept
{
    switch (kind) {
    case FailureKind::NoBus:
        return "no bus";
    case FailureKind::NoService:
        return "no service";
    case FailureKind::Gone:
        return "gone";
    case FailureKind::TimedOut:
        return "timed out";
    case FailureKind::BusError:
        return "bus error";
    case FailureKind::TooLarge:
        return "too large";
    case FailureKind::Refused:
        return "refused";
    case FailureKind::MalformedReply:
        return "malformed reply";
    case FailureKind::InvalidArgument:
        return "invalid argument";
    case FailureKind::Cancelled:
        return "cancelled";
    case FailureKind::CallbackThrew:
        return "callback threw";
    }
    return "unknown";
}

std::string ToString(Failure const& failure)
{
    std::string text = failure.function.empty() ? std::string() : failure.function + ": ";
    text += ToString(failure.kind);
    if (!failure.errorName.empty()) {
        text += " (" + failure.errorName + ")";
    }
    return failure.message.empty() ? text : text + ": " + failure.message;
}

void EndWrongRead(Failure const* failure)
{
    std::string const what = failure == nullptr
                                 ? "the failure of a successful call was read"
                                 : "the value of a failed call was read: " + ToString(*failure);
    std::fprintf(stderr, "zviptv::Result: %s; test the Result before you read it\n", what.c_str());
    std::abort();
}

} // namespace zviptv

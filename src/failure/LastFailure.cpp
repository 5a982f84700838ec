// SPDX-License-Identifier: MIT
#include "failure/LastFailure.h"

#include <type_traits>

namespace zviptv {

namespace {

// Has no destructor: it can be read as long as its thread runs, and uses no heap memory.
static_assert(std::is_trivially_destructible_v<FailureRecord>);
thread_local FailureRecord record;

/// The beginning of a text, cut between characters.
std::string_view Beginning(std::string_view text, std::size_t most)
{
    while (most < text.size() && most > 0 && (static_cast<unsigned char>(text[most]) & 0xC0U) == 0x80U) {
        --most;
    }
    return text.substr(0, most);
}

} // namespace

FailureScope::FailureScope(char const* function) noexcept
{
    FailureRecord& own = record;
    if (own.depth++ == 0) {
        own.failure = {ZV_FAILURE_NONE, function, "", "", ""};
    }
}

FailureScope::~FailureScope()
{
    --record.depth;
}

FailureUntouched::FailureUntouched() noexcept : m_former(record)
{
    record = {};
}

FailureUntouched::~FailureUntouched()
{
    record = m_former; // restores the texts in the places to which the failure points
}

void SetFailure(EZVFailureKind kind, TextParts message, char const* key, std::string_view errorName) noexcept
{
    FailureRecord& own = record;
    own.errorName.Clear();
    own.errorName.Append(errorName);
    own.message.Clear();
    for (std::string_view const part : message) {
        own.message.Append(part);
    }
    own.failure = {kind, own.failure.function, key, own.errorName.Text(), own.message.Text()};
}

void SetFailureUnlessSet(EZVFailureKind kind, TextParts message, char const* key) noexcept
{
    if (record.failure.kind == ZV_FAILURE_NONE) {
        SetFailure(kind, message, key);
    }
}

void SetMalformed(char const* key, std::string_view expected, std::string_view got) noexcept
{
    std::string_view const shown = Beginning(got, 40);
    SetFailure(ZV_FAILURE_MALFORMED_REPLY,
               {key, " is malformed: expected ", expected, ", got ", got.empty() ? "nothing" : "\"", shown,
                got.empty() ? "" : "\"", shown.size() < got.size() ? "..." : ""},
               key);
}

void SetGone() noexcept
{
    SetFailure(ZV_FAILURE_GONE, {"the object has been destroyed; create it again"});
}

void NameFailedFunction(char const* function) noexcept
{
    record.failure.function = function;
}

void KeptFailure::Keep()
{
    ZVFailure const& failure = ZVGetLastFailure();
    std::lock_guard<std::mutex> const lock(m_mutex);
    m_kind = failure.kind;
    m_key = failure.key;
    m_errorName = failure.errorName;
    m_message = failure.message;
}

void KeptFailure::Recall() const
{
    std::lock_guard<std::mutex> const lock(m_mutex);
    if (m_kind != ZV_FAILURE_NONE) {
        SetFailure(m_kind, {m_message}, m_key, m_errorName);
    }
}

} // namespace zviptv

ZVFailure const& ZVGetLastFailure() noexcept
{
    return zviptv::record.failure;
}

char const* ZVFailureKindName(EZVFailureKind kind) noexcept
{
    switch (kind) {
    case ZV_FAILURE_NONE:
        return "none";
    case ZV_FAILURE_NO_BUS:
        return "no bus";
    case ZV_FAILURE_NO_SERVICE:
        return "no service";
    case ZV_FAILURE_GONE:
        return "gone";
    case ZV_FAILURE_TIMED_OUT:
        return "timed out";
    case ZV_FAILURE_BUS_ERROR:
        return "bus error";
    case ZV_FAILURE_TOO_LARGE:
        return "too large";
    case ZV_FAILURE_REFUSED:
        return "refused";
    case ZV_FAILURE_MALFORMED_REPLY:
        return "malformed reply";
    case ZV_FAILURE_INVALID_ARGUMENT:
        return "invalid argument";
    }
    return "unknown";
}

// SPDX-License-Identifier: MIT
#pragma once

#include "failure/BoundedText.h"

#include <zviptv/Failure.h>

#include <initializer_list>
#include <mutex>
#include <string>
#include <string_view>

namespace zviptv {

/// Parts of a text, in order.
using TextParts = std::initializer_list<std::string_view>;

/// What a thread has failed with.
struct FailureRecord
{
    ZVFailure failure{ZV_FAILURE_NONE, "", "", "", ""};
    int depth = 0; ///< functions of the library that the thread is in
    BoundedText<256> errorName;
    BoundedText<1024> message;
};

/// A function of the library, while it runs. The outermost one on a thread begins without a failure and gives
/// its name to those that are set until it ends.
class FailureScope
{
public:
    /// `function` must live as long as the process.
    explicit FailureScope(char const* function) noexcept;
    ~FailureScope();
    FailureScope(FailureScope const&) = delete;
    FailureScope& operator=(FailureScope const&) = delete;
};

/// Gives the calling thread back, when it ends, the failure that it has now: for what the library does in
/// callbacks of the main loop, which begins without a failure.
class FailureUntouched
{
public:
    FailureUntouched() noexcept;
    ~FailureUntouched();
    FailureUntouched(FailureUntouched const&) = delete;
    FailureUntouched& operator=(FailureUntouched const&) = delete;

private:
    FailureRecord const m_former;
};

/// Sets the calling thread's failure; the last one counts. Allocates nothing. `key` must live as long as the
/// process.
void SetFailure(EZVFailureKind kind, TextParts message, char const* key = "",
                std::string_view errorName = {}) noexcept;

/// Sets it unless one is set: for what fails because of something that failed before.
void SetFailureUnlessSet(EZVFailureKind kind, TextParts message, char const* key = "") noexcept;

/// The value `got` of `key` is not what was `expected`.
void SetMalformed(char const* key, std::string_view expected, std::string_view got) noexcept;

/// The call is one on an object that has been destroyed.
void SetGone() noexcept;

/// The failure that is set is that of `function`.
void NameFailedFunction(char const* function) noexcept;

/// Keeps a failure for later calls that fail for the same reason, also on other threads. Any thread may call
/// its functions.
class KeptFailure
{
public:
    /// Keeps the calling thread's failure, or that there is none.
    void Keep();
    /// Sets the calling thread's failure, if one was kept.
    void Recall() const;

private:
    mutable std::mutex m_mutex;
    EZVFailureKind m_kind = ZV_FAILURE_NONE;
    char const* m_key = "";
    std::string m_errorName;
    std::string m_message;
};

} // namespace zviptv

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

/// The last failure of a thread.
struct FailureRecord
{
    ZVFailure failure{ZV_FAILURE_NONE, "", "", "", ""};
    int depth = 0; ///< nested functions of the library that the thread is running
    BoundedText<256> errorName;
    BoundedText<1024> message;
};

/// The scope of a running function of the library. The outermost scope on a thread starts without a failure,
/// and its function's name is that of all failures until it ends.
class FailureScope
{
public:
    /// `function` must be valid for the life of the process.
    explicit FailureScope(char const* function) noexcept;
    ~FailureScope();
    FailureScope(FailureScope const&) = delete;
    FailureScope& operator=(FailureScope const&) = delete;
};

/// Restores the calling thread's present failure at the end of the scope: for callbacks of the main loop, in
/// which the library starts without a failure.
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

/// Sets the calling thread's failure; the last one counts. Allocates no memory. `key` must be valid for the
/// life of the process.
void SetFailure(EZVFailureKind kind, TextParts message, char const* key = "",
                std::string_view errorName = {}) noexcept;

/// Sets the failure unless one is set: for a failure that follows from an earlier one.
void SetFailureUnlessSet(EZVFailureKind kind, TextParts message, char const* key = "") noexcept;

/// Sets the failure that the value `got` of `key` is not the one `expected`.
void SetMalformed(char const* key, std::string_view expected, std::string_view got) noexcept;

/// Sets the failure that the called object has been destroyed.
void SetGone() noexcept;

/// Changes the function of the failure that is set to `function`.
void NameFailedFunction(char const* function) noexcept;

/// Stores a failure for later calls that fail for the same reason, also on other threads. Any thread may call
/// its functions.
class KeptFailure
{
public:
    /// Stores the calling thread's failure, or that there is none.
    void Keep();
    /// Sets the calling thread's failure, if one was stored.
    void Recall() const;

private:
    mutable std::mutex m_mutex;
    EZVFailureKind m_kind = ZV_FAILURE_NONE;
    char const* m_key = "";
    std::string m_errorName;
    std::string m_message;
};

} // namespace zviptv

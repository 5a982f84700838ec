// SPDX-License-Identifier: MIT
#pragma once

#include "WireBody.h"

#include <chrono>
#include <string>
#include <utility>

namespace zviptv::test {

/// The reaction of a scripted handler to a method call.
class WireAnswer
{
public:
    enum class Kind
    {
        Reply,
        Error,
        Nothing
    };

    /// A reply with this body.
    WireAnswer(WireBody body) : m_body(std::move(body)) {}
    WireAnswer(WireEntries entries) : m_body(std::move(entries)) {}
    WireAnswer(WirePairs pairs) : m_body(std::move(pairs)) {}

    /// A reply with any signature, whose body the function builds.
    static WireAnswer Raw(AppendFunction append) { return WireAnswer(WireBody::Raw(std::move(append))); }

    /// A D-Bus error.
    static WireAnswer Error(std::string name, std::string text)
    {
        WireAnswer answer{WireBody()};
        answer.m_kind = Kind::Error;
        answer.m_errorName = std::move(name);
        answer.m_errorText = std::move(text);
        return answer;
    }

    /// No answer: the caller runs into its time-out.
    static WireAnswer Nothing()
    {
        WireAnswer answer{WireBody()};
        answer.m_kind = Kind::Nothing;
        return answer;
    }

    /// The same answer, sent that much later; other messages are served meanwhile.
    WireAnswer After(std::chrono::milliseconds delay) const
    {
        WireAnswer answer = *this;
        answer.m_delay = delay;
        return answer;
    }

    Kind GetKind() const { return m_kind; }
    WireBody const& Body() const { return m_body; }
    std::string const& ErrorName() const { return m_errorName; }
    std::string const& ErrorText() const { return m_errorText; }
    std::chrono::milliseconds Delay() const { return m_delay; }

private:
    Kind m_kind = Kind::Reply;
    WireBody m_body;
    std::string m_errorName;
    std::string m_errorText;
    std::chrono::milliseconds m_delay{0};
};

} // namespace zviptv::test

// SPDX-License-Identifier: MIT
#pragma once

#include <zviptv/Failure.h>

#include <string>

namespace zviptv::test {

/// The calling thread's last failure: "kind | function | key | error name | message".
inline std::string LastFailure()
{
    ZVFailure const& failure = ZVGetLastFailure();
    std::string text = ZVFailureKindName(failure.kind);
    for (char const* const member : {failure.function, failure.key, failure.errorName, failure.message}) {
        text += " | ";
        text += member;
    }
    return text;
}

/// The text for `function` without a failure.
inline std::string NoFailure(std::string const& function)
{
    return "none | " + function + " |  |  | ";
}

inline std::string GoneFailure(std::string const& function)
{
    return "gone | " + function + " |  |  | the object has been destroyed; create it again";
}

/// The message about the received value `got`.
inline std::string MalformedFailure(std::string const& function, std::string const& key,
                                    std::string const& expected, std::string const& got)
{
    return "malformed reply | " + function + " | " + key + " |  | " + key + " is malformed: expected " +
           expected + ", got " + got;
}

} // namespace zviptv::test

// SPDX-License-Identifier: MIT
#pragma once

#include <zviptv/MessageBuffer.h>

#include <string>

namespace zviptv::sim {

/// Identifies equal requests: endpoint, function and the bytes of the arguments, in any order. The name that
/// an application sets with SetAppID is ignored.
struct RequestKey
{
    std::string exact;     ///< with the handle
    std::string anyHandle; ///< without it; equal to `exact` if the request has none
};

RequestKey KeyOf(std::string const& endpoint, CMessageBuffer const& request);

/// The key of an announcement to the helper bus.
std::string AnnouncementKey(std::string const& type, bool comesUp);

/// The function and the arguments as readable text: "GetAudio index=3".
std::string Described(CMessageBuffer const& request);

} // namespace zviptv::sim

// SPDX-License-Identifier: MIT
#pragma once

#include <zviptv/client/PesPacket.h>

#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>

namespace zviptv::client {

/// A message that the service has pushed. Views are valid as long as `owner` lives.
struct Push
{
    std::shared_ptr<void const> owner;
    std::function<std::string_view(char const* key)> field; ///< empty for a key that is missing
};

/// The reason why a push cannot be read.
class UnreadablePush : public std::runtime_error
{
public:
    UnreadablePush(char const* key, std::string const& message) : std::runtime_error(message), m_key(key) {}

    char const* Key() const { return m_key; }

private:
    char const* m_key;
};

/// Reads PESCB. Uses the announced size, but at most the size of the data. Throws UnreadablePush.
PesPacket ReadPes(Push const& push);

/// Reads CaptionCB, like ReadPes().
CaptionData ReadCaption(Push const& push);

} // namespace zviptv::client

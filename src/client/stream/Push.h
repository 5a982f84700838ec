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

/// Why a push cannot be read.
class UnreadablePush : public std::runtime_error
{
public:
    UnreadablePush(char const* key, std::string const& message) : std::runtime_error(message), m_key(key) {}

    char const* Key() const { return m_key; }

private:
    char const* m_key;
};

/// Reads PESCB. The announced size decides, as far as the data goes. Throws UnreadablePush.
PesPacket ReadPes(Push const& push);

/// Reads CaptionCB, otherwise as ReadPes.
CaptionData ReadCaption(Push const& push);

} // namespace zviptv::client

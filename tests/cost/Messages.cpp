// SPDX-License-Identifier: MIT
#include "Messages.h"

#include "Require.h"
#include "dbus/HelperMessage.h"
#include "dbus/PeerMessage.h"

#include <string>

namespace zviptv::test {

CMessageBuffer MakeMessage(std::size_t entries, std::size_t size)
{
    std::string const value(size, 'v');
    CMessageBuffer message;
    for (std::size_t i = 0; i < entries; ++i) {
        message.AddValue(("key" + std::to_string(i)).c_str(), static_cast<int>(size), value.data());
    }
    return message;
}

Owned<GVariant> EncodeForPeer(CMessageBuffer const& message)
{
    Error error;
    Owned<GVariant> body = EncodePeerMessage(message, error);
    Require(body != nullptr, "a message can be encoded");
    return body;
}

Owned<GVariant> EncodeForHelper(CMessageBuffer const& message)
{
    Error error;
    GVariant* const body = helper::Encode(message, error);
    Require(body != nullptr, "a helper-bus message can be encoded");
    return Owned<GVariant>(g_variant_ref_sink(body));
}

CMessageBuffer DecodeFromPeer(GVariant* body)
{
    CMessageBuffer message;
    Error error;
    Require(DecodePeerMessage(body, message, error), "a message can be decoded");
    return message;
}

CMessageBuffer DecodeFromHelper(GVariant* body)
{
    return helper::Decode(body);
}

} // namespace zviptv::test

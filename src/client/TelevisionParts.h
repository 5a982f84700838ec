// SPDX-License-Identifier: MIT
#pragma once

#include "client/link/Link.h"
#include "client/stream/PushHub.h"

#include <zviptv/client/Television.h>

namespace zviptv {

/// What a television consists of.
struct [[gnu::visibility("hidden")]] Television::Parts
{
    explicit Parts(client::LinkOptions options);

    std::shared_ptr<client::Link> link;
    zviptv::Player player;
    zviptv::Broadcast broadcast;
    zviptv::Guide guide;
    std::unique_ptr<client::PushLink> pushes;
    std::shared_ptr<client::PushHub> hub;
};

} // namespace zviptv

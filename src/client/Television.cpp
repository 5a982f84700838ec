// SPDX-License-Identifier: MIT
#include <zviptv/client/Television.h>

#include "client/link/Link.h"

#include <zviptv/IPTVTypes.h>

namespace zviptv {

struct Television::Parts
{
    explicit Parts(client::LinkOptions options)
        : link(std::make_shared<client::Link>(std::move(options))), player(link), broadcast(link), guide(link)
    {
    }

    std::shared_ptr<client::Link> link;
    zviptv::Player player;
    zviptv::Broadcast broadcast;
    zviptv::Guide guide;
};

Television::Television() : Television(Options()) {}

Television::Television(Options options)
    : m_parts(std::make_unique<Parts>(client::LinkOptions{
          std::move(options.busAddress),
          IPTVHandleNumber({static_cast<IPTVProfile>(options.profile & 0xFFFFU), options.id}),
          std::move(options.applicationId)}))
{
    m_parts->link->Begin();
}

Television::~Television()
{
    m_parts->link->End();
}

bool Television::IsAvailable() const
{
    return m_parts->link->IsAvailable();
}

Listener Television::OnAvailability(std::function<void(bool isAvailable)> listener)
{
    return m_parts->link->OnAvailability(std::move(listener));
}

void Television::OnError(std::function<void(Failure const&)> handler)
{
    m_parts->link->SetErrorHandler(std::move(handler));
}

Player& Television::Player()
{
    return m_parts->player;
}

Broadcast& Television::Broadcast()
{
    return m_parts->broadcast;
}

Guide& Television::Guide()
{
    return m_parts->guide;
}

} // namespace zviptv

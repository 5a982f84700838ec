// SPDX-License-Identifier: MIT
#include "client/TelevisionParts.h"

#include <zviptv/IPTVTypes.h>
#include <zviptv/Protocol.h>

namespace zviptv {

namespace {

/// The connection of subscriptions to the service. Callbacks may destroy it with the television.
class PushesOfLink : public client::PushLink
{
public:
    explicit PushesOfLink(std::shared_ptr<client::Link> link) : m_link(std::move(link)) {}

    void Request(client::PushKind kind, bool on) override
    {
        namespace function = protocol::function;
        m_link->Pushes().SetWanted(
            kind == client::PushKind::Pes ? function::RequestPESCB : function::RequestCaptionCB, on);
    }
    void ReportUnreadable(char const* function, char const* key, std::string const& message) override
    {
        m_link->Report({FailureKind::MalformedReply, function, key, "", message});
    }
    void Guard(char const* function, std::function<void()> const& code) override
    {
        auto const link = m_link; // the code may end this object
        link->Guard(function, code);
    }

private:
    std::shared_ptr<client::Link> m_link;
};

/// The message in the form that the subscriptions read. Packets keep it alive.
client::Push PushOf(CMessageBuffer&& message)
{
    auto const owner = std::make_shared<CMessageBuffer const>(std::move(message));
    return {owner, [message = owner.get()](char const* key) { return message->GetView(key); }};
}

} // namespace

Television::Parts::Parts(client::LinkOptions options)
    : link(std::make_shared<client::Link>(std::move(options))), player(link), broadcast(link), guide(link),
      pushes(std::make_unique<PushesOfLink>(link)), hub(std::make_shared<client::PushHub>(*pushes))
{
    link->SetPushHandler([hub = hub](CMessageBuffer& message) { hub->Take(PushOf(std::move(message))); });
}

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
    m_parts->hub->Close();
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

Subscription Television::SubscribePes(PesFilter filter, std::function<void(PesPacket const&)> callback)
{
    return m_parts->hub->Add(std::move(filter), std::move(callback));
}

Subscription Television::SubscribeCaptions(std::function<void(CaptionData const&)> callback)
{
    return m_parts->hub->Add(std::move(callback));
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

// SPDX-License-Identifier: MIT
#include "client/link/Failures.h"
#include "client/link/Link.h"

#include <zviptv/ConnectionHelperDBusClient.h>

namespace zviptv::client {

/// The data of an outstanding announcement.
struct Link::Token
{
    std::weak_ptr<Link> link;
    std::shared_ptr<Attachment> attachment;
    EndpointId endpoint;
};

void Link::StartAnnouncing(EndpointId endpoint)
{
    bool& isAnnouncing = m_isAnnouncing[static_cast<std::size_t>(endpoint)];
    if (std::exchange(isAnnouncing, true)) {
        return;
    }
    using Data = UserData<Token>;
    ContextScope const scope(m_context.get());
    Channel& channel = m_adopted->Get(endpoint);
    if (endpoint == EndpointId::DataSubscriber) {
        m_pushes.Forget(); // an announcement begins the channel again
        auto const with = [weak = weak_from_this()](auto const& work) {
            std::shared_ptr<Link> const link = weak.lock();
            if (link != nullptr && !link->m_isEnded) {
                work(*link);
            }
        };
        channel.SetPushHandlers(
            {[with](CMessageBuffer& message) { with([&](Link& link) { link.OnPush(message); }); },
             [with] { with([](Link& link) { link.OnPusherLost(); }); }});
    }
    CConnectionHelperDBusClient client(m_adopted->Connection());
    client.ConnectAsync(
        channel.Helper().GetPublicName(), TypeWord(endpoint), nullptr,
        [](std::string const& partner, void* data) {
            Token const token = Data::Get(data);
            Data::Release(data);
            if (std::shared_ptr<Link> const link = token.link.lock()) {
                link->OnAnnounced(token.attachment, token.endpoint, partner);
            }
        },
        Data::New(Token{weak_from_this(), m_adopted, endpoint}));
}

void Link::OnAnnounced(std::shared_ptr<Attachment> const& attachment, EndpointId endpoint,
                       std::string const& partner)
{
    if (attachment != m_adopted) { // its bus has died
        return;
    }
    m_isAnnouncing[static_cast<std::size_t>(endpoint)] = false;
    Channel& channel = attachment->Get(endpoint);
    std::optional<Failure> failure;
    {
        ContextScope const scope(m_context.get());
        failure = channel.Accept(partner, "");
    }
    if (failure) {
        FailWaiting(endpoint, *failure);
        return;
    }
    if (endpoint == EndpointId::PlayerControl && !m_options.applicationId.empty()) {
        ContextScope const scope(m_context.get());
        Request request = ApplicationIdRequest();
        channel.Helper().SendAsync(
            request.Message(), -1, nullptr, [](CMessageBuffer*, void*) {}, nullptr);
    }
    ProceedWaiting(endpoint);
}

std::optional<Failure> Link::ConnectNow(EndpointId endpoint, Channel& channel, char const* function)
{
    ContextScope const scope(m_context.get());
    std::optional<Failure> failure = channel.ConnectNow(function);
    if (!failure && endpoint == EndpointId::PlayerControl && !m_options.applicationId.empty()) {
        Request request = ApplicationIdRequest();
        CMessageBuffer reply;
        channel.Helper().SendMessage(request.Message(), reply, 0);
    }
    return failure;
}

Request Link::ApplicationIdRequest() const
{
    Request request(EndpointId::PlayerControl, protocol::function::SetAppID, std::nullopt);
    request.Add(protocol::key::AppID, m_options.applicationId);
    return request;
}

} // namespace zviptv::client

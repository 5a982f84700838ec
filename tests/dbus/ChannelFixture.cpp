// SPDX-License-Identifier: MIT
#include "ChannelFixture.h"

#include <utility>

namespace zviptv::test {

CMessageBuffer Message(std::initializer_list<TextEntry> entries)
{
    CMessageBuffer message;
    for (auto const& [key, value] : entries) {
        message.AddValue(key.c_str(), static_cast<int>(value.size()), value.data());
    }
    return message;
}

WireEntries EntriesOf(CMessageBuffer const& message)
{
    WireEntries entries;
    for (int i = 0; i < message.Size(); ++i) {
        entries.push_back({message.GetKey(i), "ay", message.GetValue(i)});
        EXPECT_EQ(message.GetValueOfSize(i), static_cast<int>(entries.back().bytes.size()));
    }
    return entries;
}

TestChannel::TestChannel(std::string const& name)
    : m_path(ChannelObject + name), m_channel(std::make_unique<CProxyDBusHelper>(name))
{
    m_publicName = m_channel->GetPublicName();
    m_channel->SetCallback(HandleMessage, HandleNotification, this);
    m_channel->SetDisconnectNotiCB(HandleDisconnect, this);
}

WireTarget TestChannel::Target(std::string const& member) const
{
    return {m_publicName, m_path, ChannelInterface, member};
}

CMessageBuffer TestChannel::HandleMessage(CMessageBuffer& request, void* self)
{
    auto const& channel = *static_cast<TestChannel*>(self);
    return channel.onMessage ? channel.onMessage(request) : CMessageBuffer();
}

void TestChannel::HandleNotification(CMessageBuffer& notification, void* self)
{
    auto const& channel = *static_cast<TestChannel*>(self);
    if (channel.onNotification) {
        channel.onNotification(notification);
    }
}

void TestChannel::HandleDisconnect(std::string partner, std::string own, void* self)
{
    auto const& channel = *static_cast<TestChannel*>(self);
    if (channel.onDisconnect) {
        channel.onDisconnect(std::move(partner), std::move(own));
    }
}

void ChannelTest::ConnectAndSettle(TestChannel& channel)
{
    ASSERT_EQ(channel->Connect(m_partner.Name()), 1);
    CMessageBuffer message;
    ASSERT_EQ(channel->SendNotification(message), 1);
    ASSERT_TRUE(m_partner.WaitFor(IsSignal("SendSignal"))); // the bus has answered all earlier requests
    auto const former = std::exchange(channel.onNotification, nullptr);
    bool notified = false;
    channel.onNotification = [&](CMessageBuffer&) { notified = true; };
    m_partner.Emit(channel.Target("SendSignal"), WireEntries());
    ASSERT_TRUE(RunUntil([&] { return notified; }));
    RunPending();
    channel.onNotification = former;
    m_log.Clear();
}

} // namespace zviptv::test

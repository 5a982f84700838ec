// SPDX-License-Identifier: MIT
#include "NoFreeDescriptor.h"
#include "ProxyTest.h"

#include <zviptv/CommonNative.h>
#include <zviptv/ConnectionHelperDBusClient.h>
#include <zviptv/ConnectionHelperDBusServer.h>

#include <memory>

using namespace zviptv::test;

namespace {

void SkipWhereChecksNeedADescriptor()
{
    if (ChecksNeedADescriptor) {
        GTEST_SKIP() << ReasonToSkip;
    }
}

/// The process has no free descriptor: what exists works on, and what is made fails, until some are free
/// again.
class NoDescriptor : public ServiceTest
{
protected:
    void SetUp() override { SkipWhereChecksNeedADescriptor(); }
};

TEST_F(NoDescriptor, CallsNeedNone)
{
    IPlayerControl* const player = CreatePlayer();
    ASSERT_NE(player, nullptr);
    NoFreeDescriptor const none;
    EXPECT_TRUE(player->MuteAudio(true));
}

TEST_F(NoDescriptor, CreateGivesNoObject)
{
    {
        NoFreeDescriptor const none;
        EXPECT_FALSE(CConnectionHelperDBusClient::CheckConnection());
        EXPECT_EQ(CreatePlayer(), nullptr);
        EXPECT_EQ(CreateBroadcast(), nullptr);
        EXPECT_EQ(CreateSubscriber(), nullptr);
    }
    ASSERT_NE(CreatePlayer(), nullptr);
    EXPECT_TRUE(CreatePlayer()->MuteAudio(true));
}

TEST_F(NoDescriptor, CreateGivesNoFurtherObjectEither)
{
    IPlayerControl* const player = CreatePlayer();
    {
        NoFreeDescriptor const none;
        EXPECT_EQ(CreateBroadcast(), nullptr);
    }
    ASSERT_NE(CreateBroadcast(), nullptr);
    EXPECT_TRUE(player->MuteAudio(true));
}

TEST_F(NoDescriptor, AGuideMadeWithoutWorksWhenItIsMadeAgain)
{
    std::string genre;
    {
        NoFreeDescriptor const none;
        IIPGUtil* const guide = CreateGuide();
        ASSERT_NE(guide, nullptr);
        EXPECT_FALSE(guide->GetGenre(1, genre));
    }
    CIPTVServiceAPI::DestroyIPGUtil();
    EXPECT_TRUE(CreateGuide()->GetGenre(1, genre));
}

TEST_F(NoDescriptor, DestroyEndsTheObject)
{
    IPlayerControl* const player = CreatePlayer();
    {
        NoFreeDescriptor const none;
        DestroyAll();
        EXPECT_FALSE(player->MuteAudio(true));
    }
    EXPECT_TRUE(CreatePlayer()->MuteAudio(true));
}

TEST_F(NoDescriptor, SubscribingGoesOn)
{
    IIPTVDataSubscriber* const subscriber = CreateSubscriber();
    NoFreeDescriptor const none;
    int key = 0;
    EXPECT_TRUE(subscriber->SubscribeForPES([](ZVPESData&, void*) {}, nullptr, key));
    EXPECT_FALSE(subscriber->UnSubscribeForPES(key));
}

/// The service's own side.
class NoDescriptorOfTheService : public testing::Test
{
protected:
    void SetUp() override { SkipWhereChecksNeedADescriptor(); }
};

TEST_F(NoDescriptorOfTheService, EndpointsAndServerAreMadeAgain)
{
    PrivateBus const bus;
    WirePeer partner;
    for (bool const isFree : {false, true}) {
        auto const none = isFree ? nullptr : std::make_unique<NoFreeDescriptor>();
        CCommonNative endpoint("IPGUTIL");
        EXPECT_EQ(endpoint.Connect(partner.Name()), isFree);
        CConnectionHelperDBusServer::Instance();
        if (isFree) {
            EXPECT_TRUE(
                RunUntil([&] { return !partner.GetNameOwner("org.corvel.zviptvapi.dbushelper").empty(); }));
        }
        CConnectionHelperDBusServer::Destroy();
    }
}

TEST_F(NoDescriptorOfTheService, AChannelOnTheBusConnectsLater)
{
    PrivateBus const bus;
    WirePeer partner;
    CCommonNative endpoint("IPGUTIL");
    {
        NoFreeDescriptor const none;
        EXPECT_FALSE(endpoint.Connect(partner.Name()));
    }
    EXPECT_TRUE(endpoint.Connect(partner.Name()));
}

} // namespace

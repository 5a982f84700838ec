// SPDX-License-Identifier: MIT
#include "FailureText.h"
#include "NoFreeDescriptor.h"
#include "ProxyTest.h"

#include <zviptv/CommonNative.h>
#include <zviptv/ConnectionHelperDBusClient.h>
#include <zviptv/ConnectionHelperDBusServer.h>

#include <memory>

using namespace zviptv::test;

namespace {

void SkipIfChecksNeedADescriptor()
{
    if (ChecksNeedADescriptor) {
        GTEST_SKIP() << ReasonToSkip;
    }
}

/// The process has no free descriptor: existing objects continue to work, and new ones fail, until
/// descriptors are free again.
class NoDescriptor : public ServiceTest
{
protected:
    void SetUp() override { SkipIfChecksNeedADescriptor(); }

    static std::string ShortageOf(std::string const& function)
    {
        return "no bus | " + function +
               " |  |  | too many open files; close some, or raise the limit (ulimit -n)";
    }
};

TEST_F(NoDescriptor, CallsNeedNoDescriptor)
{
    IPlayerControl* const player = CreatePlayer();
    ASSERT_NE(player, nullptr);
    NoFreeDescriptor const none;
    EXPECT_TRUE(player->MuteAudio(true));
}

TEST_F(NoDescriptor, CreateReturnsNoObject)
{
    {
        NoFreeDescriptor const none;
        EXPECT_FALSE(CConnectionHelperDBusClient::CheckConnection());
        EXPECT_EQ(LastFailure(), ShortageOf("CheckConnection"));
        EXPECT_EQ(CreatePlayer(), nullptr);
        EXPECT_EQ(LastFailure(), ShortageOf("CreatePlayerControl"));
        EXPECT_EQ(CreateBroadcast(), nullptr);
        EXPECT_EQ(LastFailure(), ShortageOf("CreateBroadcastData"));
        EXPECT_EQ(CreateSubscriber(), nullptr);
        EXPECT_EQ(LastFailure(), ShortageOf("CreateIPTVDataSubscriber"));
    }
    ASSERT_NE(CreatePlayer(), nullptr);
    EXPECT_TRUE(CreatePlayer()->MuteAudio(true));
}

TEST_F(NoDescriptor, CreateReturnsNoFurtherObject)
{
    IPlayerControl* const player = CreatePlayer();
    {
        NoFreeDescriptor const none;
        EXPECT_EQ(CreateBroadcast(), nullptr);
    }
    ASSERT_NE(CreateBroadcast(), nullptr);
    EXPECT_TRUE(player->MuteAudio(true));
}

TEST_F(NoDescriptor, ARecreatedGuideWorks)
{
    std::string genre;
    {
        NoFreeDescriptor const none;
        IIPGUtil* const guide = CreateGuide();
        ASSERT_NE(guide, nullptr);
        EXPECT_EQ(LastFailure(), ShortageOf("CreateIPGUtil"));
        EXPECT_FALSE(guide->GetGenre(1, genre));
        EXPECT_EQ(LastFailure(), ShortageOf("GetGenre"));
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

TEST_F(NoDescriptor, SubscribingWorks)
{
    IIPTVDataSubscriber* const subscriber = CreateSubscriber();
    NoFreeDescriptor const none;
    int key = 0;
    EXPECT_TRUE(subscriber->SubscribeForPES([](ZVPESData&, void*) {}, nullptr, key));
    EXPECT_EQ(LastFailure(), NoFailure("SubscribeForPES"));
    EXPECT_FALSE(subscriber->UnSubscribeForPES(key));
    EXPECT_EQ(LastFailure(), NoFailure("UnSubscribeForPES"));
}

/// The classes of the service's side.
class NoDescriptorOfTheService : public testing::Test
{
protected:
    void SetUp() override { SkipIfChecksNeedADescriptor(); }
};

TEST_F(NoDescriptorOfTheService, EndpointsAndServerCanBeRecreated)
{
    PrivateBus const bus;
    WirePeer partner;
    for (bool const isFree : {false, true}) {
        auto const none = isFree ? nullptr : std::make_unique<NoFreeDescriptor>();
        CCommonNative endpoint("IPGUTIL");
        EXPECT_EQ(endpoint.Connect(partner.Name()), isFree);
        EXPECT_EQ(ZVGetLastFailure().kind, isFree ? ZV_FAILURE_NONE : ZV_FAILURE_NO_BUS);
        CConnectionHelperDBusServer::Instance();
        EXPECT_EQ(ZVGetLastFailure().kind, isFree ? ZV_FAILURE_NONE : ZV_FAILURE_NO_BUS);
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
        EXPECT_EQ(LastFailure(),
                  "no bus | Connect |  |  | too many open files; close some, or raise the limit (ulimit -n)");
    }
    EXPECT_TRUE(endpoint.Connect(partner.Name()));
}

} // namespace

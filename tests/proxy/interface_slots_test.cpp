// SPDX-License-Identifier: MIT
#include <zviptv/IPTVServiceAPI.h>

#include "proxy/BroadcastDataProxy.h"
#include "proxy/IPGUtilProxy.h"
#include "proxy/IPTVDataSubscriberProxy.h"
#include "proxy/PlayerControlProxy.h"

#include <zviptv/CommonNative.h>
#include <zviptv/ConnectionHelperDBusClient.h>
#include <zviptv/DeferredReply.h>
#include <zviptv/MutexDBus.h>
#include <zviptv/ProxyDBusHelper.h>

#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>
#include <initializer_list>
#include <type_traits>
#include <vector>

namespace {

#if defined(__x86_64__) || defined(__i386__) || defined(__aarch64__) || defined(__arm__)

/// The position of a virtual function, counting the two slots of the destructor.
template <typename Operation>
std::size_t SlotOf(Operation operation)
{
    static_assert(std::is_member_function_pointer_v<Operation>);
    std::size_t offset = 0; // of the slot, plus 1 on x86
    std::memcpy(&offset, &operation, sizeof(offset));
    return offset / sizeof(void*);
}

/// The slot after the virtual functions of a class.
template <typename Class>
struct Following : Class
{
    virtual void Next() = 0;
};

/// The destructor comes first, then exactly these functions.
template <typename Class, typename... Operations>
void ExpectSlotsInOrder(Operations... operations)
{
    std::size_t expected = 2;
    for (std::size_t const slot : std::initializer_list<std::size_t>{SlotOf(operations)...}) {
        EXPECT_EQ(slot, expected++);
    }
    EXPECT_EQ(SlotOf(&Following<Class>::Next), expected);
}

TEST(InterfaceSlots, PlayerControl)
{
    using I = IPlayerControl;
    ExpectSlotsInOrder<I>(&I::SetCurrentAudioByIndex, &I::SetAudioFormat, &I::SetDigitalDualSound,
                          &I::SetCurrentTTX, &I::SetCurrentHybridSBT, &I::GetSTCCount, &I::SetCurrentISDBText,
                          &I::SetCurrentISDBTextService, &I::GetCaptionDataMode, &I::GetDefaultCaptionService,
                          &I::MuteAudio, &I::MuteVideo, &I::GetResolution, &I::SetAppID, &I::GetSourceState,
                          &I::GetFirstPTS);
}

TEST(InterfaceSlots, BroadcastData)
{
    using I = IBroadcastData;
    ExpectSlotsInOrder<I>(&I::GetAudioFormat, &I::GetDigitalDualSound, &I::GetCurrentAudioInfo,
                          &I::SizeOfAudio, &I::GetAudio, &I::SizeOfTTX, &I::GetTTX, &I::GetCurrentTTX,
                          &I::SizeOfHybridSBT, &I::GetHybridSBT, &I::CheckHardOfHearingSBT,
                          &I::GetPreferredHybridSBT, &I::GetCurrentHybridSBT, &I::GetPreferredTTXSubtitle,
                          &I::SizeOfISDBText, &I::GetISDBText, &I::GetCurrentISDBText, &I::GetCaptionLanguage,
                          &I::GetRatingInfo, &I::SetUnlockedInfo, &I::GetRatingLockState,
                          &I::UnMuteByRatingPin, &I::SetUnlockedInfoWhenFactoryMode, &I::FlagServiceLocked);
}

TEST(InterfaceSlots, DataSubscriber)
{
    using I = IIPTVDataSubscriber;
    ExpectSlotsInOrder<I>(&I::SubscribeForCaption, &I::UnsubscribeForCaption, &I::SubscribeForPES,
                          &I::UnSubscribeForPES);
}

TEST(InterfaceSlots, ProgramGuide)
{
    using I = IIPGUtil;
    using ByIndex = bool (I::*)(unsigned int, std::string&);
    using ById = bool (I::*)(IPGProgramId, Program_IPG, std::string&);
    ExpectSlotsInOrder<I>(&I::ExistXmlForIPG, &I::GetProgramListSize, static_cast<ByIndex>(&I::GetProgram),
                          static_cast<ById>(&I::GetProgram), &I::GetPresentProgram, &I::FindProgram,
                          &I::GetRating, &I::GetGenre, &I::GetProgramList, &I::CloneUSBToTV);
}

struct Hooks : CCommonNative
{
    static void Expect()
    {
        ExpectSlotsInOrder<CCommonNative>(&Hooks::t_HandleMessage, &Hooks::t_HandleNotification);
    }
};

TEST(InterfaceSlots, CommonNative)
{
    Hooks::Expect();
}

TEST(InterfaceSlots, ConnectionHelper)
{
    using I = IConnectionHelper;
    ExpectSlotsInOrder<I>(&I::SetDbusSignalCb);
}

TEST(InterfaceSlots, ClassesWithOnlyAVirtualDestructor)
{
    ExpectSlotsInOrder<CAutoLockDBus>();
    ExpectSlotsInOrder<CConnectionHelperDBusClient>();
    ExpectSlotsInOrder<CMessageBuffer>();
    ExpectSlotsInOrder<CProxyDBusHelper>();
}

template <typename... Classes>
void ExpectNothingVirtual()
{
    EXPECT_FALSE((std::is_polymorphic_v<Classes> || ...));
}

TEST(InterfaceSlots, ClassesWithoutVirtualFunctions)
{
    ExpectNothingVirtual<CDeferredReply, CIPTVServiceAPI, CMutexDBus>();
}

#else

TEST(InterfaceSlots, AreCheckedOnX86AndArmOnly)
{
    GTEST_SKIP() << "this test can read a slot from a pointer to a member function only on x86 and ARM";
}

#endif

TEST(ProxyClasses, DeriveFromTheirInterfacesAndNotFromTheEndpoint)
{
    EXPECT_TRUE((std::is_base_of_v<IPlayerControl, CPlayerControlProxy>));
    EXPECT_TRUE((std::is_base_of_v<IBroadcastData, CBroadcastDataProxy>));
    EXPECT_TRUE((std::is_base_of_v<IIPTVDataSubscriber, CIPTVDataSubscriberProxy>));
    EXPECT_TRUE((std::is_base_of_v<IIPGUtil, CIPGUtilProxy>));
    EXPECT_FALSE((std::is_base_of_v<CCommonNative, CPlayerControlProxy>));
    EXPECT_FALSE((std::is_base_of_v<CCommonNative, CBroadcastDataProxy>));
    EXPECT_FALSE((std::is_base_of_v<CCommonNative, CIPTVDataSubscriberProxy>));
    EXPECT_FALSE((std::is_base_of_v<CCommonNative, CIPGUtilProxy>));
}

TEST(ProxyClasses, ApplicationsCannotDeleteThem)
{
    EXPECT_FALSE(std::is_destructible_v<IPlayerControl>);
    EXPECT_FALSE(std::is_destructible_v<IBroadcastData>);
    EXPECT_FALSE(std::is_destructible_v<IIPTVDataSubscriber>);
    EXPECT_FALSE(std::is_destructible_v<IIPGUtil>);
}

} // namespace

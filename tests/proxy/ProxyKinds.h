// SPDX-License-Identifier: MIT
#pragma once

#include <zviptv/IPTVServiceAPI.h>

#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <vector>

namespace zviptv::test {

/// One of the proxies, for tests that apply to all of them.
struct ProxyKind
{
    char const* name;
    char const* type;
    char const* file;
    char const* className;
    /// Creates the object. Returns its address or null.
    void* (*create)(IPTVProfile profile, int id);
    int (*destroy)();
    /// A method that makes one request, which carries the handle if the proxy has one.
    char const* method;
    bool (*call)(void* object);

    void request(void* object) const { EXPECT_TRUE(call(object)); }
    /// The prefix of the log lines of `function`.
    std::string Origin(std::string const& function) const { return std::string(file) + ": " + function; }
};

inline void PrintTo(ProxyKind const& kind, std::ostream* out)
{
    *out << kind.name;
}

inline std::string KindName(testing::TestParamInfo<ProxyKind> const& info)
{
    return info.param.name;
}

template <typename Interface, int (*create)(IPTVProfile, int, Interface**)>
void* CreateWithHandle(IPTVProfile profile, int id)
{
    static int somewhere = 0;
    auto* out = reinterpret_cast<Interface*>(&somewhere); // to be overwritten
    EXPECT_EQ(create(profile, id, &out), 0);
    return out;
}

inline void* CreateGuideWithoutHandle(IPTVProfile /*profile*/, int /*id*/)
{
    IIPGUtil* guide = nullptr;
    EXPECT_EQ(CIPTVServiceAPI::CreateIPGUtil(&guide), 0);
    return guide;
}

/// The proxies that need the service when they are created, and that have a handle.
inline std::vector<ProxyKind> KindsWithHandle()
{
    using Api = CIPTVServiceAPI;
    return {
        {"PlayerControl", "PLAYERCONTROL", "PlayerControlProxy.cpp", "CPlayerControlProxy",
         CreateWithHandle<IPlayerControl, Api::CreatePlayerControl>, Api::DestroyPlayerControl, "MuteAudio",
         [](void* object) { return static_cast<IPlayerControl*>(object)->MuteAudio(true); }},
        {"BroadcastData", "BROADCASTDATA", "BroadcastDataProxy.cpp", "CBroadcastDataProxy",
         CreateWithHandle<IBroadcastData, Api::CreateBroadcastData>, Api::DestroyBroadcastData,
         "UnMuteByRatingPin",
         [](void* object) { return static_cast<IBroadcastData*>(object)->UnMuteByRatingPin(); }},
        {"DataSubscriber", "IPTVDATASUBSCRIBER", "IPTVDataSubscriberProxy.cpp", "CIPTVDataSubscriberProxy",
         CreateWithHandle<IIPTVDataSubscriber, Api::CreateIPTVDataSubscriber>, Api::DestroyIPTVDataSubscriber,
         "SubscribeForPES",
         [](void* object) {
             int key = 0;
             return static_cast<IIPTVDataSubscriber*>(object)->SubscribeForPES([](ZVPESData&, void*) {},
                                                                               nullptr, key);
         }},
    };
}

inline ProxyKind GuideKind()
{
    return {"ProgramGuide",
            "IPGUTIL",
            "IPGUtilProxy.cpp",
            "CIPGUtilProxy",
            CreateGuideWithoutHandle,
            CIPTVServiceAPI::DestroyIPGUtil,
            "GetGenre",
            [](void* object) {
                std::string genre;
                return static_cast<IIPGUtil*>(object)->GetGenre(1, genre);
            }};
}

inline std::vector<ProxyKind> AllKinds()
{
    std::vector<ProxyKind> kinds = KindsWithHandle();
    kinds.push_back(GuideKind());
    return kinds;
}

} // namespace zviptv::test

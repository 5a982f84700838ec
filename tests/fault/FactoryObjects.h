// SPDX-License-Identifier: MIT
#pragma once

#include <zviptv/IPTVServiceAPI.h>

#include <string>

namespace zviptv::test {

/// All four objects of the factory, as in an application.
struct FactoryObjects
{
    ~FactoryObjects() { Destroy(); }

    void Create()
    {
        player = nullptr;
        broadcast = nullptr;
        subscriber = nullptr;
        guide = nullptr;
        CIPTVServiceAPI::CreatePlayerControl(IPTV_PROFILE_DEFAULT, 0, &player);
        CIPTVServiceAPI::CreateBroadcastData(IPTV_PROFILE_DEFAULT, 0, &broadcast);
        CIPTVServiceAPI::CreateIPTVDataSubscriber(IPTV_PROFILE_DEFAULT, 0, &subscriber);
        CIPTVServiceAPI::CreateIPGUtil(&guide);
    }

    static void Destroy()
    {
        CIPTVServiceAPI::DestroyPlayerControl();
        CIPTVServiceAPI::DestroyBroadcastData();
        CIPTVServiceAPI::DestroyIPTVDataSubscriber();
        CIPTVServiceAPI::DestroyIPGUtil();
    }

    bool AreThere() const
    {
        return player != nullptr && broadcast != nullptr && subscriber != nullptr && guide != nullptr;
    }

    /// How many of the three objects that can report it reach the service.
    int Answered() const
    {
        std::string genre;
        return (player->MuteAudio(true) ? 1 : 0) + (broadcast->UnMuteByRatingPin() ? 1 : 0) +
               (guide->GetGenre(1, genre) ? 1 : 0);
    }

    /// Ends its subscription if the test requests it.
    bool Subscribe(bool andUnsubscribe) const
    {
        int key = 0;
        bool const done = subscriber->SubscribeForPES([](ZVPESData&, void*) {}, nullptr, key);
        if (done && andUnsubscribe) {
            subscriber->UnSubscribeForPES(key);
        }
        return done;
    }

    IPlayerControl* player = nullptr;
    IBroadcastData* broadcast = nullptr;
    IIPTVDataSubscriber* subscriber = nullptr;
    IIPGUtil* guide = nullptr;
};

} // namespace zviptv::test

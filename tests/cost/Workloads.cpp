// SPDX-License-Identifier: MIT
#include "Workloads.h"

#include "LocalChannel.h"
#include "Messages.h"
#include "Require.h"

#include <zviptv/IPTVServiceAPI.h>

#include <memory>

namespace zviptv::test {

namespace {

constexpr std::size_t RatingCount = 100;
constexpr std::size_t PESSize = 64 * 1024;
constexpr std::size_t LargeSize = 1024 * 1024;

/// A request and its reply, as short as they get.
Workload MuteAudio()
{
    auto const player = std::make_shared<IPlayerControl*>();
    auto const prepare = [player] {
        CMessageBuffer reply;
        reply.SetResult(1);
        SetReply(reply);
        CIPTVServiceAPI::CreatePlayerControl(IPTV_PROFILE_DEFAULT, 0, player.get());
    };
    auto const run = [player] { Require((*player)->MuteAudio(true), "MuteAudio is accepted"); };
    return {"mute_audio", 200, prepare, run};
}

/// A reply with records.
Workload GetRatingInfo()
{
    auto const data = std::make_shared<IBroadcastData*>();
    auto const prepare = [data] {
        std::string const records(RatingCount * sizeof(ZVRatingInfo), '\x05');
        CMessageBuffer reply;
        reply.SetResult(1);
        reply.AddValue("ratingInfoSize", std::to_string(RatingCount).c_str());
        reply.AddValue("ratingInfo", static_cast<int>(records.size()), records.data());
        SetReply(reply);
        CIPTVServiceAPI::CreateBroadcastData(IPTV_PROFILE_DEFAULT, 0, data.get());
    };
    auto const run = [data] {
        std::vector<ZVRatingInfo> ratings;
        Require((*data)->GetRatingInfo(ratings) && ratings.size() == RatingCount, "the ratings arrive");
    };
    return {"get_rating_info_100", 200, prepare, run};
}

std::size_t pushed = 0;

void Subscribe()
{
    static int key = 0;
    CMessageBuffer reply;
    reply.SetResult(1);
    SetReply(reply);
    IIPTVDataSubscriber* subscriber = nullptr;
    CIPTVServiceAPI::CreateIPTVDataSubscriber(IPTV_PROFILE_DEFAULT, 0, &subscriber);
    if (key == 0) {
        subscriber->SubscribeForPES([](ZVPESData& pes, void*) { pushed = pes.data.size(); }, nullptr, key);
    }
}

/// A PES packet, from its arrival to the callback.
Workload PushPES()
{
    auto const body = std::make_shared<Owned<GVariant>>();
    auto const prepare = [body] {
        Subscribe();
        std::string const packet(PESSize, 'p');
        CMessageBuffer notification;
        notification.AddValue("functionname", "PESCB");
        notification.AddValue("pesDataSize", std::to_string(packet.size()).c_str());
        notification.AddValue("pesType", "1");
        notification.AddValue("pesPID", "257");
        notification.AddValue("pesPTS", "900000");
        notification.AddValue("pesData", static_cast<int>(packet.size()), packet.data());
        *body = Arrived(EncodeForPeer(notification).get());
    };
    auto const run = [body] {
        pushed = 0;
        Notify(body->get());
        Require(pushed == PESSize, "the callback gets the packet");
    };
    return {"push_pes_64k", 50, prepare, run};
}

/// The announcement of a channel, there and back.
Workload Announce()
{
    auto const message = std::make_shared<CMessageBuffer>();
    auto const prepare = [message] {
        *message = CMessageBuffer();
        message->AddValue("dbusname", ":1.42");
        message->AddValue("type", "PLAYERCONTROL");
        message->AddValue("add", "y");
    };
    auto const run = [message] {
        Require(DecodeFromHelper(EncodeForHelper(*message).get()).Size() == 3, "the pairs arrive");
    };
    return {"helper_message", 200, prepare, run};
}

/// A message of `entries` values of `size` bytes, there and back.
Workload RoundTrip(char const* name, int rounds, std::size_t entries, std::size_t size)
{
    auto const message = std::make_shared<CMessageBuffer>();
    auto const prepare = [=] { *message = MakeMessage(entries, size); };
    auto const run = [=] {
        CMessageBuffer const decoded = DecodeFromPeer(EncodeForPeer(*message).get());
        Require(decoded.Size() == static_cast<int>(entries) &&
                    decoded.GetValueOfSize(0) == static_cast<int>(size),
                "the entries arrive");
    };
    return {name, rounds, prepare, run};
}

} // namespace

std::vector<Workload> AllWorkloads()
{
    return {MuteAudio(),
            GetRatingInfo(),
            PushPES(),
            Announce(),
            RoundTrip("peer_message_1000_entries", 10, 1000, 16),
            RoundTrip("peer_message_1_mib", 10, 1, LargeSize)};
}

} // namespace zviptv::test

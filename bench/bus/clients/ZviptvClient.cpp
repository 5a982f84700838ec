// SPDX-License-Identifier: MIT
#include "Client.h"

#include <zviptv/IPTVServiceAPI.h>

#include <glib.h>

#include <ctime>
#include <stdexcept>
#include <string>
#include <vector>

// Keys of subscriptions are derived from the clock's second, so each new one must wait for the next second.
// This clock, which the library also uses, advances when the program tells it to.
namespace {
std::time_t now = 1'000'000'000;
}

// NOLINTNEXTLINE(readability-inconsistent-declaration-parameter-name): the header's name is a reserved one
extern "C" std::time_t time(std::time_t* result) noexcept
{
    if (result != nullptr) {
        *result = now;
    }
    return now;
}

namespace zviptv::bench {

namespace {

Receiver receiver = nullptr;

void OnPes(ZVPESData& pes, void* /*userData*/)
{
    receiver({pes.type, pes.pid, pes.pts, reinterpret_cast<char const*>(pes.data.data()), pes.data.size()});
}

void Check(bool done, char const* what)
{
    if (!done) {
        throw std::runtime_error(std::string(what) + " failed");
    }
}

class ZviptvClient final : public Client
{
public:
    ZviptvClient()
    {
        CIPTVServiceAPI::CreatePlayerControl(IPTV_PROFILE_DEFAULT, 0, &m_player);
        Check(m_player != nullptr, "CreatePlayerControl");
    }

    ~ZviptvClient() override
    {
        CIPTVServiceAPI::DestroyIPTVDataSubscriber();
        CIPTVServiceAPI::DestroyBroadcastData();
        CIPTVServiceAPI::DestroyPlayerControl();
    }

    void MuteAudio(bool on) override { Check(m_player->MuteAudio(on), "MuteAudio"); }

    unsigned int GetRatingInfo() override
    {
        if (m_broadcast == nullptr) {
            CIPTVServiceAPI::CreateBroadcastData(IPTV_PROFILE_DEFAULT, 0, &m_broadcast);
            Check(m_broadcast != nullptr, "CreateBroadcastData");
        }
        Check(m_broadcast->GetRatingInfo(m_ratings), "GetRatingInfo");
        return wire::SumOf(m_ratings);
    }

    void Subscribe(Receiver to) override
    {
        receiver = to;
        if (m_subscriber == nullptr) {
            CIPTVServiceAPI::CreateIPTVDataSubscriber(IPTV_PROFILE_DEFAULT, 0, &m_subscriber);
            Check(m_subscriber != nullptr, "CreateIPTVDataSubscriber");
        }
        ++now;
        int key = 0;
        Check(m_subscriber->SubscribeForPES(OnPes, nullptr, key), "SubscribeForPES");
        m_keys.push_back(key);
    }

    void Unsubscribe() override
    {
        for (int const key : m_keys) {
            m_subscriber->UnSubscribeForPES(key);
        }
        m_keys.clear();
    }

    void Dispatch() override { g_main_context_iteration(nullptr, TRUE); }

private:
    IPlayerControl* m_player = nullptr;
    IBroadcastData* m_broadcast = nullptr;
    IIPTVDataSubscriber* m_subscriber = nullptr;
    std::vector<ZVRatingInfo> m_ratings;
    std::vector<int> m_keys;
};

} // namespace

std::unique_ptr<Client> NewClient(std::string const& /*service*/)
{
    return std::make_unique<ZviptvClient>();
}

} // namespace zviptv::bench

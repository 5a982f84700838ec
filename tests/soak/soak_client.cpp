// SPDX-License-Identifier: MIT
// One application of the soak: uses all four objects, calls of every kind and PES packets, until it is
// terminated. Prints its figures every second, as one line of JSON.
#include <zviptv/IPTVServiceAPI.h>

#include <gio/gio.h>
#include <glib-unix.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <exception>
#include <string>

namespace {

constexpr char HelperName[] = "org.corvel.zviptvapi.dbushelper";
constexpr unsigned CallPeriodMs = 4;
constexpr unsigned RenewalPeriod = 251; ///< after this number of calls, one object is destroyed and recreated
constexpr int PesHeaderSize = 14;

struct Figures
{
    unsigned long calls = 0;
    unsigned long refused = 0;    ///< of the calls: false came back
    unsigned long absent = 0;     ///< of the calls: there was no object to call
    unsigned long exceptions = 0; ///< of the calls
    unsigned long packets = 0;
    unsigned long damaged = 0; ///< of the packets: other bytes than the stream's
    unsigned long losses = 0;  ///< how often the service went
};

Figures figures;
bool served = false;
IIPTVDataSubscriber* subscribed = nullptr;

/// The payload of the stream's packets repeats one byte.
void OnPacket(ZVPESData& pes, void* /*userData*/)
{
    ++figures.packets;
    auto const& data = pes.data;
    bool const whole = data.size() > static_cast<std::size_t>(PesHeaderSize) &&
                       std::all_of(data.begin() + PesHeaderSize, data.end(),
                                   [&](std::uint8_t byte) { return byte == data[PesHeaderSize]; });
    figures.damaged += whole ? 0U : 1U;
}

/// Objects end with the service, so each call gets its object from the factory.
template <typename Interface, typename Call>
bool With(int (*create)(IPTVProfile, int, Interface**), Call const& call)
{
    Interface* object = nullptr;
    create(IPTV_PROFILE_DEFAULT, 0, &object);
    if (object == nullptr) {
        ++figures.absent;
        return true;
    }
    return call(*object);
}

bool WithPlayer(bool (*call)(IPlayerControl&))
{
    return With(CIPTVServiceAPI::CreatePlayerControl, call);
}

bool WithBroadcast(bool (*call)(IBroadcastData&))
{
    return With(CIPTVServiceAPI::CreateBroadcastData, call);
}

bool AskGuide()
{
    IIPGUtil* guide = nullptr;
    CIPTVServiceAPI::CreateIPGUtil(&guide);
    std::string programme;
    return guide != nullptr && guide->GetPresentProgram(1, programme);
}

/// Keys depend on the clock's second: a subscription that gets no key is made by a later call.
bool Subscribe()
{
    return With(CIPTVServiceAPI::CreateIPTVDataSubscriber, [](IIPTVDataSubscriber& subscriber) {
        int key = 0;
        if (subscribed != &subscriber && subscriber.SubscribeForPES(OnPacket, nullptr, key)) {
            subscribed = &subscriber;
        }
        return true;
    });
}

bool CallNext(unsigned turn)
{
    switch (turn % 8) {
    case 0:
        return WithPlayer([](IPlayerControl& player) { return player.MuteAudio(false); });
    case 1:
        return WithPlayer([](IPlayerControl& player) {
            unsigned long long clock = 0;
            return player.GetSTCCount(clock);
        });
    case 2:
        return WithPlayer([](IPlayerControl& player) {
            EZVSourceState state = ZV_SOURCE_STATE_UNKNOWN;
            return player.GetSourceState(state);
        });
    case 3:
        return WithBroadcast([](IBroadcastData& broadcast) {
            unsigned int size = 0;
            return broadcast.SizeOfAudio(size);
        });
    case 4:
        return WithBroadcast([](IBroadcastData& broadcast) {
            std::vector<ZVRatingInfo> ratings;
            return broadcast.GetRatingInfo(ratings);
        });
    case 5:
        return WithBroadcast([](IBroadcastData& broadcast) {
            bool locked = false;
            return broadcast.GetRatingLockState(locked);
        });
    case 6:
        return AskGuide();
    default:
        return Subscribe();
    }
}

void DestroySubscriber()
{
    subscribed = nullptr;
    CIPTVServiceAPI::DestroyIPTVDataSubscriber();
}

void Renew(unsigned turn)
{
    switch (turn % 4) {
    case 0:
        CIPTVServiceAPI::DestroyPlayerControl();
        break;
    case 1:
        CIPTVServiceAPI::DestroyBroadcastData();
        break;
    case 2:
        CIPTVServiceAPI::DestroyIPGUtil();
        break;
    default:
        DestroySubscriber();
        break;
    }
}

gboolean Tick(gpointer /*data*/)
{
    static unsigned turn = 0;
    if (!served) {
        return G_SOURCE_CONTINUE;
    }
    try {
        ++figures.calls;
        figures.refused += CallNext(turn) ? 0U : 1U;
    } catch (std::exception const& error) {
        ++figures.exceptions;
        std::fprintf(stderr, "call %u: %s\n", turn % 8, error.what());
    }
    if (++turn % RenewalPeriod == 0) {
        Renew(turn / RenewalPeriod);
    }
    return G_SOURCE_CONTINUE;
}

gboolean Print(gpointer /*data*/)
{
    std::printf(
        "{\"calls\":%lu,\"refused\":%lu,\"absent\":%lu,\"exceptions\":%lu,\"packets\":%lu,\"damaged\":%lu,"
        "\"losses\":%lu}\n",
        figures.calls, figures.refused, figures.absent, figures.exceptions, figures.packets, figures.damaged,
        figures.losses);
    std::fflush(stdout);
    return G_SOURCE_CONTINUE;
}

void ServiceCame(GDBusConnection* /*bus*/, char const* /*name*/, char const* /*owner*/, gpointer /*data*/)
{
    served = true;
}

/// Player control and broadcast data may have destroyed themselves before.
void ServiceWent(GDBusConnection* /*bus*/, char const* /*name*/, gpointer /*data*/)
{
    figures.losses += served ? 1U : 0U;
    served = false;
    DestroySubscriber();
    CIPTVServiceAPI::DestroyPlayerControl();
    CIPTVServiceAPI::DestroyBroadcastData();
    CIPTVServiceAPI::DestroyIPGUtil();
}

gboolean Quit(gpointer loop)
{
    g_main_loop_quit(static_cast<GMainLoop*>(loop));
    return G_SOURCE_CONTINUE;
}

} // namespace

int main()
{
    GMainLoop* const loop = g_main_loop_new(nullptr, FALSE);
    guint const watch = g_bus_watch_name(G_BUS_TYPE_SYSTEM, HelperName, G_BUS_NAME_WATCHER_FLAGS_NONE,
                                         ServiceCame, ServiceWent, nullptr, nullptr);
    g_timeout_add(CallPeriodMs, Tick, nullptr);
    g_timeout_add_seconds(1, Print, nullptr);
    g_unix_signal_add(SIGTERM, Quit, loop);
    g_main_loop_run(loop);
    g_bus_unwatch_name(watch);
    served = false; // the end of this process is not a loss
    ServiceWent(nullptr, nullptr, nullptr);
    Print(nullptr);
    g_main_loop_unref(loop);
}

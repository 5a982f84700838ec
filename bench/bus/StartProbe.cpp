// SPDX-License-Identifier: MIT
// Measures the cost of an object: the time from Create to its first answered call, and its heap and match
// rules. Prints one line of JSON for the object whose name is given.
#include "Process.h"
#include "glib/Owned.h"

#include <zviptv/IPTVServiceAPI.h>

#include <array>
#include <cstdio>
#include <cstring>
#include <exception>
#include <stdexcept>

namespace {

using namespace zviptv::bench;

bool StartPlayer()
{
    IPlayerControl* player = nullptr;
    CIPTVServiceAPI::CreatePlayerControl(IPTV_PROFILE_DEFAULT, 0, &player);
    return player != nullptr && player->MuteAudio(true);
}

bool StartBroadcast()
{
    IBroadcastData* broadcast = nullptr;
    std::vector<ZVRatingInfo> ratings;
    CIPTVServiceAPI::CreateBroadcastData(IPTV_PROFILE_DEFAULT, 0, &broadcast);
    return broadcast != nullptr && broadcast->GetRatingInfo(ratings);
}

bool StartSubscriber()
{
    IIPTVDataSubscriber* subscriber = nullptr;
    int key = 0;
    CIPTVServiceAPI::CreateIPTVDataSubscriber(IPTV_PROFILE_DEFAULT, 0, &subscriber);
    return subscriber != nullptr && subscriber->SubscribeForPES([](ZVPESData&, void*) {}, nullptr, key);
}

bool StartGuide()
{
    IIPGUtil* guide = nullptr;
    bool exists = false;
    CIPTVServiceAPI::CreateIPGUtil(&guide);
    return guide != nullptr && guide->ExistXmlForIPG(exists) && exists;
}

struct Object
{
    char const* name;
    bool (*start)();
    int (*end)();
};

constexpr std::array<Object, 4> Objects{{
    {"PlayerControl", StartPlayer, CIPTVServiceAPI::DestroyPlayerControl},
    {"BroadcastData", StartBroadcast, CIPTVServiceAPI::DestroyBroadcastData},
    {"IPTVDataSubscriber", StartSubscriber, CIPTVServiceAPI::DestroyIPTVDataSubscriber},
    {"IPGUtil", StartGuide, CIPTVServiceAPI::DestroyIPGUtil},
}};

std::int64_t Start(Object const& object)
{
    std::int64_t const before = Now();
    if (!object.start()) {
        throw std::runtime_error(std::string(object.name) + " cannot be created or does not answer");
    }
    return Now() - before;
}

/// The number of match rules of this process on the bus; -1 if the bus does not report it.
long MatchRules()
{
    zviptv::Error error;
    zviptv::Owned<GDBusConnection> const connection(g_bus_get_sync(G_BUS_TYPE_SYSTEM, nullptr, error.Out()));
    if (connection == nullptr) {
        throw std::runtime_error(error.Message());
    }
    zviptv::Owned<GVariant> const answer(g_dbus_connection_call_sync(
        connection.get(), "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus.Debug.Stats",
        "GetConnectionStats", g_variant_new("(s)", g_dbus_connection_get_unique_name(connection.get())),
        G_VARIANT_TYPE("(a{sv})"), G_DBUS_CALL_FLAGS_NONE, -1, nullptr, nullptr));
    if (answer == nullptr) {
        return -1;
    }
    zviptv::Owned<GVariant> const values(g_variant_get_child_value(answer.get(), 0));
    guint32 rules = 0;
    bool const known = g_variant_lookup(values.get(), "MatchRules", "u", &rules) != FALSE;
    return known ? static_cast<long>(rules) : -1;
}

/// Measures the first object of the process, which connects to the bus, then one while another object exists.
void Probe(Object const& object, Object const& other)
{
    std::int64_t const first = Start(object);
    object.end();
    Start(other);
    long const rules = MatchRules();
    std::size_t const heap = HeapBytes();
    std::int64_t const further = Start(object);
    long const added = rules < 0 ? -1 : MatchRules() - rules;
    std::printf("{\"first\": %lld, \"further\": %lld, \"heap\": %zu, \"matches\": %ld}\n",
                static_cast<long long>(first), static_cast<long long>(further), HeapBytes() - heap, added);
    object.end();
    other.end();
}

void ProbeNamed(char const* name)
{
    for (std::size_t i = 0; i < Objects.size(); ++i) {
        if (std::strcmp(Objects[i].name, name) == 0) {
            Probe(Objects[i], Objects[(i + 1) % Objects.size()]);
            return;
        }
    }
    throw std::runtime_error(std::string("unknown object: ") + name);
}

} // namespace

int main(int argc, char** argv)
{
    DieWithParent();
    try {
        ProbeNamed(argc > 1 ? argv[1] : "");
    } catch (std::exception const& failure) {
        std::fprintf(stderr, "bench_start_probe: %s\n", failure.what());
        return 1;
    }
    return 0;
}

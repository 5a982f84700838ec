// SPDX-License-Identifier: MIT
// Receives ten PES packets. Pushed data needs a GLib main loop, whose thread runs the callback.
#include <zviptv/IPTVServiceAPI.h>

#include <glib.h>

#include <iostream>

namespace {

GMainLoop* loop = nullptr;
int packets = 0;

void OnPacket(ZVPESData& pes, void* /*userData*/)
{
    if (packets == 10) {
        return; // it arrived before the loop ended
    }
    std::cout << "PID " << (pes.pid & 0xFFFF) << ", PTS " << pes.pts << ", " << pes.data.size() << " bytes\n";
    if (++packets == 10) {
        g_main_loop_quit(loop);
    }
}

} // namespace

int main()
{
    IIPTVDataSubscriber* subscriber = nullptr;
    CIPTVServiceAPI::CreateIPTVDataSubscriber(IPTV_PROFILE_DEFAULT, 0, &subscriber);
    if (subscriber == nullptr) {
        std::cerr << ZVGetLastFailure().message << "\n";
        return 3;
    }
    loop = g_main_loop_new(nullptr, FALSE);
    int key = 0;
    if (subscriber->SubscribeForPES(OnPacket, nullptr, key)) {
        g_main_loop_run(loop);
        subscriber->UnSubscribeForPES(key);
    } else {
        std::cerr << ZVGetLastFailure().message << "\n";
    }
    CIPTVServiceAPI::DestroyIPTVDataSubscriber();
    g_main_loop_unref(loop);
    return packets == 10 ? 0 : 1;
}

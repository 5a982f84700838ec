// SPDX-License-Identifier: MIT
// A user's program that uses every kind of export of the library.
#include <zviptv/CommonNative.h>
#include <zviptv/ConnectionHelperDBusClient.h>
#include <zviptv/IPTVServiceAPI.h>
#include <zviptv/MutexDBus.h>
#include <zviptv/ProxyDBusHelper.h>
#include <zviptv/SystemLog.h>

#include <iostream>

namespace {

int lines = 0;

void Count(EZVLogPriority, char const*, char const*, void*)
{
    ++lines;
}

class Native : public CCommonNative
{
public:
    Native() : CCommonNative("PLAYERCONTROL") {}

    CMessageBuffer t_HandleMessage(CMessageBuffer& message) override
    {
        CMessageBuffer reply = CCommonNative::t_HandleMessage(message);
        reply.SetResult(message.Size());
        return reply;
    }
};

} // namespace

int main()
{
    ZVSetLogSink(Count, nullptr);
    IPlayerControl* player = nullptr;
    CIPTVServiceAPI::CreatePlayerControl(IPTV_PROFILE_DEFAULT, 0, &player);
    std::cout << "player control: " << (player == nullptr ? "null" : "there") << "\n";
    CIPTVServiceAPI::DestroyPlayerControl();

    Native native;
    std::cout << "connected: " << native.Connect(":1.1") << "\n";
    CMutexDBus mutex;
    CAutoLockDBus const lock(mutex);
    CMessageBuffer message;
    message.AddValue("functionname", "MuteAudio");
    std::cout << "reply: " << native.t_HandleMessage(message).GetResult() << "\n";
    std::cout << "log lines: " << (lines > 0 ? "some" : "none") << "\n";
    ZVSetLogSink(nullptr, nullptr);
    return CConnectionHelperDBusClient::CheckConnection() ? 1 : 0;
}

// SPDX-License-Identifier: MIT
// A service that plays and can be muted, built from the library's classes. Runs until it is killed.
#include <zviptv/CommonNative.h>
#include <zviptv/IPTVServiceAPI.h>
#include <zviptv/Protocol.h>

#include <glib.h>

#include <iostream>
#include <string>

namespace {

namespace protocol = zviptv::protocol;

class PlayerEndpoint final : public CCommonNative
{
public:
    using CCommonNative::CCommonNative;

private:
    CMessageBuffer t_HandleMessage(CMessageBuffer& request) override
    {
        std::string const function = request.GetValue(protocol::key::FunctionName);
        bool const on = request.GetValue(protocol::key::OnOff) == "1";
        CMessageBuffer reply;
        if (function == protocol::function::MuteAudio) {
            std::cout << (on ? "muted" : "unmuted") << std::endl;
            reply.SetResult(1);
        } else if (function == protocol::function::GetSourceState) {
            reply.SetResult(1);
            reply.AddValue(protocol::key::SourceState, std::to_string(ZV_SOURCE_STATE_PLAYING).c_str());
        } else {
            reply.SetResult(0);
        }
        return reply;
    }
};

/// An application announces a channel; the answer is the endpoint that it should call.
std::string OnAnnouncement(std::string /*busName*/, std::string type, std::string /*add*/, void* endpoint)
{
    bool const known = type == protocol::type::PlayerControl;
    return known ? static_cast<PlayerEndpoint*>(endpoint)->GetPublicName() : std::string();
}

} // namespace

int main()
{
    PlayerEndpoint endpoint(protocol::type::PlayerControl);
    IConnectionHelper* helper = nullptr;
    CIPTVServiceAPI::CreateConnectionHelper(&helper);
    if (ZVGetLastFailure().kind != ZV_FAILURE_NONE) {
        std::cerr << ZVGetLastFailure().message << "\n";
        return 3;
    }
    helper->SetDbusSignalCb(OnAnnouncement, &endpoint);
    g_main_loop_run(g_main_loop_new(nullptr, FALSE));
}

// A service that can be muted, made of the library's building blocks. Runs until it is killed.
#include <zviptv/CommonNative.h>
#include <zviptv/IPTVServiceAPI.h>
#include <zviptv/Protocol.h>

#include <glib.h>

#include <iostream>

namespace {

namespace protocol = zviptv::protocol;

class PlayerEndpoint final : public CCommonNative
{
public:
    using CCommonNative::CCommonNative;

private:
    CMessageBuffer t_HandleMessage(CMessageBuffer& request) override
    {
        bool const isMute = request.GetValue(protocol::key::FunctionName) == protocol::function::MuteAudio;
        bool const on = request.GetValue(protocol::key::OnOff) == "1";
        if (isMute) {
            std::cout << (on ? "muted" : "unmuted") << std::endl;
        }
        CMessageBuffer reply;
        reply.SetResult(isMute ? 1 : 0);
        return reply;
    }
};

/// An application announces a channel; the answer is the endpoint that it is to talk to.
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
    helper->SetDbusSignalCb(OnAnnouncement, &endpoint);
    g_main_loop_run(g_main_loop_new(nullptr, FALSE));
}

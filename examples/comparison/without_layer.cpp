// SPDX-License-Identifier: MIT
// Does the same as with_layer.cpp with the interface of zviptv/IPTVServiceAPI.h.
#include <zviptv/IPTVServiceAPI.h>

#include <glib.h>
#include <json/json.h>

#include <iostream>
#include <memory>

namespace {

/// The objects of one run of the service. They are created again when it has restarted.
struct Session
{
    IPlayerControl* player = nullptr;
    IBroadcastData* data = nullptr;
    IIPTVDataSubscriber* subscriber = nullptr;
    IIPGUtil* guide = nullptr;
    int subscription = -1;
    bool isShown = false;
    int packets = 0;
};
Session session;

void OnPacket(ZVPESData& pes, void* /*userData*/)
{
    if ((pes.pid & 0x1FFF) == 0x101 && ++session.packets <= 3) {
        std::cout << "packet: PID " << pes.pid << ", " << pes.data.size() << " bytes" << std::endl;
    }
}

void End()
{
    if (session.subscription >= 0) {
        session.subscriber->UnSubscribeForPES(session.subscription);
    }
    CIPTVServiceAPI::DestroyPlayerControl();
    CIPTVServiceAPI::DestroyBroadcastData();
    CIPTVServiceAPI::DestroyIPTVDataSubscriber();
    CIPTVServiceAPI::DestroyIPGUtil();
    session = Session();
}

bool Begin()
{
    CIPTVServiceAPI::CreatePlayerControl(IPTV_PROFILE_DEFAULT, 0, &session.player);
    if (session.player == nullptr) {
        return false;
    }
    CIPTVServiceAPI::CreateBroadcastData(IPTV_PROFILE_DEFAULT, 0, &session.data);
    CIPTVServiceAPI::CreateIPTVDataSubscriber(IPTV_PROFILE_DEFAULT, 0, &session.subscriber);
    CIPTVServiceAPI::CreateIPGUtil(&session.guide);
    if (session.data == nullptr || session.subscriber == nullptr || session.guide == nullptr ||
        !session.subscriber->SubscribeForPES(OnPacket, nullptr, session.subscription)) {
        End();
        return false;
    }
    return true;
}

void ShowTracks(unsigned int audioTracks)
{
    for (unsigned int i = 0; i < audioTracks; ++i) {
        ZVAudio track{};
        if (session.data->GetAudio(i, track)) {
            std::cout << "audio: " << ZVLanguageToISO639(track.language) << ", PID " << track.pid << "\n";
        }
    }
    unsigned int subtitles = 0;
    session.data->SizeOfHybridSBT(subtitles);
    for (unsigned int i = 0; i < subtitles; ++i) {
        EZVLanguageCode language = ZV_LANGUAGE_UNKNOWN;
        ZVHybridSBT subtitle{};
        if (session.data->GetHybridSBT(i, language, subtitle)) {
            std::cout << "subtitle: " << ZVLanguageToISO639(language) << ", PID " << subtitle.pid << "\n";
        }
    }
}

Json::Value Parse(std::string const& text)
{
    Json::Value value;
    std::unique_ptr<Json::CharReader> const reader(Json::CharReaderBuilder().newCharReader());
    bool const isRead = reader->parse(text.data(), text.data() + text.size(), &value, nullptr);
    return isRead && value.isObject() ? value : Json::Value();
}

void ShowGuide()
{
    std::string text;
    if (!session.guide->GetPresentProgram(1, text)) {
        return;
    }
    Json::Value const now = Parse(text);
    if (!now["title"].isString() || !now["event_id"].isUInt() || !now["start_time"].isUInt()) {
        return;
    }
    std::cout << "now: " << now["title"].asString() << "\n";
    IPGProgramId id{};
    id.serviceId = 1;
    id.eventId = static_cast<std::uint16_t>(now["event_id"].asUInt());
    id.startTime = now["start_time"].asUInt();
    bool const isKnown = session.guide->GetProgram(id, PROGRAM_IPG_NEXT, text);
    Json::Value const next = isKnown ? Parse(text) : Json::Value();
    std::cout << "next: " << (next["title"].isString() ? next["title"].asString() : "unknown") << "\n";
}

void Show(EZVSourceState state, unsigned int audioTracks)
{
    char const* const names[] = {"stopped", "starting", "playing", "ended", "error"};
    std::cout << "state: " << (state >= 0 && state < 5 ? names[state] : "unknown") << "\n";
    ShowTracks(audioTracks);
    ShowGuide();
    if (session.player->MuteAudio(true)) {
        std::cout << "muted" << std::endl;
    } else {
        std::cout << "not muted: " << ZVGetLastFailure().message << std::endl;
    }
}

/// Nothing reports that the service has come or gone, or what has changed: a timer asks, and waits for the
/// answers.
gboolean OnTick(void* /*data*/)
{
    if (session.player == nullptr) {
        if (!Begin()) {
            return G_SOURCE_CONTINUE;
        }
        std::cout << "service" << std::endl;
    }
    EZVSourceState state = ZV_SOURCE_STATE_UNKNOWN;
    if (!session.player->GetSourceState(state)) {
        EZVFailureKind const kind = ZVGetLastFailure().kind;
        if (kind != ZV_FAILURE_TIMED_OUT && kind != ZV_FAILURE_REFUSED) {
            std::cout << "no service" << std::endl;
            End();
        }
        return G_SOURCE_CONTINUE;
    }
    unsigned int audioTracks = 0;
    session.data->SizeOfAudio(audioTracks);
    if (!session.isShown && state == ZV_SOURCE_STATE_PLAYING && audioTracks != 0) {
        session.isShown = true;
        Show(state, audioTracks);
    }
    return G_SOURCE_CONTINUE;
}

} // namespace

int main()
{
    g_timeout_add(200, OnTick, nullptr);
    g_main_loop_run(g_main_loop_new(nullptr, FALSE));
}

// SPDX-License-Identifier: MIT
// Lists the audio tracks and subtitles of what is played.
#include <zviptv/IPTVServiceAPI.h>

#include <iostream>

namespace {

void ListAudio(IBroadcastData& data)
{
    unsigned int count = 0;
    data.SizeOfAudio(count);
    for (unsigned int i = 0; i < count; ++i) {
        ZVAudio audio{};
        if (data.GetAudio(i, audio)) {
            std::cout << "audio " << i << ": " << ZVLanguageToISO639(audio.language) << ", PID " << audio.pid
                      << "\n";
        }
    }
}

void ListSubtitles(IBroadcastData& data)
{
    unsigned int count = 0;
    data.SizeOfHybridSBT(count);
    for (unsigned int i = 0; i < count; ++i) {
        EZVLanguageCode language = ZV_LANGUAGE_UNKNOWN;
        ZVHybridSBT subtitle{};
        if (data.GetHybridSBT(i, language, subtitle)) {
            std::cout << "subtitle " << i << ": " << ZVLanguageToISO639(language) << ", PID " << subtitle.pid
                      << "\n";
        }
    }
}

} // namespace

int main()
{
    IBroadcastData* data = nullptr;
    CIPTVServiceAPI::CreateBroadcastData(IPTV_PROFILE_DEFAULT, 0, &data);
    if (data == nullptr) {
        std::cerr << ZVGetLastFailure().message << "\n";
        return 3;
    }
    ListAudio(*data);
    ListSubtitles(*data);
    CIPTVServiceAPI::DestroyBroadcastData();
    return 0;
}

// SPDX-License-Identifier: MIT
#include "TrackText.h"

#include "Words.h"

namespace zviptv::ctl {

namespace {

void NullIfZero(Json::Value& record, std::initializer_list<char const*> members)
{
    for (char const* const member : members) {
        if (record[member].asUInt64() == 0) {
            record[member] = Json::Value();
        }
    }
}

} // namespace

std::string LanguageWord(EZVLanguageCode language)
{
    std::string const code = ZVLanguageToISO639(language);
    return code.empty() ? "-" : code;
}

std::string AudioText(ZVAudio const& audio)
{
    return LanguageWord(audio.language) + ", " + LowerName(audio.encoding) + ", " +
           (audio.channels == 0 ? "" : Counted(audio.channels, "channel") + ", ") + "pid " +
           ToHex(audio.pid, 4);
}

std::string LockWord(bool locked)
{
    return locked ? "locked" : "not locked";
}

Json::Value KnownJson(ZVAudio const& audio)
{
    Json::Value json = ToJson(audio);
    NullIfZero(json, {"sampleRate", "bitRate", "channels"});
    return json;
}

Json::Value KnownJson(std::vector<ZVAudio> const& tracks)
{
    Json::Value array(Json::arrayValue);
    for (ZVAudio const& audio : tracks) {
        array.append(KnownJson(audio));
    }
    return array;
}

Json::Value KnownJson(ZVResolution const& picture)
{
    Json::Value json = ToJson(picture);
    NullIfZero(json, {"frameRateNumerator", "frameRateDenominator", "aspectWidth", "aspectHeight"});
    return json;
}

} // namespace zviptv::ctl

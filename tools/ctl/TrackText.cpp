#include "TrackText.h"

namespace zviptv::ctl {

std::string LanguageWord(EZVLanguageCode language)
{
    std::string const code = ZVLanguageToISO639(language);
    return code.empty() ? "-" : code;
}

std::string AudioText(ZVAudio const& audio)
{
    return LanguageWord(audio.language) + ", " + LowerName(audio.encoding) + ", " +
           (audio.channels == 0 ? "" : std::to_string(audio.channels) + " channels, ") + "pid " + ToHex(audio.pid, 4);
}

std::string LockWord(bool locked)
{
    return locked ? "locked" : "not locked";
}

} // namespace zviptv::ctl

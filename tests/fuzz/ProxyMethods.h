#pragma once

#include <zviptv/IPTVServiceAPI.h>

#include <tuple>
#include <type_traits>

namespace zviptv::fuzz {

inline IPlayerControl* Make(IPlayerControl* made)
{
    CIPTVServiceAPI::CreatePlayerControl(IPTV_PROFILE_DEFAULT, 0, &made);
    return made;
}

inline IBroadcastData* Make(IBroadcastData* made)
{
    CIPTVServiceAPI::CreateBroadcastData(IPTV_PROFILE_DEFAULT, 0, &made);
    return made;
}

inline IIPGUtil* Make(IIPGUtil* made)
{
    CIPTVServiceAPI::CreateIPGUtil(&made);
    return made;
}

/// Calls a method with arguments and out-parameters that are zero.
template <auto Member>
struct Caller;

template <typename Interface, typename... Parameters, bool (Interface::*Member)(Parameters...)>
struct Caller<Member>
{
    static constexpr bool hasResult = !std::is_same_v<Interface, IIPGUtil>;

    static bool Call()
    {
        Interface* const object = Make(static_cast<Interface*>(nullptr));
        std::tuple<std::decay_t<Parameters>...> values{};
        return std::apply([&](auto&... value) { return (object->*Member)(value...); }, values);
    }
};

struct ProxyMethod
{
    char const* name;
    bool (*call)();
    bool hasResult; ///< the service's result decides what it returns
};

using ProgramByIndex = bool (IIPGUtil::*)(unsigned int, std::string&);
using ProgramById = bool (IIPGUtil::*)(IPGProgramId, Program_IPG, std::string&);

#define METHOD(Interface, Name)                                                                              \
    {                                                                                                        \
#Name, &Caller < &Interface::Name> ::Call, Caller < &Interface::Name> ::hasResult                    \
    }

/// All methods of the interfaces that send a request and read the reply.
constexpr ProxyMethod ProxyMethods[] = {
    METHOD(IPlayerControl, SetCurrentAudioByIndex),
    METHOD(IPlayerControl, SetAudioFormat),
    METHOD(IPlayerControl, SetDigitalDualSound),
    METHOD(IPlayerControl, SetCurrentTTX),
    METHOD(IPlayerControl, SetCurrentHybridSBT),
    METHOD(IPlayerControl, GetSTCCount),
    METHOD(IPlayerControl, SetCurrentISDBText),
    METHOD(IPlayerControl, SetCurrentISDBTextService),
    METHOD(IPlayerControl, GetCaptionDataMode),
    METHOD(IPlayerControl, GetDefaultCaptionService),
    METHOD(IPlayerControl, MuteAudio),
    METHOD(IPlayerControl, MuteVideo),
    METHOD(IPlayerControl, GetResolution),
    METHOD(IPlayerControl, SetAppID),
    METHOD(IPlayerControl, GetSourceState),
    METHOD(IPlayerControl, GetFirstPTS),
    METHOD(IBroadcastData, GetAudioFormat),
    METHOD(IBroadcastData, GetDigitalDualSound),
    METHOD(IBroadcastData, GetCurrentAudioInfo),
    METHOD(IBroadcastData, SizeOfAudio),
    METHOD(IBroadcastData, GetAudio),
    METHOD(IBroadcastData, SizeOfTTX),
    METHOD(IBroadcastData, GetTTX),
    METHOD(IBroadcastData, GetCurrentTTX),
    METHOD(IBroadcastData, SizeOfHybridSBT),
    METHOD(IBroadcastData, GetHybridSBT),
    METHOD(IBroadcastData, CheckHardOfHearingSBT),
    METHOD(IBroadcastData, GetPreferredHybridSBT),
    METHOD(IBroadcastData, GetCurrentHybridSBT),
    METHOD(IBroadcastData, GetPreferredTTXSubtitle),
    METHOD(IBroadcastData, SizeOfISDBText),
    METHOD(IBroadcastData, GetISDBText),
    METHOD(IBroadcastData, GetCurrentISDBText),
    METHOD(IBroadcastData, GetCaptionLanguage),
    METHOD(IBroadcastData, GetRatingInfo),
    METHOD(IBroadcastData, SetUnlockedInfo),
    METHOD(IBroadcastData, GetRatingLockState),
    METHOD(IBroadcastData, UnMuteByRatingPin),
    METHOD(IBroadcastData, SetUnlockedInfoWhenFactoryMode),
    METHOD(IBroadcastData, FlagServiceLocked),
    METHOD(IIPGUtil, ExistXmlForIPG),
    METHOD(IIPGUtil, GetProgramListSize),
    {"GetProgram", &Caller<static_cast<ProgramByIndex>(&IIPGUtil::GetProgram)>::Call, false},
    {"GetProgramIPG", &Caller<static_cast<ProgramById>(&IIPGUtil::GetProgram)>::Call, false},
    METHOD(IIPGUtil, GetPresentProgram),
    METHOD(IIPGUtil, FindProgram),
    METHOD(IIPGUtil, GetRating),
    METHOD(IIPGUtil, GetGenre),
    METHOD(IIPGUtil, GetProgramList),
    METHOD(IIPGUtil, CloneUSBToTV),
};

#undef METHOD

} // namespace zviptv::fuzz

#include "MethodRow.h"

namespace zviptv::ctl {

namespace {

using ProgramByIndex = bool (IIPGUtil::*)(unsigned int, std::string&);
using ProgramById = bool (IIPGUtil::*)(IPGProgramId, Program_IPG, std::string&);

constexpr char const* Pes = "pes";
constexpr char const* Caption = "caption";

// One row a method: its name and the names of its parameters. All else follows from its type.
// NOLINTBEGIN(bugprone-macro-parentheses): a type, braces and names.
#define METHOD(Interface, Name)                                                                              \
    MethodRow<&Interface::Name>                                                                              \
    {                                                                                                        \
#Interface, #Name                                                                                    \
    }
#define OVERLOAD(Type, Interface, Name)                                                                      \
    MethodRow<static_cast<Type>(&Interface::Name)>                                                           \
    {                                                                                                        \
#Interface, #Name                                                                                    \
    }
#define CALLBACK(Interface, Name, Command)                                                                   \
    MethodRow<&Interface::Name>                                                                              \
    {                                                                                                        \
#Interface, #Name, Command                                                                           \
    }
// NOLINTEND(bugprone-macro-parentheses)

std::vector<Method> MakeTable()
{
    return {
        METHOD(IPlayerControl, SetCurrentAudioByIndex)("index"),
        METHOD(IPlayerControl, SetAudioFormat)("type", "preferred"),
        METHOD(IPlayerControl, SetDigitalDualSound)("mode"),
        METHOD(IPlayerControl, SetCurrentTTX)("index"),
        METHOD(IPlayerControl, SetCurrentHybridSBT)("index"),
        METHOD(IPlayerControl, GetSTCCount)("stc"),
        METHOD(IPlayerControl, SetCurrentISDBText)("type", "index"),
        METHOD(IPlayerControl, SetCurrentISDBTextService)("type", "compTag"),
        METHOD(IPlayerControl, GetCaptionDataMode)("mode"),
        METHOD(IPlayerControl, GetDefaultCaptionService)("service"),
        METHOD(IPlayerControl, MuteAudio)("on"),
        METHOD(IPlayerControl, MuteVideo)("on"),
        METHOD(IPlayerControl, GetResolution)("res", "info"),
        METHOD(IPlayerControl, SetAppID)("appId"),
        METHOD(IPlayerControl, GetSourceState)("state"),
        METHOD(IPlayerControl, GetFirstPTS)("pts", "a", "b", "now"),

        METHOD(IBroadcastData, GetAudioFormat)("encodeType"),
        METHOD(IBroadcastData, GetDigitalDualSound)("currentMode", "nextMode"),
        METHOD(IBroadcastData, GetCurrentAudioInfo)("language", "index"),
        METHOD(IBroadcastData, SizeOfAudio)("size"),
        METHOD(IBroadcastData, GetAudio)("index", "audio"),
        METHOD(IBroadcastData, SizeOfTTX)("size"),
        METHOD(IBroadcastData, GetTTX)("index", "ttx"),
        METHOD(IBroadcastData, GetCurrentTTX)("language", "index"),
        METHOD(IBroadcastData, SizeOfHybridSBT)("size"),
        METHOD(IBroadcastData, GetHybridSBT)("index", "language", "subtitle"),
        METHOD(IBroadcastData, CheckHardOfHearingSBT)("exists"),
        METHOD(IBroadcastData, GetPreferredHybridSBT)("language", "subtitle"),
        METHOD(IBroadcastData, GetCurrentHybridSBT)("language", "index"),
        METHOD(IBroadcastData, GetPreferredTTXSubtitle)("ttx"),
        METHOD(IBroadcastData, SizeOfISDBText)("type", "size"),
        METHOD(IBroadcastData, GetISDBText)("type", "index", "text"),
        METHOD(IBroadcastData, GetCurrentISDBText)("type", "language", "index"),
        METHOD(IBroadcastData, GetCaptionLanguage)("service", "language", "koreanCode"),
        METHOD(IBroadcastData, GetRatingInfo)("ratings"),
        METHOD(IBroadcastData, SetUnlockedInfo)("lock"),
        METHOD(IBroadcastData, GetRatingLockState)("locked"),
        METHOD(IBroadcastData, UnMuteByRatingPin)(),
        METHOD(IBroadcastData, SetUnlockedInfoWhenFactoryMode)("unlocked"),
        METHOD(IBroadcastData, FlagServiceLocked)("locked"),

        CALLBACK(IIPTVDataSubscriber, SubscribeForCaption, Caption)("callback", "userData", "key"),
        CALLBACK(IIPTVDataSubscriber, UnsubscribeForCaption, Caption)("key"),
        CALLBACK(IIPTVDataSubscriber, SubscribeForPES, Pes)("callback", "userData", "key"),
        CALLBACK(IIPTVDataSubscriber, UnSubscribeForPES, Pes)("key"),

        METHOD(IIPGUtil, ExistXmlForIPG)("exist"),
        METHOD(IIPGUtil, GetProgramListSize)("inID", "startTime", "duration", "size"),
        OVERLOAD(ProgramByIndex, IIPGUtil, GetProgram)("index", "program"),
        OVERLOAD(ProgramById, IIPGUtil, GetProgram)("id", "program", "out"),
        METHOD(IIPGUtil, GetPresentProgram)("inID", "program"),
        METHOD(IIPGUtil, FindProgram)("inID", "eventID", "program"),
        METHOD(IIPGUtil, GetRating)("eventID", "rating"),
        METHOD(IIPGUtil, GetGenre)("eventID", "genre"),
        METHOD(IIPGUtil, GetProgramList)("inID", "startTime", "duration", "list"),
        METHOD(IIPGUtil, CloneUSBToTV)("path", "done"),
    };
}

#undef METHOD
#undef OVERLOAD
#undef CALLBACK

} // namespace

std::vector<Method> const& Methods()
{
    static std::vector<Method> const table = MakeTable();
    return table;
}

} // namespace zviptv::ctl

#pragma once

/// The words of the protocol between applications and the service, for both sides.
namespace zviptv::protocol {

/// Type words: names of the channels and "type" of announcements.
namespace type {
constexpr char PlayerControl[] = "PLAYERCONTROL";
constexpr char BroadcastData[] = "BROADCASTDATA";
constexpr char DataSubscriber[] = "IPTVDATASUBSCRIBER";
constexpr char ProgramGuide[] = "IPGUTIL";
} // namespace type

/// Values of "functionname".
namespace function {
constexpr char SetCurrentAudioByIndex[] = "SetCurrentAudioByIndex";
constexpr char SetAudioFormat[] = "SetAudioFormat";
constexpr char SetDigitalDualSound[] = "SetDigitalDualSound";
constexpr char SetCurrentTTX[] = "SetCurrentTTX";
constexpr char SetCurrentHybridSBT[] = "SetCurrentHybridSBT";
constexpr char GetSTCCount[] = "GetSTCCount";
constexpr char SetCurrentISDBText[] = "SetCurrentISDBText";
constexpr char SetCurrentISDBTextService[] = "SetCurrentISDBTextService";
constexpr char GetCaptionDataMode[] = "GetCaptionDataMode";
constexpr char GetDefaultCaptionService[] = "GetDefaultCaptionService";
constexpr char MuteAudio[] = "MuteAudio";
constexpr char MuteVideo[] = "MuteVideo";
constexpr char GetResolution[] = "GetResolution";
constexpr char SetAppID[] = "SetAppID";
constexpr char GetSourceState[] = "GetSourceState";
constexpr char GetFirstPTS[] = "GetFirstPTS";

constexpr char GetAudioFormat[] = "GetAudioFormat";
constexpr char GetDigitalDualSound[] = "GetDigitalDualSound";
constexpr char GetCurrentAudioInfo[] = "GetCurrentAudioInfo";
constexpr char SizeOfAudio[] = "SizeOfAudio";
constexpr char GetAudio[] = "GetAudio";
constexpr char SizeOfTTX[] = "SizeOfTTX";
constexpr char GetTTX[] = "GetTTX";
constexpr char GetCurrentTTX[] = "GetCurrentTTX";
constexpr char SizeOfHybridSBT[] = "SizeOfHybridSBT";
constexpr char GetHybridSBT[] = "GetHybridSBT";
constexpr char CheckHardOfHearingSBT[] = "CheckHardOfHearingSBT";
constexpr char GetPreferredHybridSBT[] = "GetPreferredHybridSBT";
constexpr char GetCurrentHybridSBT[] = "GetCurrentHybridSBT";
constexpr char GetPreferredTTXSubtitle[] = "GetPreferredTTXSubtitle";
constexpr char SizeOfISDBText[] = "SizeOfISDBText";
constexpr char GetISDBText[] = "GetISDBText";
constexpr char GetCurrentISDBText[] = "GetCurrentISDBText";
constexpr char GetCaptionLanguage[] = "GetCaptionLanguage";
constexpr char GetRatingInfo[] = "GetRatingInfo";
constexpr char SetUnlockedInfo[] = "SetUnlockedInfo";
constexpr char GetRatingLockState[] = "GetRatingLockState";
constexpr char UnMuteByRatingPin[] = "UnMuteByRatingPin";
constexpr char SetUnlockedInfoWhenFactoryMode[] = "SetUnlockedInfoWhenFactoryMode";
constexpr char FlagServiceLocked[] = "FlagServiceLocked";

constexpr char ExistXmlForIPG[] = "ExistXmlForIPG";
constexpr char GetProgramListSize[] = "GetProgramListSize";
constexpr char GetProgram[] = "GetProgram";
constexpr char GetProgramIPG[] = "GetProgramIPG"; ///< GetProgram by programme id
constexpr char GetPresentProgram[] = "GetPresentProgram";
constexpr char FindProgram[] = "FindProgram";
constexpr char GetRating[] = "GetRating";
constexpr char GetGenre[] = "GetGenre";
constexpr char GetProgramList[] = "GetProgramList";
constexpr char CloneUSBToTV[] = "CloneUSBToTV";

constexpr char RequestCaptionCB[] = "requestCaptionCB";
constexpr char RequestPESCB[] = "requestPESCB";

// Notifications.
constexpr char CaptionCB[] = "CaptionCB";
constexpr char PESCB[] = "PESCB";
} // namespace function

/// Keys of entries.
namespace key {
constexpr char FunctionName[] = "functionname";
constexpr char HandleID[] = "handleID";
constexpr char Result[] = "result_internal";

constexpr char AppID[] = "AppID";
constexpr char Audio[] = "audio";
constexpr char CaptionData[] = "captionData";
constexpr char CaptionDataSize[] = "captionDataSize";
constexpr char CaptionType[] = "captionType";
constexpr char CompTag[] = "compTag";
constexpr char CurrentMode[] = "currentMode";
constexpr char CurrentTime[] = "currenttime";
constexpr char Data[] = "data";
constexpr char Duration[] = "duration";
constexpr char EncodeType[] = "encodeType";
constexpr char EventID[] = "eventID";
constexpr char Exists[] = "exists";
constexpr char FirstPTS[] = "firstPTS";
constexpr char HybridSbt[] = "hybridSbt";
constexpr char InID[] = "inID"; ///< a number, or the JSON text of a programme id
constexpr char Index[] = "index";
constexpr char IsdbText[] = "isdbText";
constexpr char IsPreferred[] = "isPreferred";
constexpr char KoreanCode[] = "koreanCode";
constexpr char LandCode[] = "landCode"; ///< a language code
constexpr char LockState[] = "lockState";
constexpr char Mode[] = "mode";
constexpr char NextMode[] = "nextMode";
constexpr char On[] = "on";
constexpr char OnOff[] = "onoff";
constexpr char OutServiceLocked[] = "outServiceLocked";
constexpr char Path[] = "path";
constexpr char PESData[] = "pesData";
constexpr char PESDataSize[] = "pesDataSize";
constexpr char PESPID[] = "pesPID";
constexpr char PESPTS[] = "pesPTS";
constexpr char PESType[] = "pesType";
constexpr char Program[] = "program";
constexpr char RatingInfo[] =
    "ratingInfo"; ///< the lock value in SetUnlockedInfo, the ratings in GetRatingInfo
constexpr char RatingInfoSize[] = "ratingInfoSize";
constexpr char Resolution[] = "resolution";
constexpr char ResolutionInfo[] = "resolutioninfo";
constexpr char Service[] = "service";
constexpr char Size[] = "size";
constexpr char SourceState[] = "sourcestate";
constexpr char StartTime[] = "startTime";
constexpr char STCCount[] = "stcCount";
constexpr char TimeBaseDen[] = "timebaseden";
constexpr char TimeBaseNum[] = "timebasenum";
constexpr char Ttx[] = "ttx";
constexpr char TtxSubtitle[] = "ttxSubtitle";

// Members of the JSON text of a programme id.
constexpr char JsonServiceId[] = "service_id";
constexpr char JsonEventId[] = "event_id";
constexpr char JsonStartTime[] = "start_time";
constexpr char JsonDuration[] = "duration";

// Of the helper bus.
constexpr char Add[] = "add";
constexpr char DBusName[] = "dbusname";
constexpr char Type[] = "type";
} // namespace key

} // namespace zviptv::protocol

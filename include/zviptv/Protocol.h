/// @file
/// The words of the protocol between applications and the service.

#pragma once

/// The words of the protocol between applications and the service, for both sides. Who carries what is in
/// docs/protocol.md.
namespace zviptv::protocol {

/// Type words: names of the channels and "type" of announcements.
namespace type {
constexpr char PlayerControl[] = "PLAYERCONTROL";       ///< of IPlayerControl
constexpr char BroadcastData[] = "BROADCASTDATA";       ///< of IBroadcastData
constexpr char DataSubscriber[] = "IPTVDATASUBSCRIBER"; ///< of IIPTVDataSubscriber
constexpr char ProgramGuide[] = "IPGUTIL";              ///< of IIPGUtil
} // namespace type

/// Values of "functionname": requests have the name of the method that sends them.
namespace function {
constexpr char SetCurrentAudioByIndex[] = "SetCurrentAudioByIndex";       ///< of IPlayerControl
constexpr char SetAudioFormat[] = "SetAudioFormat";                       ///< of IPlayerControl
constexpr char SetDigitalDualSound[] = "SetDigitalDualSound";             ///< of IPlayerControl
constexpr char SetCurrentTTX[] = "SetCurrentTTX";                         ///< of IPlayerControl
constexpr char SetCurrentHybridSBT[] = "SetCurrentHybridSBT";             ///< of IPlayerControl
constexpr char GetSTCCount[] = "GetSTCCount";                             ///< of IPlayerControl
constexpr char SetCurrentISDBText[] = "SetCurrentISDBText";               ///< of IPlayerControl
constexpr char SetCurrentISDBTextService[] = "SetCurrentISDBTextService"; ///< of IPlayerControl
constexpr char GetCaptionDataMode[] = "GetCaptionDataMode";               ///< of IPlayerControl
constexpr char GetDefaultCaptionService[] = "GetDefaultCaptionService";   ///< of IPlayerControl
constexpr char MuteAudio[] = "MuteAudio";                                 ///< of IPlayerControl
constexpr char MuteVideo[] = "MuteVideo";                                 ///< of IPlayerControl
constexpr char GetResolution[] = "GetResolution";                         ///< of IPlayerControl
constexpr char SetAppID[] = "SetAppID";                                   ///< of IPlayerControl
constexpr char GetSourceState[] = "GetSourceState";                       ///< of IPlayerControl
constexpr char GetFirstPTS[] = "GetFirstPTS";                             ///< of IPlayerControl

constexpr char GetAudioFormat[] = "GetAudioFormat";                                 ///< of IBroadcastData
constexpr char GetDigitalDualSound[] = "GetDigitalDualSound";                       ///< of IBroadcastData
constexpr char GetCurrentAudioInfo[] = "GetCurrentAudioInfo";                       ///< of IBroadcastData
constexpr char SizeOfAudio[] = "SizeOfAudio";                                       ///< of IBroadcastData
constexpr char GetAudio[] = "GetAudio";                                             ///< of IBroadcastData
constexpr char SizeOfTTX[] = "SizeOfTTX";                                           ///< of IBroadcastData
constexpr char GetTTX[] = "GetTTX";                                                 ///< of IBroadcastData
constexpr char GetCurrentTTX[] = "GetCurrentTTX";                                   ///< of IBroadcastData
constexpr char SizeOfHybridSBT[] = "SizeOfHybridSBT";                               ///< of IBroadcastData
constexpr char GetHybridSBT[] = "GetHybridSBT";                                     ///< of IBroadcastData
constexpr char CheckHardOfHearingSBT[] = "CheckHardOfHearingSBT";                   ///< of IBroadcastData
constexpr char GetPreferredHybridSBT[] = "GetPreferredHybridSBT";                   ///< of IBroadcastData
constexpr char GetCurrentHybridSBT[] = "GetCurrentHybridSBT";                       ///< of IBroadcastData
constexpr char GetPreferredTTXSubtitle[] = "GetPreferredTTXSubtitle";               ///< of IBroadcastData
constexpr char SizeOfISDBText[] = "SizeOfISDBText";                                 ///< of IBroadcastData
constexpr char GetISDBText[] = "GetISDBText";                                       ///< of IBroadcastData
constexpr char GetCurrentISDBText[] = "GetCurrentISDBText";                         ///< of IBroadcastData
constexpr char GetCaptionLanguage[] = "GetCaptionLanguage";                         ///< of IBroadcastData
constexpr char GetRatingInfo[] = "GetRatingInfo";                                   ///< of IBroadcastData
constexpr char SetUnlockedInfo[] = "SetUnlockedInfo";                               ///< of IBroadcastData
constexpr char GetRatingLockState[] = "GetRatingLockState";                         ///< of IBroadcastData
constexpr char UnMuteByRatingPin[] = "UnMuteByRatingPin";                           ///< of IBroadcastData
constexpr char SetUnlockedInfoWhenFactoryMode[] = "SetUnlockedInfoWhenFactoryMode"; ///< of IBroadcastData
constexpr char FlagServiceLocked[] = "FlagServiceLocked";                           ///< of IBroadcastData

constexpr char ExistXmlForIPG[] = "ExistXmlForIPG";         ///< of IIPGUtil
constexpr char GetProgramListSize[] = "GetProgramListSize"; ///< of IIPGUtil
constexpr char GetProgram[] = "GetProgram";                 ///< of IIPGUtil, by number in a list
constexpr char GetProgramIPG[] = "GetProgramIPG";           ///< of IIPGUtil, GetProgram by programme id
constexpr char GetPresentProgram[] = "GetPresentProgram";   ///< of IIPGUtil
constexpr char FindProgram[] = "FindProgram";               ///< of IIPGUtil
constexpr char GetRating[] = "GetRating";                   ///< of IIPGUtil
constexpr char GetGenre[] = "GetGenre";                     ///< of IIPGUtil
constexpr char GetProgramList[] = "GetProgramList";         ///< of IIPGUtil
constexpr char CloneUSBToTV[] = "CloneUSBToTV";             ///< of IIPGUtil

constexpr char RequestCaptionCB[] = "requestCaptionCB"; ///< request: push captions, or no more
constexpr char RequestPESCB[] = "requestPESCB";         ///< request: push PES packets, or no more

// Notifications.
constexpr char CaptionCB[] = "CaptionCB"; ///< notification: a piece of caption data
constexpr char PESCB[] = "PESCB";         ///< notification: a PES packet
} // namespace function

/// Keys of entries.
namespace key {
constexpr char FunctionName[] = "functionname"; ///< the first entry: a word of zviptv::protocol::function
constexpr char HandleID[] = "handleID";         ///< decimal IPTVHandleNumber of the object's handle
constexpr char Result[] = "result_internal";    ///< reply: 0 for refused, any other number for done

constexpr char AppID[] = "AppID";                     ///< text: who the application is
constexpr char Audio[] = "audio";                     ///< ZVAudio, 32 bytes
constexpr char CaptionData[] = "captionData";         ///< bytes of the caption
constexpr char CaptionDataSize[] = "captionDataSize"; ///< how many bytes the caption has
constexpr char CaptionType[] = "captionType";         ///< EZVPESType of the stream that the caption is from
constexpr char CompTag[] = "compTag";                 ///< component tag of an ISDB text
constexpr char CurrentMode[] = "currentMode";         ///< ZVDualSound, 8 bytes: as it is
constexpr char CurrentTime[] = "currenttime";         ///< the service's time, ms
constexpr char Data[] = "data";             ///< the one value of the guide's replies: text, number or flag
constexpr char Duration[] = "duration";     ///< seconds, in the simulator's guide
constexpr char EncodeType[] = "encodeType"; ///< EZVAudioEncodeType
constexpr char EventID[] = "eventID";       ///< number of a programme within its service
constexpr char Exists[] = "exists";         ///< flag: there is a subtitle for the hard of hearing
constexpr char FirstPTS[] = "firstPTS";     ///< time stamp, unsigned, in the time base of the same reply
constexpr char HybridSbt[] = "hybridSbt";   ///< ZVHybridSBT, 24 bytes
constexpr char InID[] = "inID";   ///< service id, unsigned; in GetProgramIPG the JSON text of a programme id
constexpr char Index[] = "index"; ///< number in a list, from 0
constexpr char IsdbText[] = "isdbText";       ///< ZVISDBText, 16 bytes
constexpr char IsPreferred[] = "isPreferred"; ///< flag: the coding is preferred, not demanded
constexpr char KoreanCode[] = "koreanCode";   ///< text of which the first character counts
constexpr char LandCode[] = "landCode";       ///< EZVLanguageCode
constexpr char LockState[] = "lockState";     ///< flag: locked; in SetUnlockedInfoWhenFactoryMode: unlocked
constexpr char Mode[] = "mode";               ///< EZVMultiSoundMode, EZVISDBTextType, EZVCaptionDataMode
constexpr char NextMode[] = "nextMode";       ///< ZVDualSound, 8 bytes: as it will be after the next change
constexpr char On[] = "on";                   ///< flag: push from now on, or no more
constexpr char OnOff[] = "onoff";             ///< flag: muted
constexpr char OutServiceLocked[] = "outServiceLocked"; ///< flag: the service is locked
constexpr char Path[] = "path";                         ///< file name, as the service sees it
constexpr char PESData[] = "pesData";                   ///< bytes of the PES packet with its header
constexpr char PESDataSize[] = "pesDataSize";           ///< how many bytes the packet has
constexpr char PESPID[] = "pesPID";                     ///< PID of the packet
constexpr char PESPTS[] = "pesPTS";                     ///< presentation time stamp, 90 kHz, 33 bits
constexpr char PESType[] = "pesType";                   ///< EZVPESType
constexpr char Program[] = "program";                   ///< Program_IPG
constexpr char RatingInfo[] = "ratingInfo"; ///< EZVParentalLock in SetUnlockedInfo; in GetRatingInfo the
                                            ///< ZVRatingInfo records, 3 bytes each
constexpr char RatingInfoSize[] = "ratingInfoSize"; ///< how many ratings follow
constexpr char Resolution[] = "resolution";         ///< cvtv_resolution_e
constexpr char ResolutionInfo[] = "resolutioninfo"; ///< ZVResolution, 32 bytes
constexpr char Service[] = "service";               ///< EZVCaptionService
constexpr char Size[] = "size";                     ///< how many entries the list has
constexpr char SourceState[] = "sourcestate";       ///< EZVSourceState
constexpr char StartTime[] = "startTime";           ///< seconds since 1970, UTC, in the simulator's guide
constexpr char STCCount[] = "stcCount";             ///< system time clock, unsigned, 90 kHz
constexpr char TimeBaseDen[] = "timebaseden";       ///< denominator of the time base, 90000 for 90 kHz
constexpr char TimeBaseNum[] = "timebasenum";       ///< numerator of the time base, 1 for 90 kHz
constexpr char Ttx[] = "ttx";                       ///< ZVTTX, 16 bytes
constexpr char TtxSubtitle[] = "ttxSubtitle";       ///< ZVTTX, 16 bytes

// Members of the JSON text of a programme id.
constexpr char JsonServiceId[] = "service_id"; ///< text: decimal digits
constexpr char JsonEventId[] = "event_id";     ///< number, 16 bits
constexpr char JsonStartTime[] = "start_time"; ///< number, as StartTime; 0 for any in the simulator's guide
constexpr char JsonDuration[] = "duration";    ///< number, as Duration

// Of the helper bus.
constexpr char Add[] = "add";           ///< "y" when the channel comes up, "n" when it goes away
constexpr char DBusName[] = "dbusname"; ///< bus name of the channel; in the answer that of its partner
constexpr char Type[] = "type";         ///< a word of zviptv::protocol::type
} // namespace key

} // namespace zviptv::protocol

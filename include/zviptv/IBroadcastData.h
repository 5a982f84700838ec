// SPDX-License-Identifier: MIT
/// @file
/// Audio, teletext, subtitles, ratings and locks.

#pragma once

#include <zviptv/Export.h>
#include <zviptv/IPTVTypes.h>

#include <vector>

/// The content of the current service, and its parental lock. Obtained from
/// CIPTVServiceAPI::CreateBroadcastData.
///
/// Every method makes one blocking exchange with the service, of at most 2000 ms. It can be called from any
/// thread and needs no main loop. It returns true if the service answered with a non-zero result, and false
/// if the service refused or the exchange failed. If the exchange failed, out-parameters are unchanged. If
/// the service answered, they hold the values that it sent; use them only after true. An answer with a
/// missing or malformed number makes the method throw std::invalid_argument or std::out_of_range ("stoi"); a
/// record that is too short is filled up with zeros. Out-parameters are stored in their order: when a method
/// throws, those before the malformed number have been stored. If a parameter is unsigned, a negative size or
/// index is stored as a large number.
///
/// The object destroys itself when the service leaves the bus, on the thread that iterates the main context
/// in which it was created.
///
/// Lifetime: a pointer to the object is valid for the life of the process. After the object has been
/// destroyed, every call on it returns false, on any thread; after the next Create the pointer works again.
/// If the object is destroyed during a call on another thread, the call is answered or returns false.
///
/// ZVGetLastFailure() says why a call failed.
class ZVIPTV_API IBroadcastData
{
protected:
    /// Released with CIPTVServiceAPI::DestroyBroadcastData only.
    virtual ~IBroadcastData() = default;

public:
    IBroadcastData(IBroadcastData const&) = delete;
    IBroadcastData& operator=(IBroadcastData const&) = delete;

    /// Coding of the current audio track.
    virtual bool GetAudioFormat(EZVAudioEncodeType& encodeType) = 0;

    /// The current dual-sound choice, and the one after the next change by the viewer.
    virtual bool GetDigitalDualSound(ZVDualSound& currentMode, ZVDualSound& nextMode) = 0;

    /// Language and list index, from 0, of the current audio track.
    virtual bool GetCurrentAudioInfo(EZVLanguageCode& language, int& index) = 0;

    /// Number of audio tracks.
    virtual bool SizeOfAudio(unsigned int& size) = 0;

    /// The audio track at `index`, 0 to SizeOfAudio() - 1. Like all lists here, this list changes with the
    /// programme: an index that was valid may be refused a moment later.
    virtual bool GetAudio(unsigned int index, ZVAudio& audio) = 0;

    /// Number of teletext pages that the service announces.
    virtual bool SizeOfTTX(unsigned int& size) = 0;

    /// The teletext page at `index`, 0 to SizeOfTTX() - 1.
    virtual bool GetTTX(unsigned int index, ZVTTX& ttx) = 0;

    /// Language and list index of the selected teletext page; false if there is none.
    virtual bool GetCurrentTTX(EZVLanguageCode& language, unsigned int& index) = 0;

    /// Number of subtitles, DVB and teletext together.
    virtual bool SizeOfHybridSBT(unsigned int& size) = 0;

    /// The subtitle at `index`, 0 to SizeOfHybridSBT() - 1, and its language.
    virtual bool GetHybridSBT(unsigned int index, EZVLanguageCode& language, ZVHybridSBT& subtitle) = 0;

    /// Whether there is a subtitle for the hard of hearing.
    virtual bool CheckHardOfHearingSBT(bool& exists) = 0;

    /// The subtitle that the service would choose, and its language.
    virtual bool GetPreferredHybridSBT(EZVLanguageCode& language, ZVHybridSBT& subtitle) = 0;

    /// Language and list index of the selected subtitle; false if there is none.
    virtual bool GetCurrentHybridSBT(EZVLanguageCode& language, unsigned int& index) = 0;

    /// The teletext page with subtitles that the service would choose.
    virtual bool GetPreferredTTXSubtitle(ZVTTX& ttx) = 0;

    /// Number of ISDB texts of the given type.
    virtual bool SizeOfISDBText(EZVISDBTextType type, unsigned int& size) = 0;

    /// The ISDB text of the given type at `index`, 0 to SizeOfISDBText() - 1.
    virtual bool GetISDBText(EZVISDBTextType type, unsigned int index, ZVISDBText& text) = 0;

    /// Language and list index of the selected ISDB text of the given type; false if there is none.
    virtual bool GetCurrentISDBText(EZVISDBTextType type, EZVLanguageCode& language, unsigned int& index) = 0;

    /// Language of a caption service and its one-character Korean code. Throws std::out_of_range, after
    /// storing `language`, if the service sends an empty code.
    virtual bool GetCaptionLanguage(EZVCaptionService service, EZVLanguageCode& language,
                                    char& koreanCode) = 0;

    /// Ratings of the current programme; replaces the vector's content. Throws std::length_error if the
    /// number of ratings that the service announces is negative, or if that many ratings are over 1 MiB
    /// larger than the data that it sent; the vector is then empty.
    virtual bool GetRatingInfo(std::vector<ZVRatingInfo>& ratings) = 0;

    /// Unlocks the programme, the service or everything, or locks it again.
    virtual bool SetUnlockedInfo(EZVParentalLock lock) = 0;

    /// Whether the current programme is locked because of its rating.
    virtual bool GetRatingLockState(bool& locked) = 0;

    /// Unlocks the current programme after the viewer has entered the PIN.
    virtual bool UnMuteByRatingPin() = 0;

    /// Unlocks everything, or locks it again, on a television in factory mode.
    virtual bool SetUnlockedInfoWhenFactoryMode(bool unlocked) = 0;

    /// Whether the current service is locked.
    virtual bool FlagServiceLocked(bool& locked) = 0;

protected:
    IBroadcastData() = default;
};

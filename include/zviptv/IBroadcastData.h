// SPDX-License-Identifier: MIT
/// @file
/// Audio, teletext, subtitles, ratings and locks.

#pragma once

#include <zviptv/Export.h>
#include <zviptv/IPTVTypes.h>

#include <vector>

/// What the current service carries, and its parental lock. Obtained from
/// CIPTVServiceAPI::CreateBroadcastData.
///
/// Every method is one blocking exchange with the service: at most 2000 ms, from any thread, no main loop
/// needed. It returns true when the service answered with a non-zero result, false when it refused or when
/// the exchange failed. Out-parameters are untouched on a failed exchange; on an answer, true or false, they
/// hold what the service sent, and are worth reading only after true. An answer with a missing or malformed
/// number makes the method throw std::invalid_argument or std::out_of_range ("stoi"); a record that arrives
/// short is filled up with zeros. Out-parameters are stored in their order: when a number throws, those
/// before it are stored. A negative size or index arrives as a large unsigned number where the parameter is
/// unsigned.
///
/// The object destroys itself when the service leaves the bus, on the thread that iterates the main context
/// in which it was created.
///
/// Lifetime: a pointer to the object is valid for the life of the process. While the object is destroyed,
/// every call on it returns false, from any thread; after the next Create the pointer works again. A call
/// that another thread has begun when the object is destroyed is answered or returns false.
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

    /// Coding of the audio track that is heard.
    virtual bool GetAudioFormat(EZVAudioEncodeType& encodeType) = 0;

    /// The dual-sound choice as it is and as it will be after the next change.
    virtual bool GetDigitalDualSound(ZVDualSound& currentMode, ZVDualSound& nextMode) = 0;

    /// Language and list index, from 0, of the audio track that is heard.
    virtual bool GetCurrentAudioInfo(EZVLanguageCode& language, int& index) = 0;

    /// Number of audio tracks.
    virtual bool SizeOfAudio(unsigned int& size) = 0;

    /// The audio track at `index`, 0 to SizeOfAudio() - 1. A list changes with the programme: an index that
    /// was good may be refused a moment later. So it is with all lists here.
    virtual bool GetAudio(unsigned int index, ZVAudio& audio) = 0;

    /// Number of teletext pages that the service announces.
    virtual bool SizeOfTTX(unsigned int& size) = 0;

    /// The teletext page at `index`, 0 to SizeOfTTX() - 1.
    virtual bool GetTTX(unsigned int index, ZVTTX& ttx) = 0;

    /// Language and list index of the teletext page that is selected; false when there is none.
    virtual bool GetCurrentTTX(EZVLanguageCode& language, unsigned int& index) = 0;

    /// Number of subtitles, DVB and teletext together.
    virtual bool SizeOfHybridSBT(unsigned int& size) = 0;

    /// The subtitle at `index`, 0 to SizeOfHybridSBT() - 1, and its language.
    virtual bool GetHybridSBT(unsigned int index, EZVLanguageCode& language, ZVHybridSBT& subtitle) = 0;

    /// Whether there is a subtitle for the hard of hearing.
    virtual bool CheckHardOfHearingSBT(bool& exists) = 0;

    /// The subtitle that the service would choose, and its language.
    virtual bool GetPreferredHybridSBT(EZVLanguageCode& language, ZVHybridSBT& subtitle) = 0;

    /// Language and list index of the subtitle that is selected; false when there is none.
    virtual bool GetCurrentHybridSBT(EZVLanguageCode& language, unsigned int& index) = 0;

    /// The teletext page with subtitles that the service would choose.
    virtual bool GetPreferredTTXSubtitle(ZVTTX& ttx) = 0;

    /// Number of ISDB texts of the given type.
    virtual bool SizeOfISDBText(EZVISDBTextType type, unsigned int& size) = 0;

    /// The ISDB text of the given type at `index`, 0 to SizeOfISDBText() - 1.
    virtual bool GetISDBText(EZVISDBTextType type, unsigned int index, ZVISDBText& text) = 0;

    /// Language and list index of the ISDB text of the given type that is selected; false when there is none.
    virtual bool GetCurrentISDBText(EZVISDBTextType type, EZVLanguageCode& language, unsigned int& index) = 0;

    /// Language of a caption service and its one-character Korean code. Throws std::out_of_range, with
    /// `language` stored, when the service sends an empty code.
    virtual bool GetCaptionLanguage(EZVCaptionService service, EZVLanguageCode& language,
                                    char& koreanCode) = 0;

    /// Ratings of the current programme; replaces the vector's content. Throws std::length_error when the
    /// service announces a negative number of ratings or more than 1 MiB above what arrived; the vector is
    /// empty then.
    virtual bool GetRatingInfo(std::vector<ZVRatingInfo>& ratings) = 0;

    /// Unlocks the programme, the service or everything, or locks it again.
    virtual bool SetUnlockedInfo(EZVParentalLock lock) = 0;

    /// Whether the current programme is locked for its rating.
    virtual bool GetRatingLockState(bool& locked) = 0;

    /// Lifts the mute of a locked programme after the PIN was entered.
    virtual bool UnMuteByRatingPin() = 0;

    /// Unlocks everything, or locks it again, on a set in factory mode.
    virtual bool SetUnlockedInfoWhenFactoryMode(bool unlocked) = 0;

    /// Whether the current service is locked.
    virtual bool FlagServiceLocked(bool& locked) = 0;

protected:
    IBroadcastData() = default;
};

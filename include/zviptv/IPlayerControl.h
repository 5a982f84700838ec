// SPDX-License-Identifier: MIT
/// @file
/// Muting, tracks, clocks and the state of the source.

#pragma once

#include <zviptv/Export.h>
#include <zviptv/IPTVTypes.h>

/// Control of the current playback. Obtained from CIPTVServiceAPI::CreatePlayerControl.
///
/// Every method makes one blocking exchange with the service, of at most 2000 ms. It can be called from any
/// thread and needs no main loop. It returns true if the service answered with a non-zero result, and false
/// if the service refused or the exchange failed. If the exchange failed, out-parameters have the start value
/// that the method sets, as described below. If the service answered, they hold the values that it sent. An
/// answer with a missing or malformed number makes the method throw std::invalid_argument or
/// std::out_of_range ("stoi", "stoul", "stoull").
///
/// The object destroys itself when the service leaves the bus, on the thread that iterates the main context
/// in which it was created.
///
/// Lifetime: a pointer to the object is valid for the life of the process. After the object has been
/// destroyed, every call on it returns false, on any thread; after the next Create the pointer works again.
/// If the object is destroyed during a call on another thread, the call is answered or returns false.
///
/// ZVGetLastFailure() says why a call failed.
class ZVIPTV_API IPlayerControl
{
protected:
    /// Released with CIPTVServiceAPI::DestroyPlayerControl only.
    virtual ~IPlayerControl() = default;

public:
    IPlayerControl(IPlayerControl const&) = delete;
    IPlayerControl& operator=(IPlayerControl const&) = delete;

    /// Selects the audio track at `index` of the service's list, from 0.
    virtual bool SetCurrentAudioByIndex(int index) = 0;

    /// Chooses an audio coding; with `preferred`, another coding is accepted if no track has this one.
    virtual bool SetAudioFormat(EZVAudioEncodeType type, bool preferred) = 0;

    /// Chooses which of two sounds is heard.
    virtual bool SetDigitalDualSound(EZVMultiSoundMode mode) = 0;

    /// Selects the teletext entry at `index`, from 0.
    virtual bool SetCurrentTTX(unsigned int index) = 0;

    /// Selects the subtitle at `index`, from 0.
    virtual bool SetCurrentHybridSBT(unsigned int index) = 0;

    /// The system time clock, in 90 kHz ticks. `stc` has no start value.
    virtual bool GetSTCCount(unsigned long long& stc) = 0;

    /// Selects the ISDB text of the given type at `index`, from 0.
    virtual bool SetCurrentISDBText(EZVISDBTextType type, int index) = 0;

    /// Selects the ISDB text of the given type with the component tag `compTag`.
    virtual bool SetCurrentISDBTextService(EZVISDBTextType type, int compTag) = 0;

    /// How captions are shown. Start value: ZV_CAPTION_DATA_MODE_UNKNOWN (-1).
    virtual bool GetCaptionDataMode(EZVCaptionDataMode& mode) = 0;

    /// The default caption service. Start value: ZV_CAPTION_SERVICE_UNKNOWN (0).
    virtual bool GetDefaultCaptionService(EZVCaptionService& service) = 0;

    /// Mutes the sound, or turns it on again.
    virtual bool MuteAudio(bool on) = 0;

    /// Blanks the picture, or shows it again.
    virtual bool MuteVideo(bool on) = 0;

    /// The picture's resolution class and its details. Start value of `res`: CVTV_RESOLUTION_UNKNOWN (0);
    /// `info` has none. A record that is too short is filled up with zeros.
    virtual bool GetResolution(cvtv_resolution_e& res, ZVResolution& info) = 0;

    /// Names the application to the service; null sends no name.
    virtual bool SetAppID(char const* appId) = 0;

    /// State of the source. Start value: ZV_SOURCE_STATE_UNKNOWN (-1).
    virtual bool GetSourceState(EZVSourceState& state) = 0;

    /// The first presentation time stamp since playback began. Its unit is b/a seconds: for 90 kHz, `a` is
    /// 90000 and `b` is 1. `now` is the service's current time in ms. Start values: 0. Throws
    /// std::out_of_range if the time does not fit into an unsigned long, which has 32 bits on 32-bit
    /// machines.
    virtual bool GetFirstPTS(unsigned long long& pts, int& a, int& b, unsigned long& now) = 0;

protected:
    IPlayerControl() = default;
};

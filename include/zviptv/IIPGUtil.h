// SPDX-License-Identifier: MIT
/// @file
/// The programme guide.

#pragma once

#include <zviptv/Export.h>
#include <zviptv/IPTVTypes.h>

#include <string>

/// Queries of the programme guide. Obtained from CIPTVServiceAPI::CreateIPGUtil.
///
/// Every method makes one blocking exchange with the service, of at most 2000 ms. It can be called from any
/// thread and needs no main loop. It returns true if the service answered, and false, with unchanged
/// out-parameters, if the exchange failed. The service's texts are passed on unchanged; times are seconds
/// since 1970, UTC, and durations seconds. docs/reference/guide.md describes the simulator's texts, and its
/// answers if nothing is found. An answer with a missing or malformed number or flag makes the method throw
/// std::invalid_argument or std::out_of_range ("stoi").
///
/// The object stays when the service leaves the bus. Its calls fail until it is destroyed and created again.
///
/// Lifetime: a pointer to the object is valid for the life of the process. After the object has been
/// destroyed, every call on it returns false, on any thread; after the next Create the pointer works again.
/// If the object is destroyed during a call on another thread, the call is answered or returns false.
///
/// ZVGetLastFailure() says why a call failed.
class ZVIPTV_API IIPGUtil
{
protected:
    /// Released with CIPTVServiceAPI::DestroyIPGUtil only.
    virtual ~IIPGUtil() = default;

public:
    IIPGUtil(IIPGUtil const&) = delete;
    IIPGUtil& operator=(IIPGUtil const&) = delete;

    /// Whether the guide's data file exists.
    virtual bool ExistXmlForIPG(bool& exist) = 0;

    /// Number of programmes of the service `inID` that are on during the period from `startTime` up to, but
    /// not including, `startTime + duration`; a duration of 0 selects none.
    virtual bool GetProgramListSize(unsigned long long inID, unsigned int startTime, unsigned int duration,
                                    int& size) = 0;

    /// Programme number `index`, from 0, of the list of the last GetProgramListSize, or of the whole guide if
    /// there was none.
    virtual bool GetProgram(unsigned int index, std::string& program) = 0;

    /// The programme with this `id`, or the one before or after it.
    virtual bool GetProgram(IPGProgramId id, Program_IPG program, std::string& out) = 0;

    /// The programme that is on now on the service `inID`.
    virtual bool GetPresentProgram(unsigned long long inID, std::string& program) = 0;

    /// The programme of the service `inID` with the event id `eventID`, 32 bits.
    virtual bool FindProgram(unsigned long long inID, unsigned int eventID, std::string& program) = 0;

    /// The rating of the programme with the event id `eventID`.
    virtual bool GetRating(unsigned int eventID, std::string& rating) = 0;

    /// The genres of the programme with the event id `eventID`.
    virtual bool GetGenre(unsigned int eventID, std::string& genre) = 0;

    /// The programmes that GetProgramListSize counts. A message holds 32 MiB: a longer list is cut.
    virtual bool GetProgramList(unsigned long long inID, unsigned int startTime, unsigned int duration,
                                std::string& list) = 0;

    /// Makes the service load guide data from the file `path`, which the service opens, not the application.
    /// `done` is true if it did. If a large file takes longer than the call waits, the call fails, but the
    /// loading continues. If `path` contains a zero byte, only the text before it is sent.
    virtual bool CloneUSBToTV(std::string path, bool& done) = 0;

protected:
    IIPGUtil() = default;
};

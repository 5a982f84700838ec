// SPDX-License-Identifier: MIT
/// @file
/// PES packets and captions.

#pragma once

#include <zviptv/Export.h>
#include <zviptv/IPTVTypes.h>

/// PES packets and caption data, pushed by the service. Obtained from
/// CIPTVServiceAPI::CreateIPTVDataSubscriber.
///
/// Callbacks run on the thread that iterates the main context in which the object was created, in ascending
/// order of their keys, each with a null user-data pointer, and must return promptly. The record that they
/// get is valid during the callback: copy the data that you need later.
/// The first subscription of a kind, and the end of the last one, call the service. They block for at most
/// 2000 ms, and as long again for each other thread that does the same. Subscribe and unsubscribe on any
/// thread, also inside a callback. Unsubscribing does not wait for a callback that runs, or is about to run,
/// on another thread.
///
/// A notification with a missing or malformed number reaches no callback: std::invalid_argument or
/// std::out_of_range ("stoi", "stoll") leaves the dispatch and passes through GLib to the code that iterates
/// the context. So does std::length_error for an announced size that is negative or over 1 MiB larger than
/// the data. Without a handler around the main loop, these exceptions end the process. Data that is shorter
/// than announced is filled up with zeros.
///
/// The object stays when the service leaves the bus. Nothing arrives until it is destroyed and created again.
///
/// Lifetime: a pointer to the object is valid for the life of the process. After the object has been
/// destroyed, every call on it returns false, on any thread; after the next Create the pointer works again.
/// If the object is destroyed during a call on another thread, the call is answered or returns false.
///
/// ZVGetLastFailure() says why a call failed.
class ZVIPTV_API IIPTVDataSubscriber
{
protected:
    /// Released with CIPTVServiceAPI::DestroyIPTVDataSubscriber only.
    virtual ~IIPTVDataSubscriber() = default;

public:
    IIPTVDataSubscriber(IIPTVDataSubscriber const&) = delete;
    IIPTVDataSubscriber& operator=(IIPTVDataSubscriber const&) = delete;

    /// Subscribes `callback` for caption data; `userData` is not used. Returns true with the subscription's
    /// key in `key`, or false, with `key` unchanged, if `callback` is null or no key could be made. Keys
    /// depend on the clock's second, so a second subscription of a kind within the same second fails: try
    /// again when std::time has changed. True does not guarantee delivery: if the service does not answer,
    /// the request is not repeated, and ZVGetLastFailure() says so.
    virtual bool SubscribeForCaption(void (*callback)(ZVCaption& caption, void* userData), void* userData,
                                     int& key) = 0;

    /// Ends a subscription. Always returns false; ZVGetLastFailure() says whether it failed.
    virtual bool UnsubscribeForCaption(int key) = 0;

    /// Subscribes `callback` for PES packets; otherwise like SubscribeForCaption.
    virtual bool SubscribeForPES(void (*callback)(ZVPESData& pes, void* userData), void* userData,
                                 int& key) = 0;

    /// Ends a subscription. Always returns false; ZVGetLastFailure() says whether it failed.
    virtual bool UnSubscribeForPES(int key) = 0;

protected:
    IIPTVDataSubscriber() = default;
};

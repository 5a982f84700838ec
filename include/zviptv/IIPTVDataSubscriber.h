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
/// get is valid during the call: copy what is needed later.
///
/// Subscribing and unsubscribing block for at most 2000 ms when the service has to be told (first
/// subscription of a kind, last one gone), and as long again for each other thread that is doing the same.
/// They may be done from any thread, also from inside a callback. A callback that another thread unsubscribes
/// while it runs or is about to run is not waited for.
///
/// A notification with a missing or malformed number reaches no callback: std::invalid_argument or
/// std::out_of_range ("stoi", "stoll") leaves the dispatch and passes through GLib to whoever iterates the
/// context, and std::length_error does for an announced size that is negative or more than 1 MiB above what
/// arrived. Without a handler around the main loop they end the process. Data that is shorter than announced
/// is filled up with zeros.
///
/// The object stays when the service leaves the bus. Nothing arrives until it is destroyed and created again.
///
/// Lifetime: a pointer to the object is valid for the life of the process. While the object is destroyed,
/// every call on it returns false, from any thread; after the next Create the pointer works again. A call
/// that another thread has begun when the object is destroyed is answered or returns false.
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

    /// Subscribes `callback` for caption data; `userData` is not used. True with the subscription's key in
    /// `key`; false, with `key` unchanged, when `callback` is null or no key could be made: keys are drawn
    /// from the clock's second, so a second subscription of a kind within the same second fails. Try again
    /// when std::time has changed. True does not promise delivery: a service that does not answer is asked
    /// once and not again; ZVGetLastFailure() says so.
    virtual bool SubscribeForCaption(void (*callback)(ZVCaption& caption, void* userData), void* userData,
                                     int& key) = 0;

    /// Ends a subscription. Always returns false; ZVGetLastFailure() tells whether it failed.
    virtual bool UnsubscribeForCaption(int key) = 0;

    /// Subscribes `callback` for PES packets; otherwise as SubscribeForCaption.
    virtual bool SubscribeForPES(void (*callback)(ZVPESData& pes, void* userData), void* userData,
                                 int& key) = 0;

    /// Ends a subscription. Always returns false; ZVGetLastFailure() tells whether it failed.
    virtual bool UnSubscribeForPES(int key) = 0;

protected:
    IIPTVDataSubscriber() = default;
};

// SPDX-License-Identifier: MIT
#pragma once

namespace zviptv::sim::link {

// The connection between the simulator and its service, a socket pair. The service exports the control
// interface there, and this interface. The simulator first calls Restore, then makes the waiting calls of the
// control interface, then calls Begin. The service emits Ready when applications can find it, and Kept
// whenever its dictionary for the Restore of the next service changes. With Dies it requests to be killed,
// like a recorded service; the argument is the number of seconds until the next service starts, negative for
// never. It emits Captions, with what CaptionsOf() returns, whenever that changes; the bus does not get it.
// Watch makes the service write the "picture" or the "sound" to a pipe as a transport stream. The answer
// contains the "state": "playing", "still" (the pipe ends because the clock is paused), "waiting" (call
// again) or "nothing" (the programme has none), the "subtitle" and the size of the picture. The service
// closes the pipe if the stream jumps, another track is selected, or the reader does not keep up.
constexpr char Interface[] = "org.corvel.zviptvapi.Simulator1.Service";
constexpr char Introspection[] = "<node><interface name='org.corvel.zviptvapi.Simulator1.Service'>"
                                 "<method name='Restore'><arg type='a{sv}' direction='in'/></method>"
                                 "<method name='Begin'/>"
                                 "<method name='Watch'><arg type='s' direction='in'/>"
                                 "<arg type='h' direction='in'/>"
                                 "<arg type='a{sv}' direction='out'/></method>"
                                 "</interface></node>";
constexpr char Restore[] = "Restore";
constexpr char Begin[] = "Begin";
constexpr char Watch[] = "Watch";
constexpr char Ready[] = "Ready";
constexpr char Kept[] = "Kept";
constexpr char Dies[] = "Dies";
constexpr char Captions[] = "Captions";

/// Descriptor of the service's end in its process.
constexpr int Descriptor = 3;

/// Descriptor of the file to which the service of a replay writes the requests that were not recorded, one
/// per line: its contents are not lost when the service is killed.
constexpr int UnrecordedDescriptor = 4;

constexpr char Properties[] = "org.freedesktop.DBus.Properties";
constexpr char PropertiesChanged[] = "PropertiesChanged";

// Errors of the control interface.
constexpr char InvalidArgument[] = "org.corvel.zviptvapi.Simulator1.Error.InvalidArgument";
constexpr char NotRunning[] = "org.corvel.zviptvapi.Simulator1.Error.NotRunning";
constexpr char TimedOut[] = "org.corvel.zviptvapi.Simulator1.Error.TimedOut";
constexpr char Failed[] = "org.corvel.zviptvapi.Simulator1.Error.Failed";

} // namespace zviptv::sim::link

// SPDX-License-Identifier: MIT
#pragma once

namespace zviptv::sim::link {

// The connection between the simulator and its service, a socket of which both have an end. The service
// exports the control interface there, and this interface: first Restore, then calls of the
// control interface that have waited, then Begin. It emits Ready once applications find it, and Kept, whose
// dictionary is for the Restore of the service after it, whenever that changes. With Dies it asks to be
// killed, as a recorded service was; the argument is the number of seconds after which the next one starts,
// negative for never.
//
// Watch has what is played written to a pipe as a transport stream: "picture" or "sound". The answer has the
// "state": "playing", "still" (the pipe ends, since the clock is paused), "waiting" (ask again), "nothing"
// (the programme has none), what the "subtitle" is and the size of the picture. The service closes the pipe
// when the stream jumps, another track is selected, or the reader does not keep up.
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

/// Number of the service's end in its process.
constexpr int Descriptor = 3;

/// Number of the file in which the service of a replay writes the requests that were not recorded, a line
/// each: what was written there is not lost when the service is killed.
constexpr int UnrecordedDescriptor = 4;

constexpr char Properties[] = "org.freedesktop.DBus.Properties";
constexpr char PropertiesChanged[] = "PropertiesChanged";

// Errors of the control interface.
constexpr char InvalidArgument[] = "org.corvel.zviptvapi.Simulator1.Error.InvalidArgument";
constexpr char NotRunning[] = "org.corvel.zviptvapi.Simulator1.Error.NotRunning";
constexpr char TimedOut[] = "org.corvel.zviptvapi.Simulator1.Error.TimedOut";
constexpr char Failed[] = "org.corvel.zviptvapi.Simulator1.Error.Failed";

} // namespace zviptv::sim::link

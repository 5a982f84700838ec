// SPDX-License-Identifier: MIT
#pragma once

// The longer texts of --help.
namespace zviptv::ctl::help {

constexpr char const* Program =
    "Talks to the IPTV service: every call of its interface, pushed data, and commands in "
    "plain words.";

constexpr char const* ProgramFooter = R"(Exit codes:
  0  the service accepted, or the command ran to its end
  1  the service answered "false", or the simulator refused
  2  the command line makes no sense
  3  no bus, no service, or the service went away
  4  time-out, or the bus reported an error
  5  the service sent something that cannot be read
  6  a file or standard output could not be written

With --json a command writes exactly one object to standard output, on one line:
"result" (bool) and one member for every value. Flags are true or false, other
numbers and enumerations are numbers, texts are UTF-8 (other bytes as U+FFFD),
records are objects, lists are arrays. A language is two members: "language",
its number, and "languageCode", its ISO 639 code or "". What the service does
not tell is null. The guide commands give the guide's own JSON as such, a guide
that is no JSON as texts. 'call' gives records and texts as they came, with 0 for
a number that is not known. When the exit code is 3, 4 or 5 there are "result"
(false) and "error" (text) alone, but status and doctor add what they know; after
a usage error there is nothing. The commands pes, caption, watch and trace write
one object a line as it happens instead.

Messages go to standard error.
)";

constexpr char const* SimulatorFooter =
    R"(The simulator's bus is that of DBUS_SYSTEM_BUS_ADDRESS, as for every command; the
command after 'zviptv-sim ... --' finds it there. status and watch name the
properties of the control interface. With --json, status prints them as one
object, watch prints an object a line: "event" is "change" with the properties
that have changed, "request", "died" or "restarted".
)";

constexpr char const* CallFooter =
    R"(Arguments come in the order of the declaration; 'zviptvctl methods' shows it.
  numbers       decimal, or hexadecimal after 0x
  flags         1, true, on; 0, false, off
  enumerations  a number, or the enumerator's name, with or without its prefix:
                PLAYING, playing and ZV_SOURCE_STATE_PLAYING are the same
  texts         as they are; after -- also those that start with a dash
GetProgram takes 1 argument (index) or 5 (serviceId eventId startTime duration
program). SetAppID without an argument sends no name.

The answer is one line a value: "result: true", "stc: 123456", a line for every
field of a record: "audio.language: eng". Line breaks in texts are written \n,
other control characters \xNN, backslashes \\. With --json the members are named
as the parameters are. After the result "false" the values are what the service
sent with it.
)";

constexpr char const* StreamFooter =
    R"(Each packet is a line: "audio pid=0x0101 pts=133200 size=2048", or with --json
{"pid":257,"pts":133200,"size":2048,"type":2}. Captions have neither pid nor pts.
The types are those of EZVPESType: 0 other, 1 video, 2 audio, 3 subtitle,
4 teletext, 5 caption. The file of --out has PES packets with their headers, which
most players do not read; they read that of --es or --ts. A summary follows on
standard error. Ctrl-C ends the subscription and the command with exit code 0. The
end of the source does not; standard error reports it once, and once that nothing
has come for 5 seconds.
Standard error also reports why nothing can come: the service refuses the
subscription (exit code 1), it closes the connection of the endpoint (3), or its
pushes have another sender, object or form than the library accepts.
)";

constexpr char const* WatchFooter =
    R"(Tells what an application that lives long sees: state and clock once a second,
traffic of every PID, and step by step what happens when the service goes and
comes back. On a terminal one line is rewritten in place. With --json every line
is an object with "event": connected, subscribed, tick, lost,
player-control-gone, factory-refuses, factory-works, subscriber-fails, waiting,
back, trouble or unreadable. Trouble is reported once while it lasts, unless
standard output is a terminal also on standard error. If it lasts to the end, the
exit code says so.
)";

constexpr char const* TraceFooter =
    R"(Without --in the command watches the system bus, or that of
DBUS_SYSTEM_BUS_ADDRESS, as its monitor: run it as root, or as the user who runs
the bus. Ctrl-C ends it with exit code 0.

Each message is a line: time, application, direction, endpoint, function, values
and latency. Directions: -> to the service, <- a reply, << pushed data, -- an
application or the service has left or arrived. "!" precedes what is wrong with a
message. An application is its bus name, the name that it gave with SetAppID, and
its process. With --json each message is an object. The members are described
in the page "Trace the bus".

--summary, --svg and --html print and draw instead of the lines; --out records as
well, and all messages of the bus, whatever --application, --endpoint and
--function choose. Other programs read the file: Wireshark, with the dissector of
this package, busctl and Bustle. --in reads what they, dbus-monitor --pcap or
busctl capture have written. A file that is damaged is read up to the damage, and
the exit code is 5.
)";

constexpr char const* BatchFooter =
    R"(Each line of standard input is a command with its arguments and options, quoted as
in a shell; # begins a comment. Each command is answered at once by one line: the
object of --json with two more members, "command", the line, and "exitCode". After
exit codes other than 0 there is also "error". A command that fails does not end the
batch. The exit code is that of the first command that failed, 0 if none has.

All commands share one process and one session. Options of the batch hold for its
commands. 'call', 'methods', 'status', 'rating' and the commands of audio, subtitle,
ttx, captions, mute, unlock and guide can run in a batch.
)";

constexpr char const* DoctorFooter =
    R"(One line a check, in the order in which they depend on each other: bus, accounts,
policy, group, service, owner, main loop, protocol, endpoints, requests, version.
Each is ok, wrong or unknown; unknown means that something else keeps it from
being looked at. The lines below a check that is wrong say what it means for an
application and which commands fix it. Accounts, policy and group matter on a bus
that denies by default, as a machine's system bus does. The doctor tries policies
instead of reading them: two of its connections call and signal each other. It
announces one channel of each type to the service, sends each endpoint a request
that changes nothing, and withdraws the channels again.

The report holds for the user who runs the command. Root also learns whether the
bus knows the service's user.

The exit code is that of the first thing that is wrong: 3 for a bus or service
that is missing, 4 for one that refuses or does not answer, 5 for answers that
cannot be read and for versions that do not fit. With --json "checks" is an array
of objects: "check", "state", "text", and of what is wrong "meaning", "commands"
and "note"; "summary" and, if something is wrong, "error" are texts.
)";

} // namespace zviptv::ctl::help

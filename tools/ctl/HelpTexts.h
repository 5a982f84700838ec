// SPDX-License-Identifier: MIT
#pragma once

// The longer texts of --help.
namespace zviptv::ctl::help {

constexpr char const* Program =
    "Calls the methods of the IPTV service, and shows the data that the service pushes.";

constexpr char const* ProgramFooter = R"(Exit codes:
  0  the service accepted, or the command ran to its end
  1  the service answered "false", or the simulator refused
  2  the command line is invalid
  3  no bus, no service, or the service went away
  4  time-out, or the bus reported an error
  5  the service sent something that cannot be read
  6  a file or standard output could not be written

With --json a command writes exactly one object to standard output, on one line:
"result" (bool) and one member for every value. Flags are true or false, other
numbers and enumerations are numbers, texts are UTF-8 (other bytes as U+FFFD),
records are objects, lists are arrays. A language has two members: "language", its
number, and "languageCode", its ISO 639 code or "". Values that the service does not
report are null. The output of the guide commands contains the guide's JSON
unchanged, or a text if it is not JSON. 'call' prints records and texts as received:
a number that the service does not report is 0. If the exit code is 3, 4 or 5, the
object contains only "result" (false) and "error" (text); status and doctor also
print what they have found out. After a usage error there is no output. The commands
pes, caption, watch and trace instead write one line with an object as soon as a
packet or an event occurs.

Messages go to standard error.
)";

constexpr char const* SimulatorFooter =
    R"(Like every command, sim uses the bus of DBUS_SYSTEM_BUS_ADDRESS, which is set for
the command after 'zviptv-sim ... --'. status and watch use the names of the
properties of the control interface. With --json, status prints one object, and
watch one object per line: "event" is "request", "died", "restarted", or "change"
with the properties that have changed.
)";

constexpr char const* CallFooter =
    R"(Give the arguments in the order of the declaration; 'zviptvctl methods' shows it.
  numbers       decimal, or hexadecimal after 0x
  flags         1, true, on; 0, false, off
  enumerations  a number, or the enumerator's name, with or without its prefix:
                PLAYING, playing and ZV_SOURCE_STATE_PLAYING are the same
  texts         unchanged; after -- also those that start with a dash
GetProgram takes 1 argument (index) or 5 (serviceId eventId startTime duration
program). SetAppID without an argument sends no name.

The answer has one line per value: "result: true", "stc: 123456", and one line per
field of a record: "audio.language: eng". Line breaks in texts are written \n, other
control characters \xNN, backslashes \\. With --json the members have the names of
the parameters. After the result "false", the values are those that the service sent
with it.
)";

constexpr char const* StreamFooter =
    R"(Each packet is one line: "audio pid=0x0101 pts=133200 size=2048", or with --json
{"pid":257,"pts":133200,"size":2048,"type":2}. Captions have neither pid nor pts.
The types are those of EZVPESType: 0 other, 1 video, 2 audio, 3 subtitle, 4
teletext, 5 caption. The file of --out has PES packets with their headers, which
most players cannot read; they can read the files of --es and --ts. A summary
follows on standard error. Ctrl-C ends the subscription and the command with exit
code 0. The command continues when the source ends. On standard error, it reports
once that the source has ended, and once that no data has arrived for 5 seconds. It
also reports why no data can arrive: the service refuses the subscription (exit code
1), it closes the connection of the endpoint (3), or its pushes have a sender, an
object or a form that the library does not accept.
)";

constexpr char const* CaptionFooter =
    R"(
With --text each caption is a line when it is complete: "00:00:02.480 teletext 888
eng: One / two", with "erased" when it leaves the screen. The time is the PTS. With
--json it is an object with "kind", "page", "languageCode", "pid", "pts" and "lines",
an array of texts. --count counts captions. Times in the file of --srt count from the
first PTS that arrives.
)";

constexpr char const* WatchFooter =
    R"(Shows what a long-running application sees: state and clock once a second, the
traffic of every PID, and each step when the service leaves and comes back. On a
terminal, one line is rewritten in place. With --json, every line is an object with
"event": connected, subscribed, tick, lost, player-control-gone, factory-refuses,
factory-works, subscriber-fails, waiting, back, trouble or unreadable. The command
reports a problem once while it lasts. Unless standard output is a terminal, it also
reports the problem on standard error. If the problem lasts until the end, the exit
code is that of the problem.
)";

constexpr char const* TraceFooter =
    R"(Without --in, the command monitors the system bus, or the bus of
DBUS_SYSTEM_BUS_ADDRESS: run it as root, or, on a private bus, as the user who
runs the bus. Ctrl-C ends it with exit code 0.

Each message is a line: time, application, direction, endpoint, function, values and
latency. Directions: -> to the service, <- a reply, << pushed data, -- an
application or the service has left or arrived. "!" precedes a problem of a message.
An application is shown with its bus name, the name that it set with SetAppID, and
its process. With --json each message is an object. The members are described in the
page "Trace the bus".

--summary, --svg and --html print or draw instead of the lines. --out also records
all messages of the bus, regardless of --application, --endpoint and --function.
busctl, Bustle, and Wireshark with the dissector of this package can read the file.
--in reads pcapng and pcap files: those of --out, Wireshark, dbus-monitor --pcap and
busctl capture. A damaged file is read up to the damage, and the exit code is 5.
)";

constexpr char const* BatchFooter =
    R"(Each line of standard input is a command with its arguments and options, quoted as
in a shell; # begins a comment. Each command is answered at once by one line: the
object of --json with two more members, "command" (the line) and "exitCode". If the
exit code is not 0, there is also "error". A command that fails does not end the
batch. The exit code is that of the first command that failed, or 0 if none has.

All commands share one process and one session. Options of the batch apply to its
commands. 'call', 'methods', 'status', 'rating' and the commands of audio, subtitle,
ttx, captions, mute, unlock and guide can run in a batch.
)";

constexpr char const* DoctorFooter =
    R"(Prints one line per check, in the order in which they depend on each other: bus,
accounts, policy, group, service, owner, main loop, protocol, endpoints, requests,
version. Each is ok, wrong or unknown; unknown means that another problem prevents
the check. The lines after a failed check say what the problem means for an
application and which commands fix it. Accounts, policy, group and owner matter on a
bus that denies by default, like a machine's system bus. The doctor tries policies
instead of reading them: two of its connections call and signal each other. It
announces one channel of each type to the service, sends each endpoint a request
that changes nothing, and withdraws the channels again.

The report is for the user who runs the command. For root, it also shows whether the
bus knows the service's user.

The exit code is that of the first problem: 3 for a bus that is missing or refuses
the user, and for a service that is missing or leaves the bus; 4 for a bus or a
service that does not answer, for a problem with accounts, policy or group, for a
service of the wrong user, and for endpoints that are missing or answer with errors;
5 for answers that cannot be read, and for versions that do not match. With --json,
"checks" is an array of objects with "check", "state" and "text", and for problems
also "meaning", "commands" and "note"; "summary" and, if there is a problem, "error"
are texts.
)";

} // namespace zviptv::ctl::help

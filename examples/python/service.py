#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""A complete IPTV service on python3-gi, written from docs/reference/protocol.md.

It answers every function and pushes a PES packet and a caption every 100 ms to each application that asked
for them. It plays nothing: the tables below take the place of a player, and all handles mean the same.
"""
import argparse
import json
import struct
import signal
import sys
import time
from collections import defaultdict, deque
from functools import partial

from gi.repository import Gio, GLib

HELPER = "org.corvel.zviptvapi.dbushelper"
HELPER_PATH = "/org/corvel/zviptvapi/dbushelper"
PEER = "org.corvel.zviptvapi.DbusCommunication"
PEER_PATH = "/org/corvel/zviptvapi/DbusCommunication/"
INTERFACES = """<node><interface name='org.corvel.zviptvapi.dbushelper'><method name='SendSignal'>
<arg type='a(ss)' name='data' direction='in'/><arg type='a(ss)' name='response' direction='out'/>
</method></interface><interface name='org.corvel.zviptvapi.DbusCommunication'><method name='Send'>
<arg type='a{sv}' name='data' direction='in'/><arg type='a{sv}' name='response' direction='out'/>
</method></interface></node>"""
TYPES = ("PLAYERCONTROL", "BROADCASTDATA", "IPTVDATASUBSCRIBER", "IPGUTIL")
REFUSED = {"result_internal": 0}
MAX_QUEUED = 256  # notifications that wait for a slow application; more are dropped
WINDOW = 32  # notifications that an application has not confirmed


def language(code):
    return int.from_bytes(code.encode(), "big")


AUDIO, TTX, SUBTITLE, TEXT, DUAL_SOUND, RATINGS, RESOLUTION = (struct.Struct("=" + layout) for layout in (
    "iiHBBIIBBB9x", "iHBBBB6x", "iiHHHBBBBB5x", "iiHHBB2x", "iB3x", "3B3B", "IIIIHHB11x"))
TRACKS = {  # records by their key in replies and, for ISDB texts, their type; otherwise type 0
    ("audio", 0): [AUDIO.pack(language("eng"), 1, 0x101, 1, 0, 48000, 192000, 2, 0, 0x03),
                   AUDIO.pack(language("deu"), 2, 0x102, 2, 3, 48000, 448000, 2, 1, 0x06)],
    ("ttx", 0): [TTX.pack(language("eng"), 0x104, 1, 0x00, 1, 4),
                 TTX.pack(language("deu"), 0x104, 8, 0x89, 5, 4)],
    ("hybridSbt", 0): [SUBTITLE.pack(language("eng"), 1, 0x103, 1, 2, 0x10, 0, 0, 0, 3),
                       SUBTITLE.pack(language("deu"), 2, 0x104, 0, 0, 5, 1, 8, 0x89, 4)],
    ("isdbText", 0): [TEXT.pack(language("jpn"), 0, 0x105, 0x0008, 0x30, 0),
                      TEXT.pack(language("eng"), 0, 0x105, 0x0008, 0x31, 1)],
    ("isdbText", 1): [TEXT.pack(language("jpn"), 1, 0x106, 0x0008, 0x38, 0)]}
TRACK_FUNCTIONS = {  # select one, count them, describe one, report which one is selected
    "audio": ("SetCurrentAudioByIndex", "SizeOfAudio", "GetAudio", "GetCurrentAudioInfo"),
    "ttx": ("SetCurrentTTX", "SizeOfTTX", "GetTTX", "GetCurrentTTX"),
    "hybridSbt": ("SetCurrentHybridSBT", "SizeOfHybridSBT", "GetHybridSBT", "GetCurrentHybridSBT"),
    "isdbText": ("SetCurrentISDBText", "SizeOfISDBText", "GetISDBText", "GetCurrentISDBText")}
CAPTIONS = {1: {"landCode": language("eng"), "koreanCode": "0"},
            2: {"landCode": language("kor"), "koreanCode": "1"}}
NO_CAPTIONS = REFUSED | {"landCode": 0, "koreanCode": "0"}
FIRST_PTS = 90000


def programme(service, event, start, duration, title, genres, age):
    rating = {"system": "FSK", "value": f"FSK {age}", "minimum_age": age} if age else None
    return {"service_id": str(service), "event_id": event, "start_time": start, "duration": duration,
            "channel": "", "title": title, "subtitle": "", "description": "", "language": "en",
            "genres": genres, "rating": rating, "icon": "", "episode": "", "translations": []}


PROGRAMMES = [programme(1, 1, 1774720000, 3600, "News", ["News"], 0),
              programme(1, 2, 1774723600, 5400, "Cellar Door", ["Movie", "Horror"], 16),
              programme(2, 3, 1774720000, 7200, "Hérissons", [], 0)]


class Request:
    def __init__(self, channel, body):
        self.channel = channel
        self._values = {key: bytes(value) for key, value in body.unpack()[0].items()}

    def text(self, key):
        return self._values.get(key, b"").decode(errors="replace")

    def number(self, key):
        """Raises ValueError if a number is missing or malformed."""
        return int(self.text(key))


def message(values):
    """The body of a message. Numbers and flags are decimal text; every value is sent as bytes."""
    entries = {}
    for key, value in values.items():
        value = value if isinstance(value, (bytes, str)) else str(int(value))
        data = GLib.Bytes(value if isinstance(value, bytes) else value.encode())
        entries[key] = GLib.Variant.new_from_bytes(GLib.VariantType("ay"), data, True)
    return GLib.Variant("(a{sv})", (entries,))


def at(entries, index):
    return entries[index] if 0 <= index < len(entries) else None


class Playback:
    """Answers PLAYERCONTROL and BROADCASTDATA: takes a request, returns the values of the reply."""

    def __init__(self):
        self.stc = FIRST_PTS
        self._chosen = defaultdict(int)  # what applications have selected: track indices, the sound, the lock

    def functions(self):
        functions = {
            "MuteAudio": lambda _: {}, "MuteVideo": lambda _: {}, "SetAppID": lambda _: {},
            "GetSourceState": lambda _: {"sourcestate": 2}, "GetSTCCount": lambda _: {"stcCount": self.stc},
            "GetFirstPTS": lambda _: {"firstPTS": FIRST_PTS, "timebaseden": 90000, "timebasenum": 1,
                                      "currenttime": time.monotonic() * 1000 % 2**32},
            "GetResolution": lambda _: {
                "resolution": 3, "resolutioninfo": RESOLUTION.pack(1920, 1080, 50, 1, 16, 9, 0)},
            "GetAudioFormat": lambda _: {"encodeType": TRACKS["audio", 0][self._chosen["audio", 0]][4]},
            "SetAudioFormat": self._choose_coding,
            "SetDigitalDualSound": lambda request: self._choose("sound", request.number("mode"), range(4)),
            "GetDigitalDualSound": self._dual_sounds, "SetCurrentISDBTextService": self._choose_by_tag,
            "CheckHardOfHearingSBT": lambda _: {"exists": any(one[15] for one in TRACKS["hybridSbt", 0])},
            "GetPreferredHybridSBT": lambda _: {
                "landCode": language("eng"), "hybridSbt": TRACKS["hybridSbt", 0][0]},
            "GetPreferredTTXSubtitle": lambda _: {"ttxSubtitle": TRACKS["ttx", 0][1]},
            "GetCaptionDataMode": lambda _: {"mode": 1}, "GetDefaultCaptionService": lambda _: {"service": 1},
            "GetCaptionLanguage": lambda request: CAPTIONS.get(request.number("service"), NO_CAPTIONS),
            "GetRatingInfo": lambda _: {"ratingInfoSize": 2, "ratingInfo": RATINGS.pack(0, 0, 16, 1, 2, 3)},
            "SetUnlockedInfo": lambda request: self._choose("lock", request.number("ratingInfo"), range(4)),
            "UnMuteByRatingPin": lambda _: self._choose("lock", 1, [1] if self._is_locked(1) else []),
            "SetUnlockedInfoWhenFactoryMode": lambda request: self._choose(
                "factory", request.number("lockState"), range(2)),
            "GetRatingLockState": lambda _: {"lockState": self._is_locked(1)},
            "FlagServiceLocked": lambda _: {"outServiceLocked": self._is_locked(2)}}
        for kind, names in TRACK_FUNCTIONS.items():
            answers = (self._choose_track, self._count, self._describe, self._current)
            functions.update((name, partial(answer, kind)) for name, answer in zip(names, answers))
        return functions

    def _choose(self, name, value, allowed):
        if value not in allowed:
            return REFUSED
        self._chosen[name] = value
        return {}

    @staticmethod
    def _list(kind, request):
        name = (kind, request.number("mode") if kind == "isdbText" else 0)
        return name, TRACKS.get(name, [])

    def _choose_track(self, kind, request):
        name, tracks = self._list(kind, request)
        return self._choose(name, request.number("index"), range(len(tracks)))

    def _count(self, kind, request):
        return {"size": len(self._list(kind, request)[1])}

    def _choose_by_tag(self, request):
        name, texts = self._list("isdbText", request)
        places = {text[12]: place for place, text in enumerate(texts)}
        return self._choose(name, places.get(request.number("compTag")), places.values())

    def _describe(self, kind, request):
        """A reply has all its values, whatever its result: zeros for a missing track."""
        _, tracks = self._list(kind, request)
        track = at(tracks, request.number("index"))
        code = int.from_bytes(track[:4] if track else b"", sys.byteorder)
        values = {"landCode": code} if kind == "hybridSbt" else {}
        return values | {kind: track or bytes(len(TRACKS[kind, 0][0]))} | ({} if track else REFUSED)

    def _current(self, kind, request):
        name, tracks = self._list(kind, request)
        if not tracks:
            return REFUSED | {"landCode": 0, "index": 0}
        index = self._chosen[name]
        return {"landCode": int.from_bytes(tracks[index][:4], sys.byteorder), "index": index}

    def _choose_coding(self, request):
        places = {track[4]: place for place, track in enumerate(TRACKS["audio", 0])}
        wanted = request.number("encodeType")
        if wanted not in places and request.number("isPreferred"):
            return {}  # a coding that is only preferred may be missing
        return self._choose(("audio", 0), places.get(wanted), places.values())

    def _dual_sounds(self, _request):
        mode, available = self._chosen["sound"], TRACKS["audio", 0][self._chosen["audio", 0]][21]
        return {"currentMode": DUAL_SOUND.pack(mode, available),
                "nextMode": DUAL_SOUND.pack((mode + 1) % 4 if available else mode, available)}

    def _is_locked(self, unlocking):
        """Whether a lock is active that this value of EZVParentalLock, and each higher one, would unlock."""
        return not self._chosen["factory"] and self._chosen["lock"] < unlocking


class Guide:
    """Answers IPGUTIL with the JSON of docs/reference/guide.md, or with an empty text if nothing is found."""

    def __init__(self, now):
        self._programmes = PROGRAMMES
        self._clock_offset = 0 if now is None else now - time.time()

    def functions(self):
        return {"ExistXmlForIPG": lambda _: {"data": bool(self._programmes)},
                "GetProgramListSize": self._list_size, "GetProgram": self._program,
                "GetProgramIPG": self._neighbour, "GetPresentProgram": self._present,
                "FindProgram": lambda request: self._event(request, self._service(request)),
                "GetRating": lambda request: self._event(request, self._programmes, "rating"),
                "GetGenre": lambda request: self._event(request, self._programmes, "genres"),
                "GetProgramList": lambda request: self._text(self._list(request)), "CloneUSBToTV": self._load}

    @staticmethod
    def _text(value):
        return REFUSED | {"data": ""} if value is None else {
            "data": json.dumps(value, ensure_ascii=False, sort_keys=True, separators=(",", ":"))}

    def _service(self, request):
        return [one for one in self._programmes if one["service_id"] == request.text("inID")]

    def _list(self, request):
        programmes, start = self._service(request), request.number("startTime")
        end = start + request.number("duration")
        return [one for one in programmes if max(start, one["start_time"]) < min(
            end, one["start_time"] + one["duration"])] if programmes else None

    def _list_size(self, request):
        request.channel.programmes = self._list(request) or []
        return {"data": len(request.channel.programmes)}

    def _program(self, request):
        counted = request.channel.programmes
        return self._text(at(self._programmes if counted is None else counted, request.number("index")))

    def _neighbour(self, request):
        asked, step = json.loads(request.text("inID")), request.number("program")
        programmes = [one for one in self._programmes if one["service_id"] == asked["service_id"]]
        for place, one in enumerate(programmes if step in (-1, 0, 1) else []):
            if one["event_id"] % 65536 == asked["event_id"] and asked["start_time"] in (0, one["start_time"]):
                return self._text(at(programmes, place + step))
        return self._text(None)

    def _present(self, request):
        now = time.time() + self._clock_offset
        return self._text(next((one for one in self._service(request)
                                if 0 <= now - one["start_time"] < one["duration"]), None))

    def _event(self, request, programmes, member=None):
        found = next((one for one in programmes if one["event_id"] == request.number("eventID")), None)
        return self._text(found[member] if found and member else found)

    def _load(self, request):
        try:
            with open(request.text("path"), encoding="utf-8") as file:  # contains an answer of GetProgramList
                programmes = [{member: one[member] for member in PROGRAMMES[0]} for one in json.load(file)]
            self._programmes = sorted(programmes, key=lambda one: (int(one["service_id"]), one["start_time"]))
        except (LookupError, OSError, TypeError, ValueError):
            return REFUSED | {"data": 0}
        return {"data": 1}


class Channel:
    """An application's channel. Notifications wait until the application has handled the previous ones."""

    def __init__(self, connection, name, word, on_vanished):
        self._connection = connection
        self._target = (name, PEER_PATH + word, PEER)
        self._watch = Gio.bus_watch_name_on_connection(connection, name, Gio.BusNameWatcherFlags.NONE, None,
                                                       lambda *_: on_vanished(name, word))
        self._queue = deque()
        self._asked = False
        self._end = Gio.Cancellable()
        self.wanted = set()  # notifications
        self.programmes = None  # the list to which the index of GetProgram refers; None for all programmes

    def close(self):
        Gio.bus_unwatch_name(self._watch)
        self._queue.clear()
        self._end.cancel()

    def offer(self, notification):
        if len(self._queue) < MAX_QUEUED:
            self._queue.append(notification)
            self._send()

    def _send(self):
        if self._queue and not self._asked:
            for _ in range(min(WINDOW, len(self._queue))):
                self._connection.emit_signal(*self._target, "SendSignal", self._queue.popleft())
            self._ask()

    def _ask(self):
        """The application answers when it has handled all previous notifications."""
        self._asked = True
        self._connection.call(*self._target, "Send", message({}), None, Gio.DBusCallFlags.NO_AUTO_START,
                              GLib.MAXINT32, self._end, self._answered)

    def _answered(self, connection, result):
        try:
            connection.call_finish(result)
        except GLib.Error as error:  # an error of the application is an answer, too
            if error.matches(Gio.dbus_error_quark(), Gio.DBusError.LIMITS_EXCEEDED):
                GLib.timeout_add_seconds(1, self._ask)  # too many unanswered calls
                return
        self._asked = False
        self._send()


class Service:
    """The bus: announcements, requests, pushes, and the loss of applications."""

    def __init__(self, connection, clock):
        self._connection = connection
        self._playback = Playback()
        self._functions = {**self._playback.functions(), **Guide(clock).functions(),
                           "requestPESCB": partial(self._subscribe, "PESCB"),
                           "requestCaptionCB": partial(self._subscribe, "CaptionCB")}
        self._channels = {}  # by bus name and type: the channels of a process have one name
        interfaces = Gio.DBusNodeInfo.new_for_xml(INTERFACES)
        for word in TYPES:
            connection.register_object(PEER_PATH + word, interfaces.lookup_interface(PEER), self._called)
        connection.register_object(HELPER_PATH, interfaces.lookup_interface(HELPER), self._announced)

    def _announced(self, _connection, sender, _path, _interface, _method, body, invocation):
        entries = dict(body.unpack()[0])
        name, word = entries.get("dbusname", ""), entries.get("type")
        known = word in TYPES and name == sender  # an application may announce only its own channels
        if known:
            self._leave(name, word)
        if known and entries.get("add") == "y":
            self._channels[name, word] = Channel(self._connection, name, word, self._leave)
            print(f"{word} joins", flush=True)
        partner = self._connection.get_unique_name() if known else ""
        invocation.return_value(GLib.Variant("(a(ss))", ([("dbusname", partner)],)))

    def _leave(self, name, word):
        """Ignores unknown channels: they were announced to an earlier service."""
        if (name, word) in self._channels:
            self._channels.pop((name, word)).close()
            print(f"{word} leaves", flush=True)

    @staticmethod
    def _subscribe(notification, request):
        change = request.channel.wanted.add if request.number("on") else request.channel.wanted.discard
        return change(notification) or {}

    def _called(self, _connection, sender, path, _interface, _method, body, invocation):
        channel = self._channels.get((sender, path.rpartition("/")[2]))
        try:
            request = Request(channel, body)
            function = self._functions.get(request.text("functionname"))
            if channel is None or function is None:
                raise ValueError("unknown function" if channel else "announce this channel first")
            invocation.return_value(message({"result_internal": 1, **function(request)}))
        except (KeyError, TypeError, ValueError) as error:  # or a malformed argument
            invocation.return_dbus_error("org.freedesktop.DBus.Error.InvalidArgs", f"cannot answer: {error}")

    def push(self):
        subscriptions = [(channel, name) for channel in self._channels.values() for name in channel.wanted]
        if subscriptions:
            notifications = {"PESCB": pes(self._playback.stc), "CaptionCB": caption()}
            self._playback.stc = (self._playback.stc + 9000) % 2**33
        for channel, name in subscriptions:
            channel.offer(notifications[name])
        return GLib.SOURCE_CONTINUE


def pes(pts):
    """A packet of the first audio track: 00 00 01, stream id, length, flags, PTS, payload."""
    stamp = 0x2100010001 | (pts & 7 << 30) << 3 | (pts & 0x7FFF << 15) << 2 | (pts & 0x7FFF) << 1
    rest = b"\x80\x80\x05" + stamp.to_bytes(5, "big") + b"sound"
    packet = b"\0\0\1\xC0" + struct.pack(">H", len(rest)) + rest
    return message({"functionname": "PESCB", "pesDataSize": len(packet), "pesType": 2, "pesPID": 0x101,
                    "pesPTS": pts, "pesData": packet})


def caption():
    """One data unit of teletext subtitles: id, length, 44 bytes."""
    unit = b"\x03\x2C" + b"subtitle".ljust(44)
    return message({"functionname": "CaptionCB", "captionDataSize": len(unit), "captionType": 4,
                    "captionData": unit})


def main():
    parser = argparse.ArgumentParser(description="An IPTV service on the system bus that plays nothing.")
    parser.add_argument("--time", type=int, metavar="S", help="start the guide's clock S seconds after 1970")
    options = parser.parse_args()
    try:
        connection = Gio.bus_get_sync(Gio.BusType.SYSTEM)
    except GLib.Error as error:
        sys.exit(f"service.py: cannot connect to the bus: {error.message}; set DBUS_SYSTEM_BUS_ADDRESS")
    loop = GLib.MainLoop()
    signal.signal(signal.SIGINT, signal.SIG_DFL)  # Ctrl-C ends it
    service = Service(connection, options.time)
    # The name is requested last: applications call as soon as it has an owner.
    Gio.bus_own_name_on_connection(connection, HELPER, Gio.BusNameOwnerFlags.NONE,
                                   lambda *_: print("ready", flush=True), lambda *_: loop.quit())
    GLib.timeout_add(100, service.push)
    loop.run()
    sys.exit(f"service.py: cannot own {HELPER}: another service has it, or the bus refuses; stop the other"
             " service, or run as the user that the bus's policy names")


if __name__ == "__main__":
    main()

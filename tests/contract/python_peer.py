#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""An application and a stranger without the library, on the bus of python_service.sh. Prints received messages.

The application answers every Send with an error: the first with one that means that the bus has too many open calls.
"""
import os
import re
import sys

from gi.repository import Gio, GLib

HELPER = "org.corvel.zviptvapi.dbushelper"
PEER = "org.corvel.zviptvapi.DbusCommunication"
PATH = "/org/corvel/zviptvapi/DbusCommunication/IPTVDATASUBSCRIBER"
SEND = Gio.DBusNodeInfo.new_for_xml(f"""<node><interface name='{PEER}'><method name='Send'>
<arg type='a{{sv}}' direction='in'/><arg type='a{{sv}}' direction='out'/></method></interface></node>""")


def connect():
    flags = Gio.DBusConnectionFlags
    return Gio.DBusConnection.new_for_address_sync(os.environ["DBUS_SYSTEM_BUS_ADDRESS"], flags.AUTHENTICATION_CLIENT
                                                   | flags.MESSAGE_BUS_CONNECTION, None, None)


def call(connection, path, interface, method, body):
    return connection.call_sync(HELPER, path, interface, method, body, None, Gio.DBusCallFlags.NONE, 20000, None)


def announce(who, connection, name, word, add):
    pairs = [("dbusname", name), ("type", word), ("add", add)]
    answer = call(connection, "/org/corvel/zviptvapi/dbushelper", HELPER, "SendSignal",
                  GLib.Variant("(a(ss))", (pairs,)))
    print(f"{who} announces {word} {add}:", re.sub(r":1\.\d+", ":1.#", str(answer.unpack())))


def request(connection, method, **values):
    entries = {key: GLib.Variant("ay", value) for key, value in values.items()}
    try:
        reply = call(connection, PATH, PEER, method, GLib.Variant("(a{sv})", (entries,))).unpack()[0]
        said = {key: bytes(value).decode() for key, value in reply.items()}
    except GLib.Error as error:
        said = Gio.dbus_error_get_remote_error(error)
    print(f"{method} {values}: {said}")


class Events:
    """Prints received messages: s for a notification, c for a call of Send."""

    def __init__(self, connection):
        self.text = ""
        connection.signal_subscribe(None, PEER, "SendSignal", PATH, None, Gio.DBusSignalFlags.NONE, self._notified)
        connection.register_object(PATH, SEND.interfaces[0], self._called)

    def _notified(self, *_):
        self.text += "s"

    def _called(self, *arguments):
        error = "org.example.Error" if "c" in self.text else "org.freedesktop.DBus.Error.LimitsExceeded"
        self.text += "c"
        arguments[-1].return_dbus_error(error, "an error of the test")

    def wait_for(self, pattern):
        GLib.timeout_add_seconds(60, sys.exit, f"60 s without {pattern}: {self.text}")
        while not re.match(pattern, self.text):
            GLib.MainContext.default().iteration(True)
        print(f"{pattern}: seen")


application, stranger = connect(), connect()
own = application.get_unique_name()
events = Events(application)
announce("nobody known", application, own, "IPTVDATASUBSCRIBER", "n")
announce("unknown type", application, own, "IPTVDATASUBSCRIBER2", "y")
announce("well-known name", application, "org.example", "IPTVDATASUBSCRIBER", "y")
announce("application", application, own, "IPTVDATASUBSCRIBER", "y")
request(application, "SendSignal", functionname=b"requestPESCB", on=b"1")
request(application, "Send", functionname=b"requestPESCB", on=b"1")
announce("stranger", stranger, own, "IPTVDATASUBSCRIBER", "n")
announce("stranger", stranger, own, "IPTVDATASUBSCRIBER", "y")
announce("stranger for nobody", stranger, ":1.4711", "IPTVDATASUBSCRIBER", "y")
events.wait_for("s+ccs+cs+c")
announce("application", application, own, "IPTVDATASUBSCRIBER", "y")
request(application, "Send", functionname=b"requestPESCB")
announce("application", application, own, "IPTVDATASUBSCRIBER", "n")
request(application, "Send", functionname=b"requestPESCB", on=b"1")

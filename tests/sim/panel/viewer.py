# SPDX-License-Identifier: MIT
"""An application that stays on the bus and sends the requests that a test needs."""
import threading

from gi.repository import Gio, GLib

from support import PATIENCE, Application

CHANNEL = """<node><interface name="org.corvel.zviptvapi.DbusCommunication"><method name="Send">
<arg type="a{sv}" direction="in"/><arg type="a{sv}" direction="out"/></method></interface></node>"""


class Viewer(Application):
    """Uses all endpoints but the guide. `name` is its name by SetAppID."""

    def __init__(self, bus, name=None):
        super().__init__(bus)
        self.context = GLib.MainContext()
        self.loop = GLib.MainLoop(self.context)
        ready = threading.Event()
        threading.Thread(target=self.answer_checks, args=[ready], daemon=True).start()
        assert ready.wait(PATIENCE)
        self.announce("BROADCASTDATA")
        self.announce("IPTVDATASUBSCRIBER")
        if name:
            self.ask("PLAYERCONTROL", "SetAppID", AppID=name)

    def answer_checks(self, ready):
        """The service checks whether the application reads its messages; it does."""
        self.context.push_thread_default()
        self.connection.register_object(
            "/org/corvel/zviptvapi/DbusCommunication/IPTVDATASUBSCRIBER", Gio.DBusNodeInfo.new_for_xml(CHANNEL).interfaces[0],
            lambda *call: call[-1].return_value(GLib.Variant("(a{sv})", ({},))), None, None)
        ready.set()
        self.loop.run()

    def close(self):
        self.loop.quit()
        self.connection.close_sync()

    def announce(self, endpoint):
        entries = [("dbusname", self.connection.get_unique_name()), ("type", endpoint), ("add", "y")]
        self.connection.call_sync("org.corvel.zviptvapi.dbushelper", "/org/corvel/zviptvapi/dbushelper",
                                  "org.corvel.zviptvapi.dbushelper", "SendSignal", GLib.Variant("(a(ss))", (entries,)), None, 0,
                                  -1, None)

    def ask(self, endpoint, function, **entries):
        """Sends a request, and waits for its answer, which may be an error."""
        texts = {"functionname": function, "handleID": "256", **entries}
        body = GLib.Variant("(a{sv})", ({key: GLib.Variant("ay", text.encode()) for key, text in texts.items()},))
        try:
            self.connection.call_sync(self.service, f"/org/corvel/zviptvapi/DbusCommunication/{endpoint}",
                                      "org.corvel.zviptvapi.DbusCommunication", "Send", body, None, 0, -1, None)
        except GLib.Error as failure:
            if not failure.matches(Gio.io_error_quark(), Gio.IOErrorEnum.DBUS_ERROR):
                raise

    def select_subtitle(self, index):
        self.ask("PLAYERCONTROL", "SetCurrentHybridSBT", index=str(index))

    def subscribe(self, on="1"):
        self.ask("IPTVDATASUBSCRIBER", "requestPESCB", on=on)

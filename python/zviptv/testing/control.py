# SPDX-License-Identifier: MIT
"""The control interface of the simulator, on its bus."""
import functools
import threading
from typing import Any, Callable

from .errors import TelevisionError

__tracebackhide__ = True  # pytest shows the line of the test

BUS_NAME = "org.corvel.zviptvapi.Simulator"
PATH = "/org/corvel/zviptvapi/Simulator"
INTERFACE = "org.corvel.zviptvapi.Simulator1"
PROPERTIES = "org.freedesktop.DBus.Properties"
CALL_TIMEOUT = 20.0  # seconds; the simulator itself answers within 15

Listener = Callable[[str, tuple[Any, ...]], None]


@functools.lru_cache(maxsize=None)
def _gi() -> Any:
    """The modules Gio and GLib. Loaded late, since pytest loads the plugin in projects that do not use it."""
    try:
        from gi.repository import Gio, GLib  # type: ignore[import]
    except ImportError as error:
        raise TelevisionError("cannot load the Python module gi: install the package python3-gi, and use the Python of "
                              "the system or a virtual environment made with --system-site-packages") from error
    return Gio, GLib


def variant(kind: str, value: Any) -> Any:
    """A value of this D-Bus type, for an a{sv}."""
    return _gi()[1].Variant(kind, value)


class Control:
    """Calls the methods of the interface, and passes on its signals.

    The listener gets name and arguments of each signal, on a separate thread.
    """

    def __init__(self, address: str, listener: Listener) -> None:
        Gio, GLib = _gi()
        self._context = GLib.MainContext()
        self._context.push_thread_default()
        try:
            flags = (Gio.DBusConnectionFlags.AUTHENTICATION_CLIENT
                     | Gio.DBusConnectionFlags.MESSAGE_BUS_CONNECTION)
            self._connection = Gio.DBusConnection.new_for_address_sync(address, flags, None, None)
            self._connection.signal_subscribe(
                BUS_NAME, None, None, PATH, None, Gio.DBusSignalFlags.NONE,
                lambda *signal: listener(signal[4], signal[5].unpack()))
        finally:
            self._context.pop_thread_default()
        self._ends = False
        self._thread = threading.Thread(target=self._run, name="zviptv.testing", daemon=True)
        self._thread.start()

    def _run(self) -> None:
        while not self._ends:
            self._context.iteration(True)

    def _invoke(self, work: Callable[[], None]) -> None:
        """Makes the thread call `work` after it has handled all signals that have arrived."""
        GLib = _gi()[1]
        source = GLib.Idle(GLib.PRIORITY_DEFAULT)
        source.set_callback(lambda *_: work())
        source.attach(self._context)

    def call(self, method: str, signature: str, *values: Any, interface: str = INTERFACE,
             timeout: float = CALL_TIMEOUT) -> tuple[Any, ...]:
        """Calls a method and returns its results. Signals that came before the answer have been handled.

        Raises TelevisionError with the simulator's text if it refuses the call, ConnectionError if it does not answer.
        """
        Gio, GLib = _gi()
        try:
            answer = self._connection.call_sync(
                BUS_NAME, PATH, interface, method, GLib.Variant(signature, values), None,
                Gio.DBusCallFlags.NO_AUTO_START, int(timeout * 1000), None)
        except GLib.Error as failure:
            name = Gio.DBusError.get_remote_error(failure) or ""
            text = failure.message.removeprefix(f"GDBus.Error:{name}: ")
            raise (TelevisionError(text) if name.startswith(INTERFACE) else ConnectionError(text)) from None
        handled = threading.Event()
        self._invoke(handled.set)
        handled.wait()
        return tuple(answer.unpack())

    def close(self) -> None:
        """Ends the thread and closes the connection."""

        def end() -> None:
            self._ends = True

        self._invoke(end)
        self._thread.join()
        try:
            self._connection.close_sync(None)
        except _gi()[1].Error:
            pass  # the bus has closed it

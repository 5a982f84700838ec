# SPDX-License-Identifier: MIT
"""A simulator with a panel on a private bus, applications beside it, and a browser that looks at the page."""
import json
import os
import re
import shutil
import socket
import subprocess
import sys
import tempfile
import time
import unittest
from pathlib import Path
from types import SimpleNamespace

from browser import ALONE, TimeoutException, start_browser
from gi.repository import Gio, GLib
from processes import children

PATIENCE = 30
# The headers of a request for a WebSocket.
UPGRADE = ("Connection: Upgrade\r\nUpgrade: websocket\r\nSec-WebSocket-Version: 13\r\n"
           "Sec-WebSocket-Key: dGhlIHNhbXBsZSBub25jZQ==\r\n")
SIM, CTL, SAMPLE, GUIDE = (Path(argument) for argument in sys.argv[1:5])
# Properties that a reset restores and that the page shows.
RESET = ("Running", "Responding", "Input", "Programme", "Paused", "Speed", "Audio", "Subtitle", "AudioMuted", "VideoMuted",
         "ProgrammeLocked", "ServiceLocked", "Faults")
# Limits of time are this much higher when other tests run at the same time.
BESIDE_OTHERS = 1 if ALONE else 10


def wait_for(condition, what="the condition", patience=PATIENCE):
    """Waits until the condition is true. Returns its value. The interval between two checks grows with time, because
    frequent checks would take most of the processor time of these tests."""
    begin = time.monotonic()
    while True:
        value = condition()
        if value:
            return value
        waited = time.monotonic() - begin
        if waited > patience:
            raise AssertionError(f"{what} did not come within {patience} s")
        time.sleep(min(max(waited / 4, 0.02), 0.1))


class Simulator:
    """zviptv-sim --panel, with further options."""

    def __init__(self, *options, path=None, stream=SAMPLE, inputs=None, has_ffmpeg=True):
        """`inputs` are the options for the input. Without them, `stream` is played."""
        self.folder = tempfile.TemporaryDirectory(prefix="zviptv-panel-")
        self.errors = Path(self.folder.name, "stderr")
        self.output = Path(self.folder.name, "stdout")
        if not has_ffmpeg:
            path = self.folder.name  # with every other program
            Path(path, "dbus-daemon").symlink_to(shutil.which("dbus-daemon"))
        environment = {**os.environ, **({"PATH": path} if path else {})}
        with self.errors.open("w") as errors, self.output.open("w") as output:
            self.process = subprocess.Popen(
                [SIM, *(inputs or ("--ts", stream, "--loop", "--guide", GUIDE, "--time", "1774735200")), "--bus", "private",
                 "--quiet", "--panel", *options], stdout=output, stderr=errors, env=environment)
        self.address = self._find(self.errors, r"the panel is at (http://127\.0\.0\.1:\d+/[0-9a-f]{32}/)\n")
        self.bus = self._find(self.output, r"DBUS_SYSTEM_BUS_ADDRESS='([^']*)'")
        self.port = int(re.search(r":(\d+)/", self.address)[1])
        self.root = self.address.split(str(self.port), 1)[1]

    def _find(self, file, pattern):
        def seek():
            assert self.process.poll() is None, self.errors.read_text()
            return re.search(pattern, file.read_text())
        return wait_for(seek, pattern)[1]

    def ctl(self, *words):
        environment = {**os.environ, "DBUS_SYSTEM_BUS_ADDRESS": self.bus}
        return subprocess.run([CTL, *words], env=environment, capture_output=True, text=True, timeout=PATIENCE)

    def start_ctl(self, *words):
        environment = {**os.environ, "DBUS_SYSTEM_BUS_ADDRESS": self.bus}
        return subprocess.Popen([CTL, *words], env=environment, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)

    def decoders(self):
        """The process numbers of the ffmpegs that it runs."""
        return [pid for pid, command in children(self.process.pid) if command[0] == "ffmpeg"]

    def close(self):
        self.process.terminate()
        self.process.wait(timeout=PATIENCE)
        self.folder.cleanup()


def exchange(port, request):
    """The server's answer to these bytes: status and body."""
    with socket.create_connection(("127.0.0.1", port), timeout=PATIENCE) as link:
        link.sendall(request)
        answer = b""
        while not re.search(rb"\r\n\r\n", answer):
            piece = link.recv(65536)
            if not piece:
                break
            answer += piece
        head, _, body = answer.partition(b"\r\n\r\n")
        length = re.search(rb"(?i)content-length: (\d+)", head)
        while length and len(body) < int(length[1]):
            piece = link.recv(65536)
            if not piece:
                break  # an answer to HEAD
            body += piece
    return SimpleNamespace(status=int(head.split()[1]), head=head.decode(), body=body.decode(errors="replace"))


class Application:
    """Asks the player control of the simulator directly on the bus."""

    def __init__(self, bus):
        flags = Gio.DBusConnectionFlags.AUTHENTICATION_CLIENT | Gio.DBusConnectionFlags.MESSAGE_BUS_CONNECTION
        self.connection = Gio.DBusConnection.new_for_address_sync(bus, flags, None, None)
        data = [("dbusname", self.connection.get_unique_name()), ("type", "PLAYERCONTROL"), ("add", "y")]
        answer = self.connection.call_sync(
            "org.corvel.zviptvapi.dbushelper", "/org/corvel/zviptvapi/dbushelper", "org.corvel.zviptvapi.dbushelper",
            "SendSignal", GLib.Variant("(a(ss))", (data,)), None, 0, -1, None)
        self.service = dict(answer.unpack()[0])["dbusname"]

    def ask_often(self, count):
        """Sends the given number of requests, which mute and unmute, and waits for all answers."""
        context = GLib.MainContext.default()
        left = count
        asked = 0
        waiting = 0

        def answered(connection, result):
            nonlocal left, waiting
            connection.call_finish(result)
            left -= 1
            waiting -= 1
        while left > 0:
            while asked < count and waiting < 100:
                entries = {"functionname": b"MuteAudio", "handleID": b"256", "onoff": str(asked % 2).encode()}
                body = GLib.Variant("(a{sv})", ({key: GLib.Variant("ay", text) for key, text in entries.items()},))
                self.connection.call(self.service, "/org/corvel/zviptvapi/DbusCommunication/PLAYERCONTROL",
                                     "org.corvel.zviptvapi.DbusCommunication", "Send", body, None, 0, -1, None, answered)
                asked += 1
                waiting += 1
            context.iteration(True)


class PageTest(unittest.TestCase):
    """A browser that looks at the panel of a simulator. Nothing may be written to its console. The tests of a class share
    the simulator and the open page, which are reset before each test."""

    options = ()
    path = None
    stream = SAMPLE
    inputs = None
    hasPicture = True  # without ffmpeg, there is a test card: it takes little processor time
    isPaused = False  # the clock stands still, which takes less
    simulator = None
    driver = None  # all tests use one browser

    def setUp(self):
        if PageTest.driver is None:
            PageTest.driver = start_browser()
        cls = type(self)
        if vars(cls).get("simulator") is None:  # a base class may have had one
            cls.simulator = Simulator(*self.options, path=self.path, stream=self.stream, inputs=self.inputs,
                                      has_ffmpeg=self.hasPicture)
            cls.addClassCleanup(cls.simulator.close)
            self.driver.get("about:blank")  # otherwise the open page reports that its simulator has ended
            self.driver.get_log("browser")
            self.open_page()
        else:
            self.reset()
        if self.isPaused:
            self.simulator.ctl("sim", "pause")

    def open_page(self):
        self.driver.get(self.simulator.address)
        self.wait_text_is("service", "running")

    def reset(self):
        """Resets the television, waits until the page shows this, and clears the lists and messages of the page."""
        self.assertEqual(self.simulator.ctl("sim", "reset").returncode, 0)
        if self.driver.current_url != self.simulator.address:
            self.open_page()
        status = self.status()
        names = [name for name in RESET if name in status]
        wait_for(lambda: self.driver.execute_async_script("""
            const [names, done] = arguments;
            import('./store.js').then(({ state }) => done(names.map(name => state[name])));""", names)
            == [status[name] for name in names], "the page's view of the reset television")
        self.driver.execute_script("""
            document.body.tabIndex = -1;
            document.body.focus();  // the Tab key then moves to the first control
            document.body.removeAttribute('tabindex');
            document.getElementById('messages-area').replaceChildren();
            document.getElementById('empty-log').click();""")

    def spend_simulator(self):
        """For a test that ends its simulator: the next test gets a new one."""
        self.simulator, type(self).simulator = self.simulator, None

    def tearDown(self):
        messages = [entry["message"] for entry in self.driver.get_log("browser")
                    if not re.search(r"api/verb .*status of 4\d\d|willReadFrequently", entry["message"])]
        self.assertEqual(messages, [])

    def wait_until(self, condition, *arguments, what=None, patience=PATIENCE):
        """Waits until a JavaScript condition is true in the page. The page checks it after each change of the document,
        which takes less processor time than checks from here."""
        self.driver.set_script_timeout(patience)
        try:
            self.driver.execute_async_script(f"""
                const values = [...arguments], done = values.pop();
                const element = name => document.getElementById(name), text = name => element(name).textContent.trim();
                const look = () => {{
                  if ({condition}) {{
                    observer.disconnect();
                    done();
                  }}
                }};
                const observer = new MutationObserver(look);
                observer.observe(document, {{ subtree: true, childList: true, attributes: true, characterData: true }});
                look();""", *arguments)
        except TimeoutException:
            raise AssertionError(f"{what or (condition, *arguments)} did not come within {patience} s") from None

    def wait_text(self, name, words, patience=PATIENCE):
        """Waits until the text of the element contains the words."""
        self.wait_until("text(values[0]).includes(values[1])", name, words, patience=patience)

    def wait_text_is(self, name, words, patience=PATIENCE):
        self.wait_until("text(values[0]) === values[1]", name, words, patience=patience)

    def wait_frames(self, number, what="the pictures", patience=PATIENCE):
        """Waits until the page has drawn this number of pictures."""
        self.wait_until("Number(element('picture').dataset.frames ?? 0) >= values[0]", number, what=what, patience=patience)

    def wait_state(self, state):
        """Waits until this is the state of the picture."""
        wait_for(lambda: self.driver.execute_async_script("""
            const done = arguments[0];
            import('./store.js').then(({ state }) => done(state.PanelPicture.state));""") == state, state)

    def element(self, name):
        return self.driver.find_element("id", name)

    def text(self, name):
        return self.driver.execute_script("return document.getElementById(arguments[0]).textContent", name).strip()

    def attribute(self, name, key):
        return self.driver.execute_script("return document.getElementById(arguments[0]).getAttribute(arguments[1])", name, key)

    def pixel(self, x, y):
        """Red, green and blue at a place of the picture, 0 to 1 from the left and from the top."""
        return self.driver.execute_script("""
            const c = document.getElementById('picture');
            return [...c.getContext('2d').getImageData(c.width * arguments[0], c.height * arguments[1], 1, 1).data].slice(0, 3)""",
                                          x, y)

    def pixels(self, left, top, right, bottom, darkest=0, brightest=255):
        """How many pixels of this part of the picture are grey, between these limits. 0 to 1 from the left and the top."""
        return self.driver.execute_script("""
            const [left, top, right, bottom, darkest, brightest] = arguments, c = document.getElementById('picture');
            const p = c.getContext('2d').getImageData(Math.floor(c.width * left), Math.floor(c.height * top),
                Math.ceil(c.width * (right - left)), Math.ceil(c.height * (bottom - top))).data;
            let count = 0;
            for (let i = 0; i < p.length; i += 4) {
              count += [0, 1, 2].every(j => p[i + j] >= darkest && p[i + j] <= brightest) ? 1 : 0;
            }
            return count;""", left, top, right, bottom, darkest, brightest)

    def frames(self):
        return int(self.attribute("picture", "data-frames") or 0)

    def status(self):
        result = self.simulator.ctl("--json", "sim", "status")
        self.assertEqual(result.returncode, 0, result.stderr)
        return json.loads(result.stdout)

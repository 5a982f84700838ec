# SPDX-License-Identifier: MIT
"""Tests the panel in Firefox.

Debian has no WebDriver for Firefox, so the test uses Firefox's Marionette protocol: JSON messages on a TCP connection,
each preceded by its length."""
import json
import os
import shutil
import socket
import subprocess
import sys
import tempfile
import unittest
from contextlib import contextmanager
from pathlib import Path

from support import Simulator, wait_for

FIREFOX = shutil.which("firefox-esr") or shutil.which("firefox")
START = 60  # seconds, while other tests run
# Switches off processes for further pages, and services that use the network.
PREFERENCES = {
    "marionette.port": 0,  # any free port, which Firefox writes to a file
    "dom.ipc.processCount": 1, "dom.ipc.processPrelaunch.enabled": False, "fission.autostart": False,
    "media.rdd-process.enabled": False, "network.process.enabled": False, "gfx.canvas.remote": False,
    "browser.safebrowsing.malware.enabled": False, "browser.safebrowsing.phishing.enabled": False,
    "app.normandy.enabled": False, "app.update.auto": False, "extensions.update.enabled": False,
    "datareporting.policy.dataSubmissionEnabled": False, "toolkit.telemetry.enabled": False,
    "browser.newtabpage.enabled": False, "browser.startup.homepage_override.mstone": "ignore",
    "network.captive-portal-service.enabled": False, "network.connectivity-service.enabled": False,
}
TAB = "\ue004"  # as WebDriver writes this key


class Marionette:
    """Calls Firefox's commands, which are those of WebDriver."""

    def __init__(self, port):
        self.link = socket.create_connection(("127.0.0.1", port), timeout=START)
        self.number = 0
        self.received = b""
        self._receive()  # the greeting
        self.call("NewSession", capabilities={})

    def _receive(self):
        while b":" not in self.received:
            self.received += self.link.recv(65536)
        size, _, self.received = self.received.partition(b":")
        while len(self.received) < int(size):
            self.received += self.link.recv(65536)
        message, self.received = self.received[:int(size)], self.received[int(size):]
        return json.loads(message)

    def call(self, command, **parameters):
        self.number += 1
        full_name = command if ":" in command else f"WebDriver:{command}"
        message = json.dumps([0, self.number, full_name, parameters]).encode()
        self.link.sendall(b"%d:%s" % (len(message), message))
        _, number, error, result = self._receive()
        assert number == self.number and error is None, error
        return result

    def run(self, script, *arguments):
        return self.call("ExecuteScript", script=script, args=list(arguments))["value"]

    def run_in_browser(self, script):
        """Runs a script with the privileges of the browser instead of those of a page."""
        self.call("Marionette:SetContext", value="chrome")
        try:
            self.run(script)
        finally:
            self.call("Marionette:SetContext", value="content")

    def press(self, key):
        self.call("PerformActions", actions=[{"type": "key", "id": "keyboard", "actions": [
            {"type": "keyDown", "value": key}, {"type": "keyUp", "value": key}]}])

    def text(self, name):
        return self.run("return document.getElementById(arguments[0]).textContent", name)

    def click(self, name):
        element = self.call("FindElement", using="css selector", value=f"#{name}")["value"]
        self.call("ElementClick", id=next(iter(element.values())))


@contextmanager
def firefox():
    with tempfile.TemporaryDirectory(prefix="zviptv-firefox-") as folder:
        Path(folder, "user.js").write_text("".join(
            f"user_pref({json.dumps(name)}, {json.dumps(value)});\n" for name, value in PREFERENCES.items()))
        process = subprocess.Popen([FIREFOX, "--headless", "--marionette", "--remote-allow-system-access", "--no-remote",
                                    "--profile", folder, "about:blank"],
                                   stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, env={**os.environ, "HOME": folder})
        try:
            port = Path(folder, "MarionetteActivePort")
            yield Marionette(int(wait_for(lambda: port.exists() and port.read_text(), "Firefox", START)))
        finally:
            process.terminate()
            process.wait()


@unittest.skipUnless(FIREFOX, "install firefox-esr")
class Firefox(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.page = cls.enterClassContext(firefox())
        cls.simulator = Simulator()
        cls.addClassCleanup(cls.simulator.close)

    def setUp(self):
        self.assertEqual(self.simulator.ctl("sim", "reset").returncode, 0)
        self.page.call("Navigate", url=self.simulator.address)
        wait_for(lambda: self.page.text("service") == "running", "the page's connection")

    def status(self):
        return json.loads(self.simulator.ctl("--json", "sim", "status").stdout)

    def test_shows_picture_caption_and_conversation(self):
        wait_for(lambda: self.page.run("return Number(document.getElementById('picture').dataset.frames ?? 0)") > 5)
        self.simulator.ctl("sim", "seek", "4.9")
        wait_for(lambda: self.page.run("return document.getElementById('captions').getAttribute('aria-label')") == "さん")
        self.simulator.ctl("mute", "audio", "on")
        wait_for(lambda: "MuteAudio onoff=true" in self.page.text("rows"))
        wait_for(lambda: "Sound muted by :1." in self.page.text("badges"))

    def test_controls_the_television(self):
        for name, key in (("play", "Paused"), ("mute-video", "VideoMuted"), ("lock-service", "ServiceLocked")):
            self.page.click(name)
            wait_for(lambda: self.status()[key], key)
        wait_for(lambda: "Paused" in self.page.text("badges"))
        wait_for(lambda: self.page.text("cover-text") == "Service locked")
        self.page.run("const w = document.getElementById('words'); w.value = 'seek 5.5'; w.form.requestSubmit()")
        wait_for(lambda: self.status()["Position"] == 5.5)

    def test_conversation_faults_and_recorder(self):
        self.page.click("record")
        self.page.run("document.getElementById('fault-message').value = 'GetTTX'")
        self.page.run("document.getElementById('fault-form').requestSubmit()")
        wait_for(lambda: "GetTTX=error" in self.page.text("fault-list"))
        wait_for(lambda: "fault add GetTTX=error" in self.page.text("recording"))
        self.simulator.ctl("call", "GetTTX", "0")
        self.page.run("document.getElementById('filter-failures').click()")
        wait_for(lambda: "GetTTX failed: Injected" in self.page.text("rows"))
        self.page.run("""[...document.querySelectorAll('.message:not([hidden])')].find(
            row => row.textContent.includes('GetTTX failed')).click()""")
        wait_for(lambda: "000000  6c 03 " in self.page.text("details"))

    def test_is_used_by_keyboard_in_dark_mode(self):
        self.page.run_in_browser("Services.prefs.setIntPref('layout.css.prefers-color-scheme.content-override', 0)")
        self.addCleanup(self.page.run_in_browser,
                        "Services.prefs.clearUserPref('layout.css.prefers-color-scheme.content-override')")
        wait_for(lambda: self.page.run("return getComputedStyle(document.body).backgroundColor") == "rgb(18, 22, 28)", "the dark page")
        reached = []
        while "record" not in reached:
            self.page.press(TAB)
            name, outline = self.page.run("const e = document.activeElement; return [e.id, getComputedStyle(e).outlineStyle]")
            self.assertNotEqual(outline, "none", name)
            reached.append(name)
            self.assertLess(len(reached), 200, reached)
        self.assertLessEqual({"play", "diagram", "mute-audio", "words"}, set(reached))

    def test_fits(self):
        self.addCleanup(self.page.run_in_browser, "gBrowser.selectedBrowser.fullZoom = 1")
        for width, zoom in ((1280, 1), (420, 1.25)):  # Firefox makes no window narrower than 500 pixels
            self.page.run_in_browser(f"gBrowser.selectedBrowser.fullZoom = {zoom}")
            self.page.call("SetWindowRect", width=int(width * zoom), height=900)
            wide, inner = self.page.run("return [document.documentElement.scrollWidth, innerWidth]")
            self.assertEqual(inner, width)
            self.assertLessEqual(wide, width)

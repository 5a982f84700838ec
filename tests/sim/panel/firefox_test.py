# SPDX-License-Identifier: MIT
"""The panel in Firefox.

Debian has no WebDriver for Firefox, so the test talks to Firefox itself, by its Marionette protocol: messages of JSON on a
TCP connection, each with its length in front."""
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
START = 60  # seconds, beside other tests
# It need not prepare for further pages, nor for the net.
PREFERENCES = {
    "marionette.port": 0,  # any free one, which it writes to a file
    "dom.ipc.processCount": 1, "dom.ipc.processPrelaunch.enabled": False, "fission.autostart": False,
    "media.rdd-process.enabled": False, "network.process.enabled": False, "gfx.canvas.remote": False,
    "browser.safebrowsing.malware.enabled": False, "browser.safebrowsing.phishing.enabled": False,
    "app.normandy.enabled": False, "app.update.auto": False, "extensions.update.enabled": False,
    "datareporting.policy.dataSubmissionEnabled": False, "toolkit.telemetry.enabled": False,
    "browser.newtabpage.enabled": False, "browser.startup.homepage_override.mstone": "ignore",
    "network.captive-portal-service.enabled": False, "network.connectivity-service.enabled": False,
}


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
        message = json.dumps([0, self.number, f"WebDriver:{command}", parameters]).encode()
        self.link.sendall(b"%d:%s" % (len(message), message))
        _, number, error, result = self._receive()
        assert number == self.number and error is None, error
        return result

    def run(self, script, *arguments):
        return self.call("ExecuteScript", script=script, args=list(arguments))["value"]

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
        process = subprocess.Popen([FIREFOX, "--headless", "--marionette", "--no-remote", "--profile", folder, "about:blank"],
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
        cls.page.call("Navigate", url=cls.simulator.address)

    def setUp(self):
        self.assertEqual(self.simulator.ctl("sim", "reset").returncode, 0)
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

    def test_fits(self):
        for width in (1280, 500):  # Firefox makes no narrower window
            self.page.call("SetWindowRect", width=width, height=900)
            wide, inner = self.page.run("return [document.documentElement.scrollWidth, innerWidth]")
            self.assertLessEqual(wide, inner)

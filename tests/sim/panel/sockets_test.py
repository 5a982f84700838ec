# SPDX-License-Identifier: MIT
"""Pages and decoders that misbehave, without a browser."""
import os
import re
import resource
import socket
import tempfile
import unittest
from pathlib import Path

from support import PATIENCE, UPGRADE, Simulator, exchange, wait_for

SEEN = b"\x81\x84\0\0\0\0seen"  # the answer of a page, as a masked WebSocket frame


class Sockets(unittest.TestCase):
    def start(self, path=None):
        self.simulator = Simulator(path=path)
        self.addCleanup(self.simulator.close)

    def watch(self, name):
        """A page that answers nothing."""
        link = socket.create_connection(("127.0.0.1", self.simulator.port), timeout=PATIENCE)
        self.addCleanup(link.close)
        link.sendall(f"GET {self.simulator.root}{name} HTTP/1.1\r\nHost: 127.0.0.1:{self.simulator.port}\r\n"
                     f"{UPGRADE}\r\n".encode())
        head = b""
        while not head.endswith(b"\r\n\r\n") and (byte := link.recv(1)):  # no byte of what follows
            head += byte
        self.assertIn(b" 101 ", head)
        return link

    def receive(self, link, pattern):
        """Reads until the pattern matches."""
        text = b""
        while not (found := re.search(pattern, text)):
            piece = link.recv(65536)
            self.assertNotEqual(piece, b"", "the connection was closed")
            text += piece
        return found

    def state(self, what):
        """What a new page shows about the picture or the sound."""
        with self.watch("api/events") as link:
            return self.receive(link, rb'"%b":\{[^}]*"state":"(\w+)"' % what)[1]

    def test_nothing_is_decoded_for_a_page_that_sleeps(self):
        """The machine of the page sleeps, or its browser hangs: the connection is open, but the page answers nothing."""
        self.start()
        for name, what in (("api/picture", b"PanelPicture"), ("api/sound", b"PanelSound")):
            link = self.watch(name)
            wait_for(self.simulator.decoders, "an ffmpeg")
            wait_for(lambda: self.state(what) == b"off", "no decoding", 60)  # not the restart after each loop of the stream
            self.assertEqual(self.simulator.decoders(), [])
            link.sendall(SEEN)
            wait_for(self.simulator.decoders, "another ffmpeg after the page has answered")
            link.close()
            wait_for(lambda: not self.simulator.decoders(), "the end of ffmpeg")

    def memory(self):
        """The resident memory of the simulator, in MB."""
        status = Path(f"/proc/{self.simulator.process.pid}/status").read_text()
        return int(status.split("VmRSS:")[1].split()[0]) // 1024

    def test_strangers_do_not_use_up_the_descriptors(self):
        """Strangers connect and do not complete their requests. Connections that have sent the token stay open."""
        self.start()
        page = self.watch("api/events")
        pid = self.simulator.process.pid
        resource.prlimit(pid, resource.RLIMIT_NOFILE, (250, 250))
        strangers = []
        for number in range(300):
            link = socket.create_connection(("127.0.0.1", self.simulator.port), timeout=PATIENCE)
            self.addCleanup(link.close)
            link.sendall(b"GET / HTTP/1.1\r\n" if number % 2 else b"")
            strangers.append(link)
        self.assertEqual(strangers[0].recv(1), b"", "the oldest ones are closed")
        head = f"GET {self.simulator.root} HTTP/1.1\r\nHost: 127.0.0.1:{self.simulator.port}\r\n\r\n"
        self.assertEqual(exchange(self.simulator.port, head.encode()).status, 200)
        restart = self.simulator.ctl("sim", "restart")
        self.assertEqual(restart.returncode, 0, restart.stderr)
        page.sendall(SEEN)
        page.settimeout(PATIENCE)
        self.assertNotEqual(page.recv(65536), b"", "the page is still connected")

    def test_an_ffmpeg_that_writes_no_picture_is_ended(self):
        with tempfile.TemporaryDirectory(prefix="zviptv-path-") as folder:
            starts = Path(folder, "starts")
            program = Path(folder, "ffmpeg")
            program.write_text(f"#!/bin/sh\necho $$ >> {starts}\nexec cat /dev/zero\n")
            program.chmod(0o755)
            self.start(f"{folder}:{os.environ['PATH']}")
            self.watch("api/picture")
            pids = wait_for(lambda: starts.exists() and len(starts.read_text().split()) > 2 and starts.read_text().split(),
                            "the third start")
            wait_for(lambda: not Path(f"/proc/{pids[0]}").exists(), "the end of the first one")
            self.assertLess(self.memory(), 500)

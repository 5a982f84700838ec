# SPDX-License-Identifier: MIT
"""Tests which requests the server of the panel accepts."""
import resource
import select
import signal
import socket
import subprocess
import unittest
from pathlib import Path

from support import PATIENCE, SAMPLE, SIM, UPGRADE, Simulator, exchange, wait_for



class Access(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.simulator = Simulator()

    @classmethod
    def tearDownClass(cls):
        cls.simulator.close()

    def ask(self, path, heads="", host=None, method="GET", body=""):
        """`path` is below the root unless it begins with a slash."""
        whole = path if path.startswith("/") else self.simulator.root + path
        host = f"127.0.0.1:{self.simulator.port}" if host is None else host
        length = f"Content-Length: {len(body)}\r\n" if body else ""
        return exchange(self.simulator.port,
                        f"{method} {whole} HTTP/1.1\r\nHost: {host}\r\n{heads}{length}\r\n{body}".encode())

    def test_serves_requests_with_the_token(self):
        for path, kind in (("", "text/html"), ("main.js", "text/javascript"), ("style.css", "text/css"),
                           ("icon.svg", "image/svg+xml"), ("api/verbs.json", "application/json")):
            answer = self.ask(path)
            self.assertEqual(answer.status, 200, path)
            self.assertIn(f"Content-Type: {kind}", answer.head)
            self.assertIn("Cache-Control: no-store", answer.head)
            self.assertIn("Content-Security-Policy: default-src 'self';", answer.head)
        self.assertEqual(self.ask("", host=f"localhost:{self.simulator.port}").status, 200)
        self.assertEqual(self.ask("missing.js").status, 404)

    def test_refuses_requests_without_the_token(self):
        wrong = "/" + "0" * 32 + "/"
        for path in ("/", "/index.html", "/main.js", wrong, wrong + "api/verb", self.simulator.root[:-2] + "/",
                     "/api/events"):
            self.assertEqual(self.ask(path).status, 403, path)
        self.assertEqual(self.ask("/api/verb", method="POST", body='{"words": ["quit"]}').status, 403)
        self.assertEqual(self.ask(wrong + "api/events", UPGRADE).status, 403)

    def test_refuses_another_host(self):
        for host in ("example.org", f"example.org:{self.simulator.port}", "127.0.0.1", "127.0.0.1:1",
                     f"127.0.0.1.example.org:{self.simulator.port}", ""):
            self.assertEqual(self.ask("", host=host).status, 403, host)
            self.assertEqual(self.ask("api/events", UPGRADE, host=host).status, 403, host)

    def test_refuses_another_origin(self):
        own = f"http://127.0.0.1:{self.simulator.port}"
        for origin in ("http://example.org", "null", own.replace("http:", "https:"), own + "0", "http://127.0.0.1:1"):
            for path in ("", "api/events", "api/picture", "api/sound"):
                heads = f"Origin: {origin}\r\n" + (UPGRADE if "api" in path else "")
                self.assertEqual(self.ask(path, heads).status, 403, (origin, path))
            self.assertEqual(self.ask("api/verb", f"Origin: {origin}\r\n", method="POST",
                                      body='{"words": ["quit"]}').status, 403, origin)
        self.assertEqual(self.ask("api/events", f"Origin: {own}\r\n{UPGRADE}").status, 101)
        self.assertEqual(self.ask("api/verb", f"Origin: {own}\r\n", method="POST", body='{"words": ["play"]}').status, 200)

    def test_runs_verbs_and_reports_errors(self):
        def run(body):
            return self.ask("api/verb", method="POST", body=body)
        self.assertEqual(run('{"words": ["seek", "3"]}').status, 200)
        refused = run('{"words": ["select", "audio", "7"]}')
        self.assertEqual((refused.status, refused.body), (409, '{"error":"there is no audio track 7: use 0 to 1"}'))
        unknown = run('{"words": ["fly"]}')
        self.assertEqual(unknown.status, 400)
        self.assertIn("unknown verb 'fly': use pause, play,", unknown.body)
        for body in ("", "[]", "{", '{"words": 3}', '{"words": [3]}', "[" * 60000, '{"words": ["a\\u0000b"]}'):
            self.assertEqual(run(body).status, 400, body[:20])
        self.assertEqual(self.ask("api/verb").status, 405)

    def test_refuses_other_methods(self):
        for method in ("HEAD", "PUT", "OPTIONS", "DELETE"):
            for path in ("", "api/verbs.json", "api/message/1", "api/verb"):
                self.assertEqual(self.ask(path, method=method).status, 405, (method, path))

    def test_serves_exact_names_only(self):
        for path in ("api/verbs.jsonX", "api/verbs.json/", "api/verbs.json/x", "api/protocol.json2", "api/message/1/2",
                     "api/message", "api/", "api/eventsX", "main.js/"):
            answer = self.ask(path)
            self.assertEqual((answer.status, answer.body), (404, "the panel has no such file\n"), path)
        for path in ("api/eventsX", "api/events/", "api/picture2", "api/sound/1"):
            self.assertEqual(self.ask(path, UPGRADE).status, 404, path)
        for path in ("api/verbX", "api/verb/", "api/verb/1"):
            self.assertEqual(self.ask(path, method="POST", body='{"words": ["quit"]}').status, 404, path)

    def test_serves_32_pages(self):
        head = f" HTTP/1.1\r\nHost: 127.0.0.1:{self.simulator.port}\r\n{UPGRADE}\r\n"
        for path in ("api/events", "api/picture", "api/sound"):
            links = [socket.create_connection(("127.0.0.1", self.simulator.port), timeout=PATIENCE) for _ in range(40)]
            self.addCleanup(lambda these: [link.close() for link in these], links)
            for link in links:
                link.sendall(f"GET {self.simulator.root}{path}{head}".encode())
            answers = [link.recv(65536) for link in links]
            refused = [answer for answer in answers if answer.startswith(b"HTTP/1.1 503 ")]
            self.assertEqual(sum(answer.startswith(b"HTTP/1.1 101 ") for answer in answers), 40 - len(refused), path)
            answer = self.ask(path, UPGRADE)
            self.assertEqual((answer.status, answer.body),
                             (503, "too many pages are open: the panel serves 32; close one of them\n"), path)
            self.assertEqual(self.ask("").status, 200, "other files are served")
            for link in links:
                link.close()
            wait_for(lambda: self.ask(path, UPGRADE).status == 101, f"a free place at {path}")

    def test_refuses_requests_that_come_at_once(self):
        """Requests that are accepted before 32 connections are open, but exceed 32, are closed with the code 1013."""
        head = f" HTTP/1.1\r\nHost: 127.0.0.1:{self.simulator.port}\r\n{UPGRADE}\r\n"
        links = [socket.create_connection(("127.0.0.1", self.simulator.port), timeout=PATIENCE) for _ in range(60)]
        self.addCleanup(lambda: [link.close() for link in links])
        self.simulator.process.send_signal(signal.SIGSTOP)
        try:
            for link in links:
                link.sendall(f"GET {self.simulator.root}api/sound{head}".encode())
        finally:
            self.simulator.process.send_signal(signal.SIGCONT)
        answers = {link: b"" for link in links}

        def refused():
            for link in select.select(links, [], [], 0)[0]:
                answers[link] += link.recv(65536)
            answered = [answer for answer in answers.values() if b"\r\n\r\n" in answer]
            return len(answered) == 60 and sum(
                answer.startswith(b"HTTP/1.1 503 ") or b"\x03\xf5too many pages are open" in answer for answer in answered)
        wait_for(lambda: refused() == 60 - 32, "the refusals")

    def descriptors(self):
        return len(list(Path(f"/proc/{self.simulator.process.pid}/fd").iterdir()))

    def test_keeps_no_data_of_closed_connections(self):
        before = self.descriptors()
        for _ in range(50):
            self.assertEqual(self.ask("").status, 200)
            self.assertEqual(self.ask("/").status, 403)
        wait_for(lambda: self.descriptors() <= before + 5, "the end of the connections")

    @unittest.skipIf(b"__ubsan_handle" in SIM.read_bytes(), "UndefinedBehaviorSanitizer itself needs free descriptors")
    def test_continues_without_free_descriptors(self):
        simulator = Simulator()
        try:
            used = len(list(Path(f"/proc/{simulator.process.pid}/fd").iterdir()))
            resource.prlimit(simulator.process.pid, resource.RLIMIT_NOFILE, (used + 2, used + 2))
            head = f"GET {simulator.root}api/picture HTTP/1.1\r\nHost: 127.0.0.1:{simulator.port}\r\n{UPGRADE}\r\n"
            self.assertEqual(exchange(simulator.port, head.encode()).status, 101)
            self.assertEqual(simulator.ctl("sim", "pause").returncode, 0)
            links = [socket.create_connection(("127.0.0.1", simulator.port), timeout=PATIENCE) for _ in range(5)]
            for link in links:
                link.close()
            request = f"GET {simulator.root} HTTP/1.1\r\nHost: 127.0.0.1:{simulator.port}\r\n\r\n"
            self.assertEqual(exchange(simulator.port, request.encode()).status, 200)
        finally:
            simulator.close()

    def test_refuses_long_bodies_and_those_of_unknown_length(self):
        self.assertEqual(self.ask("api/verb", method="POST", body="x" * 70000).status, 413)
        head = (f"POST {self.simulator.root}api/verb HTTP/1.1\r\nHost: 127.0.0.1:{self.simulator.port}\r\n"
                "Transfer-Encoding: chunked\r\n\r\n")
        self.assertEqual(exchange(self.simulator.port, f"{head}2\r\n{{}}\r\n0\r\n\r\n".encode()).status, 413)
        self.assertEqual(self.ask("").status, 200, "the server goes on")

    def test_listens_on_the_loopback_address_only(self):
        with open(f"/proc/{self.simulator.process.pid}/net/tcp") as table:
            local = {line.split()[1] for line in table.readlines()[1:] if line.split()[3] == "0A"}
        port = f"{self.simulator.port:04X}"
        self.assertEqual({entry for entry in local if entry.endswith(":" + port)}, {"0100007F:" + port})

    def test_a_used_or_malformed_port_is_refused(self):
        begun = subprocess.run([SIM, "--ts", SAMPLE, "--panel", str(self.simulator.port), "--", "true"],
                               capture_output=True, text=True, timeout=PATIENCE)
        self.assertEqual(begun.returncode, 1)
        self.assertRegex(begun.stderr, rf"zviptv-sim: the panel cannot listen on port {self.simulator.port}: .*; use another "
                                       "port, or --panel without one\n")
        for port in ("x", "65536", "-1", "80.5"):
            wrong = subprocess.run([SIM, "--ts", SAMPLE, "--panel", port, "--", "true"], capture_output=True, text=True)
            self.assertEqual(wrong.returncode, 2, port)
            self.assertIn(f"'{port}' is not a port, 0 to 65535", wrong.stderr)

    def test_the_command_gets_its_status_and_output(self):
        done = subprocess.run([SIM, "--ts", SAMPLE, "--panel", "--", "sh", "-c", "echo heard; exit 7"], capture_output=True,
                              text=True, timeout=PATIENCE)
        self.assertEqual((done.returncode, done.stdout), (7, "heard\n"))

    def test_each_start_has_another_token(self):
        other = Simulator()
        try:
            self.assertNotEqual(other.root, self.simulator.root)
            self.assertEqual(exchange(other.port, f"GET {self.simulator.root} HTTP/1.1\r\nHost: 127.0.0.1:{other.port}"
                                                  "\r\n\r\n".encode()).status, 403)
        finally:
            other.close()

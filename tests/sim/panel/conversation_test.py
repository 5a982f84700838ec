# SPDX-License-Identifier: MIT
"""Tests the messages between applications and the service on the page of the panel."""
import json
import os
import re
import signal
import time
from contextlib import contextmanager

from processes import descendants
from support import ALONE, BESIDE_OTHERS, Application, PageTest, wait_for
from viewer import Viewer


class ConversationList(PageTest):
    hasPicture = False
    isPaused = True

    def setUp(self):
        super().setUp()
        self.type_filter("")
        self.choose_application("")
        if self.element("filter-failures").is_selected():
            self.element("filter-failures").click()

    def rows(self):
        return self.driver.execute_script(
            "return [...document.querySelectorAll('.message:not([hidden]) .says')].map(e => e.textContent)")

    def test_shows_requests_replies_pushes_and_losses(self):
        self.simulator.ctl("sim", "play")
        subscriber = self.simulator.start_ctl("pes", "--count", "30")
        subscriber.wait()
        for words in (["mute", "audio", "on"], ["audio", "select", "9"]):
            self.simulator.ctl(*words)
        self.simulator.ctl("sim", "fault", "add", "GetTTX=error")
        self.simulator.ctl("call", "GetTTX", "0")
        for pattern in ("MuteAudio onoff=true", "✓", "✗ SetCurrentAudioByIndex refused", " µs", "PESCB 0x01", "announces playercontrol",
                        "has left the bus", "withdraws playercontrol", "✗ GetTTX failed: Injected: ", "zviptvctl :1."):
            self.type_filter("")
            wait_for(lambda: self.anywhere(pattern), pattern)
        self.type_filter("pescb")
        wait_for(lambda: any(re.match(r"PESCB 0x0100( ×\d+)?, 0x0101( ×\d+)?[, ]", row) for row in self.rows()))
        self.type_filter("muteaudio")
        wait_for(lambda: all("MuteAudio" in row or row.startswith("✓") for row in self.rows()) and self.rows())
        self.driver.find_element("css selector", ".message:not([hidden])").click()
        self.wait_text("details", "Raw, ")
        details = self.text("details")
        self.assertIn("onoff", details)
        self.assertRegex(details, r"000000  6c 01 ")
        self.type_filter("")
        self.element("filter-failures").click()
        wait_for(lambda: self.rows() and all("✗" in row for row in self.rows()))
        colours = self.driver.execute_script("""return [...document.querySelectorAll('.message:not([hidden]) .says')].map(
            row => getComputedStyle(row).color)""")
        self.assertEqual(set(colours), {"rgb(179, 38, 30)"})
        self.driver.find_element("css selector", ".message:not([hidden])").click()
        wait_for(lambda: "Values of the requestindex9" in self.text("details"))

    def test_pushes_to_two_applications_share_rows(self):
        self.simulator.ctl("sim", "play")
        viewers = [Viewer(self.simulator.bus) for _ in range(2)]
        for viewer in viewers:
            self.addCleanup(viewer.close)
            viewer.subscribe()
        pushed = lambda: [int(count) for row in self.rows() if row.startswith("PESCB")  # noqa: E731
                          for count in [1 + row.count(",") + sum(int(times) - 1 for times in re.findall("×([0-9]+)", row))]]
        wait_for(lambda: sum(pushed()) > 100, "pushes")
        self.assertGreater(sum(pushed()), 4 * len(pushed()))

    def test_shows_one_application(self):
        applications = [Application(self.simulator.bus) for _ in range(2)]
        for application in applications:
            self.addCleanup(application.connection.close_sync)
            application.ask_often(1)
        wait_for(lambda: sum("MuteAudio" in row for row in self.rows()) == 2)
        self.choose_application(applications[1].connection.get_unique_name())
        wait_for(lambda: sum("MuteAudio" in row for row in self.rows()) == 1)
        lanes = self.driver.execute_script("return [...document.querySelectorAll('.lane')].map(e => e.title)")
        self.assertEqual(len(lanes), 2)
        self.assertIn(applications[1].connection.get_unique_name(), lanes[1])

    def count(self):
        """The messages that the page has."""
        return int(self.attribute("diagram", "data-count") or 0)

    def type_filter(self, text):
        self.driver.execute_script("const f=document.getElementById('filter-text');f.value=arguments[0];"
                                   "f.dispatchEvent(new Event('input'))", text)

    def choose_application(self, name):
        self.driver.execute_script("const f=document.getElementById('filter-application');f.value=arguments[0];"
                                   "f.dispatchEvent(new Event('change'))", name)

    def anywhere(self, text):
        """Scrolls through the messages."""
        return self.driver.execute_async_script("""
            const [text, done] = arguments, d = document.getElementById('diagram');
            const seen = () => document.getElementById('conversation').textContent.includes(text);
            const at = top => { d.scrollTop = top; requestAnimationFrame(() => requestAnimationFrame(() =>
                seen() ? done(true) : top > d.scrollHeight ? done(false) : at(top + 300))); };
            at(0);""", text)

    def test_pauses(self):
        self.element("hold").click()
        self.simulator.ctl("mute", "audio", "on")
        self.wait_text("hold", " new")
        self.assertFalse(any("MuteAudio" in row for row in self.rows()))
        self.element("hold").click()
        wait_for(lambda: self.anywhere("MuteAudio"))

    def test_stays_responsive_with_10000_messages(self):
        self.driver.execute_script("""
            window.times = []; let last = performance.now();
            const tick = now => { window.times.push(now - last); last = now; requestAnimationFrame(tick); };
            requestAnimationFrame(tick);""")
        calls, steps = (5000, 120) if ALONE else (250, 30)
        begin = time.monotonic()
        Application(self.simulator.bus).ask_often(calls)
        asked = time.monotonic() - begin
        wait_for(lambda: self.count() >= 2 * calls, f"{2 * calls} messages")
        arrived = time.monotonic() - begin
        self.fill()
        wait_for(lambda: self.count() == 10000, "the last 10000 messages")
        scrolled = self.driver.execute_async_script("""
            const [steps, done] = arguments, d = document.getElementById('diagram');
            window.times.length = 0; let step = 0;
            const move = () => { d.scrollTop = d.scrollHeight * (step % 50) / 50;
                ++step < steps ? requestAnimationFrame(move) : done(window.times); };
            move();""", steps)
        rows = self.driver.execute_script("return document.querySelectorAll('.message').length")
        ordered = sorted(scrolled)
        median, worst = ordered[len(ordered) // 2], ordered[int(len(ordered) * 0.95)]
        print(f"\n{calls} calls took {asked:.1f} s, all {2 * calls} messages were on the page after {arrived:.1f} s; "
              f"frames while scrolling: median {median:.1f} ms, 95 % {worst:.1f} ms; {rows} rows in the document", flush=True)
        self.assertLess(rows, 60)
        self.assertLess(median, 34 * BESIDE_OTHERS, "30 frames a second")
        self.assertLess(worst, 100 * BESIDE_OTHERS)
        self.assertLess(arrived - asked, 2 * BESIDE_OTHERS)

    def test_shows_the_history_to_a_page_opened_later(self):
        self.simulator.ctl("mute", "video", "on")
        self.open_page()
        self.type_filter("mutevideo")
        wait_for(lambda: self.anywhere("MuteVideo"))

    def test_shows_each_message_once_after_its_connection_was_lost(self):
        script = self.driver.execute_cdp_cmd("Page.addScriptToEvaluateOnNewDocument", {"source": """
            window.sockets = [];
            window.WebSocket = class extends WebSocket {
                constructor(...address) { super(...address); window.sockets.push(this); }
            };"""})
        self.addCleanup(self.driver.execute_cdp_cmd, "Page.removeScriptToEvaluateOnNewDocument", script)
        self.driver.get(self.simulator.address)
        count = lambda: int(self.attribute("diagram", "data-count") or 0)  # noqa: E731
        self.simulator.ctl("mute", "audio", "on")
        wait_for(lambda: self.anywhere("MuteAudio onoff=true"))
        before = count()
        self.driver.execute_script("window.sockets.forEach(socket => socket.close())")
        wait_for(lambda: self.text("service") == "no simulator")
        wait_for(lambda: self.text("service") == "running", "the next connection")
        application = Application(self.simulator.bus)
        self.addCleanup(application.connection.close_sync)
        application.ask_often(1)
        wait_for(lambda: self.anywhere("MuteAudio onoff=false"))
        self.assertEqual(count(), before + 4, "an announcement, its answer, a request and its reply")
        self.assertFalse(self.anywhere("have been discarded"))

    def fill(self):
        """The page gets more messages than it keeps, and not from the simulator: the next test needs another page."""
        self.addCleanup(self.driver.get, "about:blank")
        self.driver.execute_async_script("""
            const done = arguments[0], message = { kind: 'request', application: ':1.1', function: 'MuteAudio', values: '' };
            const messages = Array.from({ length: 10000 }, (_, index) => ({ ...message, number: 1e6 + index }));
            import('./conversation.js').then(({ take }) => done(take(messages, 0)));""")

    def test_stays_responsive_with_many_applications(self):
        """Each of them only announces its channels, and leaves."""
        self.driver.execute_script("""
            window.times = []; let last = performance.now();
            const tick = now => { window.times.push(now - last); last = now; requestAnimationFrame(tick); };
            requestAnimationFrame(tick);
            window.added = 0;
            new MutationObserver(changes => changes.forEach(change => { window.added += change.addedNodes.length; }))
                .observe(document.getElementById("filter-application"), { childList: true });""")
        count = 1500 if ALONE else 150
        for _ in range(count):
            Application(self.simulator.bus).connection.close_sync(None)
        names = "return document.getElementById('filter-application').options.length"
        wait_for(lambda: self.driver.execute_script(names) > count, "all applications")
        worst = max(self.driver.execute_script("return window.times"))
        self.assertLess(worst, 300 * BESIDE_OTHERS)
        self.assertLess(self.driver.execute_script("return window.added"), 2 * count, "the list is not rebuilt for each one")
        self.fill()  # their messages are discarded
        wait_for(lambda: self.driver.execute_script(names) < 10, "only applications with messages")

    @contextmanager
    def stopped_page(self):
        """Stops the processes of the browser that run pages."""
        pages = [pid for pid, command in descendants(self.driver.service.process.pid) if "--type=renderer" in " ".join(command)]
        self.assertNotEqual(pages, [])
        for pid in pages:
            os.kill(pid, signal.SIGSTOP)
        try:
            yield
        finally:
            for pid in pages:
                os.kill(pid, signal.SIGCONT)

    def test_a_page_that_hangs_delays_nobody(self):
        self.spend_simulator()  # the next test would wait for its long history
        with self.stopped_page():
            begin = time.monotonic()
            for _ in range(10):
                self.assertEqual(self.simulator.ctl("mute", "audio", "on").returncode, 0)
            Application(self.simulator.bus).ask_often(500)  # messages that the page gets when it continues
            self.assertLess(time.monotonic() - begin, 8)
            self.simulator.ctl("mute", "audio", "off")
            wait_for(lambda: json.dumps(self.status()["AudioMuted"]) == "false")
        wait_for(lambda: "Sound muted" not in self.text("badges"))
        wait_for(lambda: self.count() > 1000, "the messages")

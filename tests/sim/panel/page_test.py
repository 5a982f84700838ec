# SPDX-License-Identifier: MIT
"""Tests the display of the page in a browser."""
import os
import signal
import socket

from browser import show_on
from support import PATIENCE, Application, PageTest, wait_for
from viewer import Viewer

SECOND = 1.0


class Shows(PageTest):
    hasPicture = False
    options = ("--rating-limit", "18")

    def within_a_second(self, words, condition):
        """Runs a command of zviptvctl. The page must show its effect within a second."""
        result = self.simulator.ctl(*words)
        self.assertEqual(result.returncode, 0, result.stderr)
        wait_for(condition, f"the page's view of {' '.join(words)}", SECOND)

    def test_the_television(self):
        self.wait_text_is("resolution", "320×180p, 25/s")
        self.assertEqual(self.text("channel"), "ZV Sample One")
        self.assertIn("Cellar Door", self.text("present"))
        self.assertIn("17+", self.text("present"))
        self.assertIn("Night Trains", self.text("following"))
        self.assertRegex(self.text("clock"), r"28 Mar 2026, 22:0\d:\d\d")
        self.wait_text_is("duration", "0:11.9")
        tracks = self.text("track-lists")
        for words in ("eng mpeg", "deu mpeg", "eng dvb · page 1 · 0x0103", "deu teletext · page 889 · hard of hearing"):
            self.assertIn(words, tracks)
        before = self.text("elapsed")
        wait_for(lambda: self.text("elapsed") != before)

    def test_actions_of_applications_within_a_second(self):
        self.within_a_second(["mute", "audio", "on"], lambda: "Sound muted by :1." in self.text("badges"))
        self.within_a_second(["mute", "video", "on"], lambda: self.attribute("screen", "data-cover") == "dark")
        self.within_a_second(["mute", "video", "off"], lambda: self.attribute("screen", "data-cover") == "none")
        self.within_a_second(["audio", "select", "1"], lambda: self.driver.execute_script(
            "return document.querySelector('.track-item.selected').textContent.startsWith('deu')"))
        self.within_a_second(["sim", "lock", "programme"], lambda: self.text("cover-text") == "Programme locked"
                             and "Packets and captions are still sent." in self.text("cover-note"))
        self.within_a_second(["unlock", "pin"], lambda: self.element("cover").get_attribute("hidden") is not None)
        self.within_a_second(["sim", "pause"], lambda: "Paused" in self.text("badges"))
        self.within_a_second(["sim", "seek", "7.5"], lambda: self.text("elapsed") == "0:07.5")
        self.within_a_second(["sim", "fault", "add", "GetTTX=error"], lambda: "GetTTX=error" in self.text("fault-list"))

    def test_a_death_and_a_return(self):
        self.simulator.ctl("sim", "die")
        self.wait_text_is("cover-text", "The service is dead", patience=SECOND)
        self.assertEqual(self.text("service"), "service is dead")
        self.simulator.ctl("sim", "restart")
        self.wait_text_is("service", "running")

    def test_a_service_that_hangs(self):
        pid = self.status()["ServicePid"]
        os.kill(pid, signal.SIGSTOP)
        self.wait_text_is("service", "service does not answer")
        self.wait_text_is("picture-note", "The service does not answer: the page shows its last state.")
        os.kill(pid, signal.SIGCONT)
        self.wait_text_is("service", "running")

    def test_applications_with_counters(self):
        subscriber = self.simulator.start_ctl("pes", "--count", "100000")
        self.addCleanup(subscriber.wait)
        self.addCleanup(subscriber.terminate)
        self.wait_text("application-list", "subscribed to PES packets")
        self.assertIn("data subscriber", self.text("application-list"))
        sent = lambda: self.driver.execute_script(  # noqa: E731
            "return document.querySelector('#application-list dd')?.textContent")
        count = wait_for(sent)
        wait_for(lambda: sent() not in (None, count))

    def test_the_program_of_an_application_without_subscription(self):
        application = Application(self.simulator.bus)
        self.addCleanup(application.connection.close_sync)
        self.wait_text("application-list", "player control")
        wait_for(lambda: application.ask_often(2) or "python3" in self.text("application-list"), "the name of the program")

    def test_one_page_above_the_limit(self):
        head = (f"GET {self.simulator.root}api/events HTTP/1.1\r\nHost: 127.0.0.1:{self.simulator.port}\r\n"
                "Connection: Upgrade\r\nUpgrade: websocket\r\nSec-WebSocket-Version: 13\r\n"
                "Sec-WebSocket-Key: dGhlIHNhbXBsZSBub25jZQ==\r\n\r\n")
        self.driver.get("about:blank")
        links = []
        self.addCleanup(lambda: [link.close() for link in links])

        def is_full():
            link = socket.create_connection(("127.0.0.1", self.simulator.port), timeout=PATIENCE)
            links.append(link)
            link.sendall(head.encode())
            return b" 503 " in link.recv(65536)
        wait_for(is_full, "32 pages")
        self.driver.get(self.simulator.address)
        self.wait_text("messages-area", "too many pages are open: the panel serves 32")
        self.assertEqual(self.text("service"), "refused")
        self.driver.get_log("browser")  # it tries to connect again
        for link in links:
            link.close()
        self.wait_text_is("service", "running")
        self.driver.get_log("browser")

    def test_when_the_simulator_ends(self):
        self.spend_simulator()
        self.simulator.process.terminate()
        self.wait_text_is("service", "no simulator")
        self.driver.get_log("browser")  # it tries to connect again


class LockStopsPushes(PageTest):
    hasPicture = False
    options = ("--lock-stops-pushes",)

    def test_is_shown_with_the_lock(self):
        self.simulator.ctl("sim", "lock", "service")
        self.wait_text_is("cover-text", "Service locked")
        self.assertIn("Until then no packets and captions are sent.", self.text("cover-note"))


class Fits(PageTest):
    hasPicture = False
    isPaused = True

    def setUp(self):
        super().setUp()
        self.addCleanup(show_on, self.driver)
        show_on(self.driver, scale=1)

    def test_the_width_of_screens(self):
        for width in (1280, 420):
            for dark in (False, True):
                show_on(self.driver, width, dark, scale=1)
                wide = self.driver.execute_script("return document.documentElement.scrollWidth")
                self.assertLessEqual(wide, width)
                colour = self.driver.execute_script("return getComputedStyle(document.body).backgroundColor")
                light = sum(int(part) for part in colour[4:-1].split(",")) > 380
                self.assertEqual(light, not dark, colour)
                unnamed = self.driver.execute_script("""return [...document.querySelectorAll('button, input, select')].filter(
                    e => !e.labels?.length && !e.getAttribute('aria-label') && !e.textContent.trim()).map(e => e.outerHTML)""")
                self.assertEqual(unnamed, [])


    def test_every_control_is_reached_by_keyboard(self):
        """The focus of each control is visible and not covered, at each width in each mode."""
        self.addCleanup(show_on, self.driver)
        self.simulator.ctl("sim", "fault", "add", "GetTTX=error")
        wait_for(lambda: "GetTTX" in self.text("fault-list") and "deu mpeg" in self.text("track-lists"))
        for width, dark in ((1280, False), (1280, True), (420, False), (420, True)):
            show_on(self.driver, width, dark)
            keys = """const key = control => control.id || control.dataset.key || control.outerHTML;"""
            reached = []
            while "" not in reached:
                self.driver.execute_cdp_cmd("Input.dispatchKeyEvent", {
                    "type": "keyDown", "key": "Tab", "code": "Tab", "windowsVirtualKeyCode": 9})
                name, problem = self.driver.execute_script(keys + """
                    const control = document.activeElement, box = control.getBoundingClientRect(), style = getComputedStyle(control);
                    const top = document.elementFromPoint(box.left + box.width / 2, box.top + Math.min(box.height, innerHeight) / 2);
                    return control === document.body ? ['', ''] : [key(control), style.outlineStyle === 'none'
                      || style.outlineWidth === '0px' ? 'has no visible focus' : box.left < 0 || box.right > innerWidth
                      ? 'is beyond the edge' : !control.contains(top) && !top?.contains(control) ? 'is covered' : '']""")
                self.assertEqual(problem, "", name)
                reached.append(name)
                self.assertLess(len(reached), 200, "the keyboard does not leave the page")
            controls = self.driver.execute_script(keys + """
                return [...document.querySelectorAll('button, input, select, a, [tabindex="0"]')].filter(
                  control => !control.disabled && control.checkVisibility()).map(key)""")
            self.assertGreater(len(controls), 40)
            self.assertEqual(set(controls) - set(reached), set())

    def test_heads_of_columns_do_not_overlap(self):
        for name in ("org.example.viewer", "org.example.remote", "org.example.recorder"):
            self.addCleanup(Viewer(self.simulator.bus, name).close)
        wait_for(lambda: self.driver.execute_script("return document.querySelectorAll('.lane').length") >= 4, "three applications")
        places = self.driver.execute_script("""return [...document.querySelectorAll('.lane b')].map(
            head => [head.getBoundingClientRect().left, head.getBoundingClientRect().right])""")
        self.assertTrue(all(right <= left for (_, right), (left, _) in zip(places, places[1:])), places)

    def test_texts_of_pressed_buttons_fit(self):
        cut = self.driver.execute_script("""return [...document.querySelectorAll('.toggle')].filter(button => {
            const pressed = button.getAttribute('aria-pressed'), text = document.createRange();
            button.setAttribute('aria-pressed', 'true');
            text.selectNodeContents(button);
            const isCut = text.getBoundingClientRect().width > button.clientWidth;
            button.setAttribute('aria-pressed', pressed);
            return isCut;
        }).map(button => button.textContent)""")
        self.assertEqual(cut, [])

    def test_fields_show_their_whole_content(self):
        cut = self.driver.execute_script("""return ['load', 'programme', 'fault-message', 'filter-application'].filter(id => {
            const field = document.getElementById(id), text = document.createElement('span');
            text.textContent = field.selectedOptions?.[0].textContent ?? field.placeholder;
            text.style.font = getComputedStyle(field).font;
            document.body.append(text);
            const width = text.getBoundingClientRect().width;
            text.remove();
            return width + 36 > field.clientWidth;
        })""")
        self.assertEqual(cut, [])

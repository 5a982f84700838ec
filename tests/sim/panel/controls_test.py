# SPDX-License-Identifier: MIT
"""Tests the controls of the page in a browser."""
import re
import subprocess
from pathlib import Path
from urllib.parse import unquote

from selenium.webdriver import ActionChains

from support import PATIENCE, SAMPLE, SIM, PageTest, wait_for

TAB, SPACE = "\ue004", "\ue00d"  # as WebDriver writes these keys


class Controls(PageTest):
    hasPicture = False

    def click(self, name):
        self.element(name).click()

    def becomes(self, name, value):
        wait_for(lambda: self.status()[name] == value, f"{name} {value}")

    def type(self, name, text):
        field = self.element(name)
        field.clear()
        field.send_keys(text)

    def test_by_clicks(self):
        self.click("mute-audio")
        self.becomes("AudioMutedBy", "control")
        self.click("mute-video")
        self.becomes("VideoMuted", True)
        self.click("lock-programme")
        self.becomes("ProgrammeLocked", True)
        self.click("lock-service")
        self.becomes("ServiceLocked", True)
        wait_for(lambda: self.attribute("lock-service", "aria-pressed") == "true")
        self.click("lock-service")
        self.becomes("ServiceLocked", False)
        self.driver.find_elements("css selector", "[data-kind=subtitle]")[2].click()
        self.becomes("Subtitle", 2)
        self.click("play")
        self.becomes("Paused", True)
        self.driver.execute_script("const p=document.getElementById('position');p.value=4.2;"
                                   "p.dispatchEvent(new Event('input'));p.dispatchEvent(new Event('change'))")
        self.becomes("Position", 4.2)
        self.driver.execute_script("const s=document.getElementById('speed');s.value='2';s.dispatchEvent(new Event('change'))")
        self.becomes("Speed", 2.0)
        self.driver.find_element("css selector", "[data-words=reset]").click()
        self.becomes("Speed", 1.0)

    def submit(self, form):
        self.driver.find_element("css selector", f"{form} button").click()

    def test_input_programme_and_clock(self):
        copy = Path(self.simulator.folder.name, "copy.ts")
        copy.symlink_to(SAMPLE.resolve())
        self.type("load", str(copy))
        self.submit("[data-verb=load]")
        self.becomes("Input", str(copy))
        self.click("record")  # records the verbs that the simulator accepts
        self.submit("[data-verb=programme]")
        wait_for(lambda: " programme 1\n" in self.text("recording") + "\n")
        self.click("record")
        self.driver.execute_script("document.getElementById('time').value = '2026-03-29T01:00:00'")
        self.submit("#time-form")
        wait_for(lambda: 1774746000 <= self.status()["GuideTime"] < 1774746100)

    def test_restart_and_quit(self):
        self.spend_simulator()
        self.driver.find_element("css selector", "[data-words=restart]").click()
        self.wait_text("rows", "the service has left the bus")
        self.wait_text_is("service", "running")
        self.driver.find_element("css selector", "[data-words=quit]").click()
        self.driver.switch_to.alert.accept()
        self.assertEqual(self.simulator.process.wait(PATIENCE), 0)
        self.driver.get("about:blank")
        self.driver.get_log("browser")

    def test_faults(self):
        self.type("fault-message", "MuteAudio")
        self.driver.execute_script("const k=document.getElementById('fault-kind');k.value='result';k.dispatchEvent(new Event('change'))")
        self.type("fault-value", "0")
        self.type("fault-count", "3")
        self.driver.find_element("css selector", "#fault-form button").click()
        wait_for(lambda: self.status()["Faults"] == [{"fault": "MuteAudio=result:0,count=3", "count": 3}])
        self.wait_text("fault-list", "3 left")
        self.driver.find_element("css selector", "[data-fault]").click()
        self.becomes("Faults", [])

    def test_by_words_and_shows_errors(self):
        self.type("words", "select audio 7")
        self.driver.find_element("css selector", "#words-form button").click()
        self.wait_text("messages-area", "there is no audio track 7: use 0 to 1")
        self.type("words", "time 1774738800")
        self.driver.find_element("css selector", "#words-form button").click()
        wait_for(lambda: self.status()["GuideTime"] >= 1774738800)

    def test_death_by_the_form(self):
        self.type("die", "0.5")
        self.driver.find_element("css selector", "#die-form button").click()
        self.wait_text_is("service", "service is dead")
        self.wait_text_is("service", "running")

    def test_by_keyboard(self):
        body = self.driver.find_element("css selector", "body")
        body.send_keys("k")
        self.becomes("Paused", True)
        reached = []
        for _ in range(60):
            ActionChains(self.driver).send_keys(TAB).perform()
            name, outline, text = self.driver.execute_script("""const active = document.activeElement;
                return [active.id, getComputedStyle(active).outlineStyle, active.outerHTML];""")
            reached.append(name)
            self.assertNotEqual(outline, "none", f"the focus on {text[:80]} is visible")
            if name == "mute-audio":
                ActionChains(self.driver).send_keys(SPACE).perform()
                break
        self.becomes("AudioMuted", True)
        self.assertIn("play", reached)
        self.assertIn("diagram", reached)

    def test_recorder_takes_every_verb(self):
        """The recorded scenario runs without errors."""
        verbs = ("pause", "play", "seek 3.5", "speed 2", f"load {SAMPLE.resolve()}", "programme 1", "lock programme",
                 "unlock programme", "time 1774738800", "fault add GetTTX=error --for 2", "fault remove GetTTX=error",
                 "fault clear", "mute video on", "select subtitle 1", "die --for 0.1", "restart", "reset")
        offered = self.driver.execute_async_script(
            "const done=arguments[0];fetch('api/verbs.json').then(a=>a.json()).then(l=>done(l.map(verb=>verb.words)))")
        self.assertEqual([words for words in offered if not any(verb.startswith(words) for verb in verbs)],
                         ["quit"], "every verb is tested, except quit: it may end the simulator before the page gets the answer")
        self.click("record")
        for count, verb in enumerate(verbs, 1):
            self.driver.execute_script("const w=document.getElementById('words');w.value=arguments[0];w.form.requestSubmit()", verb)
            wait_for(lambda: self.text("recording").count("\n") == count - 1 and verb.split()[0] in self.text("recording"), verb)
        self.click("record")
        text = unquote(self.attribute("download", "href").split(",", 1)[1])
        self.assertEqual([line.split(" ", 1)[1] for line in text.splitlines()[1:]], list(verbs))
        file = Path(self.simulator.folder.name, "verbs.scenario")
        file.write_text(f"{text}30 quit\n")
        played = subprocess.run([SIM, "--ts", SAMPLE, "--loop", "--bus", "private", "--speed", "10", "--scenario", file],
                                capture_output=True, text=True, timeout=PATIENCE)
        self.assertEqual((played.returncode, re.findall(".*(?:failed|not run).*", played.stderr)), (0, []))

    def test_recorder_makes_a_scenario(self):
        self.click("record")
        self.click("mute-audio")
        self.becomes("AudioMuted", True)
        self.type("words", 'fault add GetTTX=error --count 2')
        self.driver.find_element("css selector", "#words-form button").click()
        self.wait_text("recording", "fault add")
        self.click("record")
        text = unquote(self.attribute("download", "href").split(",", 1)[1])
        lines = text.splitlines()
        self.assertRegex(lines[0], "^# Recorded ")
        self.assertRegex(lines[1], r"^\d+\.\d{3} mute audio on$")
        self.assertRegex(lines[2], r"^\d+\.\d{3} fault add GetTTX=error --count 2$")
        file = Path(self.simulator.folder.name, "recorded.scenario")
        file.write_text(text)
        played = subprocess.run([SIM, "--ts", SAMPLE, "--loop", "--scenario", file, "--speed", "20", "--",
                                 "sh", "-c", "sleep 1.5"], capture_output=True, text=True, timeout=PATIENCE)
        self.assertEqual(played.returncode, 0, played.stderr)
        self.assertNotIn("error", played.stderr)

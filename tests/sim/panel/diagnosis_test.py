# SPDX-License-Identifier: MIT
"""Whether the page gives the reason why an application shows no subtitles, in a browser.

Each case prepares a television and an application that cannot show subtitles. The page must show its signs."""
import json
import os
import re
import signal
from pathlib import Path

from support import SAMPLE, PageTest, wait_for
from viewer import Viewer

PACKET = 188
SUBTITLE_PID = 0x0103


def without_subtitle_packets(folder):
    """The sample, which still announces its DVB subtitle."""
    data = SAMPLE.read_bytes()
    packets = [data[at:at + PACKET] for at in range(0, len(data), PACKET)]
    file = Path(folder, "evening.ts")
    file.write_bytes(b"".join(packet for packet in packets if (packet[1] & 0x1F) << 8 | packet[2] != SUBTITLE_PID))
    return file


class Case:
    """A simulator and the applications on its bus."""

    def __init__(self, simulator, clean_up):
        self.simulator = simulator
        self.clean_up = clean_up

    def sim(self, *words):
        done = self.simulator.ctl("sim", *words)
        assert done.returncode == 0, done.stderr

    def viewer(self):
        viewer = Viewer(self.simulator.bus)
        self.clean_up(viewer.close)
        return viewer

    def watcher(self):
        """A viewer that has subscribed and has selected the DVB subtitle."""
        viewer = self.viewer()
        viewer.subscribe()
        viewer.select_subtitle(0)
        return viewer

    def start(self, *words):
        process = self.simulator.start_ctl(*words)
        self.clean_up(process.wait)
        self.clean_up(process.kill)
        return process

    def receiver(self):
        """An application that receives the packets of the subtitle."""
        process = self.start("pes", "--pid", hex(SUBTITLE_PID))
        wait_for(lambda: any(one["pes"] for one in self.status()["Subscribers"]), "the subscription")
        return process

    def status(self):
        return json.loads(self.simulator.ctl("--json", "sim", "status").stdout)


def never_subscribes(case):
    case.viewer().select_subtitle(0)


def ends_its_subscription(case):
    case.watcher().subscribe(on="0")


def selects_a_missing_subtitle(case):
    viewer = case.viewer()
    viewer.subscribe()
    viewer.select_subtitle(3)


def subscribes_to_captions(case):
    viewer = case.viewer()
    viewer.select_subtitle(0)
    viewer.ask("IPTVDATASUBSCRIBER", "requestCaptionCB", on="1")


def is_refused(case):
    case.sim("fault", "add", "requestPESCB=result:0,effect=no")
    viewer = case.viewer()
    viewer.select_subtitle(0)
    viewer.subscribe()


def cannot_read_the_list(case):
    case.sim("fault", "add", "GetHybridSBT=short:hybridSbt")
    viewer = case.viewer()
    viewer.subscribe()
    viewer.ask("BROADCASTDATA", "SizeOfHybridSBT")
    viewer.ask("BROADCASTDATA", "GetHybridSBT", index="0")


def gets_damaged_packets(case):
    case.sim("fault", "add", "PESCB=missing:pesPID")
    case.watcher()


def hangs(case):
    process = case.receiver()
    os.kill(process.pid, signal.SIGSTOP)


def crashes(case):
    process = case.receiver()
    os.kill(process.pid, signal.SIGKILL)


def misses_the_return_of_the_service(case):
    case.watcher()
    case.sim("restart")


def loses_the_selection_to_another(case):
    case.watcher()
    case.viewer().select_subtitle(2)


def watches_a_locked_programme(case):
    case.watcher()
    case.sim("lock", "programme")


def watches_a_paused_stream(case):
    case.sim("pause")
    case.watcher()


def watches_a_stream_without_packets(case):
    case.sim("load", str(without_subtitle_packets(case.simulator.folder.name)))
    case.watcher()


def asks_a_service_that_hangs(case):
    viewer = case.viewer()
    viewer.subscribe()
    process = case.status()["ServicePid"]
    case.clean_up(lambda: os.kill(process, signal.SIGCONT))
    os.kill(process, signal.SIGSTOP)


# For each case, the signs on the page: an element or a filter of the conversation, and a text that must be in it.
CASES = {
    never_subscribes: [("application-list", "data subscriber.*no subscription")],
    ends_its_subscription: [("application-list", "no subscription"), ("requestPESCB", "on=false")],
    selects_a_missing_subtitle: [("SetCurrentHybridSBT", "index=3.*✗ SetCurrentHybridSBT refused")],
    subscribes_to_captions: [("application-list", "subscribed to captions"), ("PESCB", "^(?!.*requestPESCB)")],
    is_refused: [("application-list", "no subscription"), ("requestPESCB", "on=true.*✗ requestPESCB refused"),
                 ("fault-list", "requestPESCB=result:0,effect=no")],
    cannot_read_the_list: [("GetHybridSBT", "⚠ hybridSbt"), ("fault-list", "GetHybridSBT=short:hybridSbt")],
    gets_damaged_packets: [("PESCB", "PESCB without PID"), ("fault-list", "PESCB=missing:pesPID")],
    hangs: [("application-list", "queued[1-9]")],
    crashes: [("application-list", "^none connected"), ("", "has left the bus without withdrawing its channels")],
    misses_the_return_of_the_service: [("application-list", "^none connected"), ("", "the service has left the bus"),
                                       ("", "the service has arrived")],
    loses_the_selection_to_another: [("SetCurrentHybridSBT", "index=0.*index=2"), ("selected", "deu teletext")],
    watches_a_locked_programme: [("cover-text", "Programme locked"), ("cover-note", "no packets and captions are sent")],
    watches_a_paused_stream: [("badges", "Paused"), ("application-list", "sent0")],
    watches_a_stream_without_packets: [("selected", "eng dvb .* 0x0103"), ("PESCB", "0x0104"), ("PESCB", "^(?!.*0x0103)")],
    asks_a_service_that_hangs: [("service", "does not answer")],
}


class Diagnosis(PageTest):
    hasPicture = False
    options = ("--lock-stops-pushes",)

    def seen(self, place):
        """The text of the element with this id, of the selected tracks, or of the conversation with this filter."""
        return self.driver.execute_async_script("""
            const [place, done] = arguments, element = document.getElementById(place);
            if (element) {
              return done(element.textContent);
            }
            if (place === 'selected') {
              return done([...document.querySelectorAll('.track-item.selected')].map(one => one.textContent).join('; '));
            }
            const field = document.getElementById('filter-text');
            field.value = place;
            field.dispatchEvent(new Event('input'));
            requestAnimationFrame(() => requestAnimationFrame(() => done(
              [...document.querySelectorAll('.message:not([hidden])')].map(one => one.textContent).join('; '))));""", place)

    def shows(self, place, sign):
        try:
            wait_for(lambda: re.search(sign, self.seen(place), re.DOTALL))
        except AssertionError:
            self.fail(f"'{sign}' is not in {place}: {self.seen(place)}")

    def test_shows_why_there_are_no_subtitles(self):
        for prepare, signs in CASES.items():
            clean_ups = []
            with self.subTest(prepare.__name__):
                self.assertEqual(self.simulator.ctl("sim", "reset").returncode, 0)
                wait_for(lambda: self.seen("application-list") == "none connected")
                self.element("empty-log").click()
                try:
                    prepare(Case(self.simulator, clean_ups.append))
                    for place, sign in signs:
                        self.shows(place, sign)
                finally:
                    for clean_up in reversed(clean_ups):
                        clean_up()

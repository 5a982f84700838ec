#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Takes pictures of the panel in its states: screenshots.py SIM CTL SAMPLE GUIDE FOLDER [STATE...]

Writes FOLDER/STATE-WIDTH-MODE.png for all states, or for those that are named, at each width, in light and dark mode.
usual-1280-light.png is the picture in the documentation: ./run screenshots."""
import base64
import json
import os
import shutil
import signal
import subprocess
import sys
import tempfile
from contextlib import ExitStack
from pathlib import Path

FOLDER, NAMES = Path(sys.argv[5]), sys.argv[6:]
del sys.argv[5:]

from browser import show_on, start_browser  # noqa: E402
from support import CTL, GUIDE, SAMPLE, SIM, Simulator, wait_for  # noqa: E402
from viewer import Viewer  # noqa: E402

HEIGHT = 1100  # of the picture in the documentation
INPUTS = "--ts", SAMPLE, "--loop", "--guide", GUIDE, "--time", "1774735200"


class Page:
    """The page of a simulator, which ends with `stack`."""

    options = ()

    def __init__(self, driver, stack, **how):
        self.driver = driver
        self.stack = stack
        self.simulator = Simulator(**how)
        stack.callback(self.simulator.close)
        driver.get(self.simulator.address)
        wait_for(lambda: self.text("service") == "running", "the page's connection")

    def sim(self, *words):
        done = self.simulator.ctl("sim", *words)
        assert done.returncode == 0, done.stderr

    def start(self, *words):
        process = self.simulator.start_ctl(*words)
        self.stack.callback(process.wait)
        self.stack.callback(process.kill)

    def viewer(self, name):
        viewer = Viewer(self.simulator.bus, name)
        self.stack.callback(viewer.close)
        return viewer

    def text(self, name):
        return self.driver.execute_script("return document.getElementById(arguments[0]).textContent", name)

    def shows(self, name, text):
        wait_for(lambda: text in self.text(name), f"'{text}' in {name}")

    def click(self, name):
        self.driver.execute_script("document.getElementById(arguments[0]).click()", name)

    def run(self, words):
        self.driver.execute_script("const w=document.getElementById('words');w.value=arguments[0];w.form.requestSubmit()", words)

    def applications(self):
        """Starts three applications. One sends a wrong index, and another one gets an answer changed by a fault."""
        viewer = self.viewer("org.example.viewer")
        viewer.select_subtitle(1)
        viewer.subscribe()
        remote = self.viewer("org.example.remote")
        remote.ask("PLAYERCONTROL", "SetCurrentAudioByIndex", index="1")
        logger = self.viewer("org.example.logger")
        logger.ask("IPTVDATASUBSCRIBER", "requestCaptionCB", on="1")
        self.sim("fault", "add", "GetTTX=error")
        logger.ask("BROADCASTDATA", "GetTTX", index="0")
        remote.ask("PLAYERCONTROL", "SetCurrentHybridSBT", index="7")
        self.shows("rows", "refused")


def usual(page):
    page.applications()
    page.click("filter-pushes")
    page.sim("seek", "2.5")
    wait_for(lambda: page.text("elapsed") > "0:03.5", "a picture without the previous subtitle")
    wait_for(lambda: page.driver.execute_script("""
        const c = document.getElementById('picture'), [x, y] = [c.width * 0.45, c.height * 0.88];
        return c.getContext('2d').getImageData(x, y, c.width * 0.1, c.height * 0.08).data.filter(
          (level, at, all) => at % 4 === 0 && level < 40 && all[at + 1] < 40 && all[at + 2] < 40).length > 100;"""), "a subtitle")


def details(page):
    page.applications()
    page.click("filter-failures")
    page.driver.execute_async_script("requestAnimationFrame(() => requestAnimationFrame(arguments[0]))")
    page.driver.execute_script("[...document.querySelectorAll('.message:not([hidden])')].at(-1).click()")
    page.shows("details", "Raw")


def muted(page):
    page.sim("mute", "audio", "on")
    page.sim("mute", "video", "on")
    page.shows("cover-text", "Picture muted")


def locked(page):
    page.sim("lock", "programme")
    page.shows("cover-text", "Programme locked")


def dead(page):
    page.start("pes")
    page.shows("application-list", "PES packets")
    page.sim("die")
    page.shows("cover-text", "dead")


def hanging(page):
    page.applications()
    process = json.loads(page.simulator.ctl("--json", "sim", "status").stdout)["ServicePid"]
    page.stack.callback(os.kill, process, signal.SIGCONT)
    os.kill(process, signal.SIGSTOP)
    page.shows("service", "does not answer")


def recorder(page):
    page.click("record")
    for number, words in enumerate(("mute audio on", "lock service", "unlock service", "seek 2.5", "play",
                                    "fault add GetTTX=delay:3000,from=2 --count 3")):
        page.run(words)
        wait_for(lambda: page.text("recording").count("\n") == number and words in page.text("recording"))


def refused(page):
    page.run("select audio 7")
    page.shows("messages-area", "there is no audio track 7")


def paused(page):
    page.sim("pause")
    page.sim("speed", "2")
    page.shows("badges", "Paused")


def no_ffmpeg(page):
    page.shows("picture-note", "install ffmpeg")


def replay(page):
    page.start("pes")
    page.start("mute", "audio", "on")
    page.shows("rows", "MuteAudio")


def record(folder):
    file = Path(folder, "bug.pcapng")
    subprocess.run([SIM, "--quiet", *INPUTS, "--record", file, "--", "sh", "-c", f"{CTL} mute audio on; {CTL} pes --count 50"],
                   check=True, stdout=subprocess.DEVNULL)
    return file


def options_of(state, folder):
    """How the simulator of a state is started."""
    if state is no_ffmpeg:
        os.symlink(shutil.which("dbus-daemon"), Path(folder, "dbus-daemon"))
        return {"path": folder}
    if state is replay:
        return {"inputs": ("--replay", record(folder))}
    return {}


def take(driver, name):
    for width in (1280, 420):
        for mode in ("light", "dark"):
            show_on(driver, width, mode == "dark", scale=1)
            height = HEIGHT if name == "usual" and width == 1280 else driver.execute_script(
                "return document.documentElement.scrollHeight")
            picture = driver.execute_cdp_cmd("Page.captureScreenshot", {"captureBeyondViewport": True, "clip": {
                "x": 0, "y": 0, "width": width, "height": height, "scale": 1}})
            Path(FOLDER, f"{name}-{width}-{mode}.png").write_bytes(base64.b64decode(picture["data"]))


def main():
    FOLDER.mkdir(parents=True, exist_ok=True)
    states = {state.__name__: state for state in (usual, details, muted, locked, dead, hanging, recorder, refused, paused,
                                                  no_ffmpeg, replay)}
    driver = start_browser()
    try:
        for name in NAMES or states:
            with ExitStack() as stack:
                folder = stack.enter_context(tempfile.TemporaryDirectory(prefix="zviptv-shots-"))
                show_on(driver, scale=1)
                page = Page(driver, stack, **options_of(states[name], folder))
                if name not in ("no_ffmpeg", "replay"):
                    wait_for(lambda: driver.execute_script("return Number(document.getElementById('picture').dataset.frames ?? 0)"),
                             "a picture")
                states[name](page)
                take(driver, name)
                print(name, flush=True)
    finally:
        driver.quit()


if __name__ == "__main__":
    main()

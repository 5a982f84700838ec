# SPDX-License-Identifier: MIT
"""Uses examples/remote.cpp in a terminal, with keys: remote.py REMOTE SIMULATOR ZVIPTVCTL SAMPLES [SCREENS]

SCREENS is a folder that gets each screen as text."""
import json
import os
import pathlib
import re
import shutil
import signal
import subprocess
import sys
import tempfile
import time

PATIENCE = 30
REMOTE, SIMULATOR, ZVIPTVCTL, SAMPLES = sys.argv[1:5]
SCREENS = pathlib.Path(sys.argv[5]) if len(sys.argv) > 5 else None
BUS = """<busconfig><type>system</type><listen>unix:path={0}/bus</listen><auth>EXTERNAL</auth>
<policy context="default"><allow user="*"/><allow own="*"/><allow send_destination="*"/><allow receive_sender="*"/>
</policy></busconfig>"""
HELP = "m sound  v picture  a audio  s subtitle  t teletext  u unlock  q quit"


def wait_for(condition, what):
    end = time.monotonic() + PATIENCE
    while not (value := condition()):
        if time.monotonic() > end:
            raise AssertionError(what() if callable(what) else what)
        time.sleep(0.05)
    return value


class Terminal:
    """A terminal of 90 columns and 24 rows, which shows what the program shows."""

    def __init__(self, folder, command):
        self._tmux = ["tmux", "-u", "-f", "/dev/null", "-S", f"{folder}/tmux"]
        self._run("new-session", "-d", "-x", "90", "-y", "24", f"exec 2>{folder}/errors; {command}; echo \"ended: $?\"; exec cat")

    def _run(self, *arguments):
        return subprocess.run([*self._tmux, *arguments], check=True, stdout=subprocess.PIPE, text=True).stdout

    def type(self, *keys):
        self._run("send-keys", *keys)

    def resize(self, columns, rows):
        self._run("resize-window", "-x", str(columns), "-y", str(rows))

    def screen(self):
        return [line.rstrip() for line in self._run("capture-pane", "-p").split("\n")[:-1]]

    def await_line(self, pattern):
        """The first line that matches all of the pattern."""
        def find():
            return next((line for line in self.screen() if re.fullmatch(pattern, line)), None)
        return wait_for(find, lambda: f"no line '{pattern}' in:\n" + "\n".join(self.screen()))

    def keep(self, name):
        if SCREENS:
            SCREENS.mkdir(parents=True, exist_ok=True)
            (SCREENS / f"{name}.txt").write_text("\n".join(self.screen()) + "\n")

    def end(self):
        self._run("kill-server")


class Television:
    def __init__(self):
        self.start()

    def start(self):
        self._process = subprocess.Popen([
            SIMULATOR, "--bus", "system", "--quiet", "--loop", "--ts", f"{SAMPLES}/sample.ts", "--guide",
            f"{SAMPLES}/sample.xml", "--time", "1774735200", "--rating-limit", "12"])

    def kill(self):
        self._process.kill()
        self._process.wait()

    def end(self):
        self._process.terminate()
        self._process.wait()

    def await_property(self, name, value):
        def state():
            answer = subprocess.run([ZVIPTVCTL, "--json", "sim", "status"], stdout=subprocess.PIPE, check=True)
            return json.loads(answer.stdout)[name]
        wait_for(lambda: state() == value, lambda: f"{name} is {state()}, not {value}")


def show_and_select(terminal, television):
    terminal.await_line(r"Television")
    terminal.await_line(r"State      playing   clock \d+ s")
    terminal.await_line(r"Locks      programme locked, service not locked")
    terminal.await_line(r"Now        21:30-00:30  Cellar Door")
    terminal.await_line(r"Next       00:30-01:30  Night Trains")
    terminal.await_line(r"Audio     >1 eng  2 deu")
    terminal.await_line(r"Subtitles.*1 eng .*2 eng .*3 deu")
    terminal.await_line(r"Teletext .*1 eng .*2 eng .*3 deu")
    assert terminal.screen()[23] == HELP, terminal.screen()
    television.await_property("AudioMuted", False)
    terminal.type("m")
    terminal.await_line(r"Sound      muted")
    television.await_property("AudioMuted", True)
    terminal.type("v")
    terminal.await_line(r"Picture    muted")
    television.await_property("VideoMuted", True)
    terminal.type("v", "a")
    terminal.await_line(r"Picture    on")
    terminal.await_line(r"Audio      1 eng >2 deu")
    terminal.type("Up", "a", "u")
    terminal.await_line(r"Audio     >1 eng  2 deu")
    terminal.await_line(r"Locks      programme not locked, service not locked")
    terminal.type("s")
    terminal.await_line(r"Subtitles  1 eng >2 eng  3 deu")
    terminal.type("t", "t")
    terminal.await_line(r"Teletext   1 eng  2 eng >3 deu|Teletext   1 eng >2 eng  3 deu")
    subprocess.run([ZVIPTVCTL, "audio", "select", "1"], check=True, stdout=subprocess.DEVNULL)
    terminal.await_line(r"Audio      1 eng >2 deu")  # another application has selected it


def show_captions(terminal):
    terminal.await_line(r"page 888  (One|Two|Three|Four|Five)")
    terminal.await_line(r"page 889  (Eins|Zwei|Drei|Vier|Fünf)")
    terminal.await_line(r"ARIB jpn  (いち|に|さん|し|よん|ご)")
    terminal.keep("playing")


def survive_restarts(terminal, television):
    for _ in range(2):
        television.kill()
        terminal.await_line(r"Television: no service; waiting for it")
        terminal.await_line(r"State      -   clock -")
        terminal.keep("no-service")
        terminal.type("a")
        terminal.await_line(r"SetCurrentAudioByIndex: no service.*")
        television.start()
        terminal.await_line(r"Television")
        terminal.await_line(r"State      playing   clock \d+ s")
        terminal.await_line(r"Audio     >1 eng  2 deu")
        television.await_property("AudioMuted", True)  # as before
        show_captions(terminal)


def resize(terminal):
    terminal.resize(40, 8)
    wait_for(lambda: terminal.screen()[-1].startswith("m sound  v picture"), lambda: str(terminal.screen()))
    assert len(terminal.screen()) == 8
    assert terminal.screen()[0] == "Television", terminal.screen()
    terminal.keep("small")
    terminal.resize(100, 30)
    wait_for(lambda: terminal.screen()[29] == HELP, lambda: str(terminal.screen()))
    terminal.await_line(r"Now        21:30-00:30  Cellar Door")


def main():
    if not shutil.which("tmux"):
        print("skipped: tmux is missing; install the package tmux")
        return 77
    with tempfile.TemporaryDirectory() as folder:
        pathlib.Path(f"{folder}/bus.conf").write_text(BUS.format(folder))
        bus = subprocess.Popen(["dbus-daemon", f"--config-file={folder}/bus.conf", "--nofork", "--nopidfile",
                                "--print-address"], stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True)
        os.environ.update(DBUS_SYSTEM_BUS_ADDRESS=bus.stdout.readline().strip(), TZ="UTC", LC_ALL="C.UTF-8",
                          ZV_IPTV_LOG="none", TERM="screen")
        television = Television()
        terminal = Terminal(folder, REMOTE)
        try:
            show_and_select(terminal, television)
            show_captions(terminal)
            resize(terminal)
            survive_restarts(terminal, television)
            terminal.type("q")
            terminal.await_line(r"ended: 0")
            assert terminal.screen()[0] == "ended: 0", terminal.screen()
            errors = pathlib.Path(f"{folder}/errors").read_text()
            assert not errors, errors
        finally:
            terminal.end()
            television.end()
            bus.send_signal(signal.SIGTERM)
            bus.wait()
    return 0


if __name__ == "__main__":
    sys.exit(main())

# SPDX-License-Identifier: MIT
"""The process zviptv-sim, on a private bus."""
import shlex
import shutil
import subprocess
import tempfile
from pathlib import Path
from typing import Optional, Sequence

from .errors import SimulatorDied, TelevisionError

# The simulator runs this command when the service is ready, and exits with it. The command ends when its standard input
# closes: in stop(), or when pytest exits.
COMMAND = ("sh", "-c", 'echo "$DBUS_SYSTEM_BUS_ADDRESS"; exec cat')
SAMPLE = "share/zv-iptv/samples/sample.ts"
END_TIMEOUT = 10.0  # seconds
MOST_SHOWN = 2000  # characters of the simulator's messages


def find_program() -> str:
    """The path of zviptv-sim."""
    program = shutil.which("zviptv-sim")
    if program is None:
        raise TelevisionError("cannot start zviptv-sim: it is not in PATH; "
                              "install the package zv-iptv-tools, or add the folder of zviptv-sim to PATH")
    return program


def find_sample(program: str) -> str:
    """The sample stream of the installation that the program belongs to."""
    sample = Path(program).resolve().parent.parent / SAMPLE
    if not sample.exists():
        raise TelevisionError(f"cannot find a stream to play: {sample} does not exist; "
                              "set zviptv_input in the configuration of pytest to a transport stream")
    return str(sample)


class Simulator:
    """Runs zviptv-sim until stop(), or until this process ends."""

    def __init__(self, input_: str = "", arguments: Sequence[str] = ()) -> None:
        """Waits until applications can use the service. `arguments` are options of zviptv-sim.

        Raises TelevisionError if the simulator does not start.
        """
        program = find_program()
        self._command = [program, "--ts", input_ or find_sample(program), *arguments]
        self._messages = tempfile.TemporaryFile("w+", encoding="utf-8", errors="replace")
        self._process = subprocess.Popen(  # a process group that Ctrl-C does not reach: pytest stops it
            [*self._command, "--", *COMMAND], stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=self._messages,
            text=True, process_group=0)
        assert self._process.stdout is not None
        self.address = self._process.stdout.readline().strip()
        if not self.address:
            self._process.wait()
            raise TelevisionError(self._how_ended("zviptv-sim did not start"))

    @property
    def pid(self) -> int:
        """The process."""
        return self._process.pid

    def _how_ended(self, what: str) -> str:
        status = self._process.returncode
        how = f"ended with exit status {status}" if status >= 0 else f"was killed by signal {-status}"
        self._messages.seek(0)
        messages = self._messages.read()[-MOST_SHOWN:].strip() or "it has printed nothing"
        return f"{what}: it {how}\n{messages}\nThe command was: {shlex.join(self._command)}"

    def check(self, timeout: Optional[float] = None) -> None:
        """Raises SimulatorDied if the process has ended, or ends within `timeout` seconds."""
        try:
            self._process.wait(timeout or 0)
        except subprocess.TimeoutExpired:
            return
        raise SimulatorDied(self._how_ended("zviptv-sim has ended during the tests"))

    def stop(self) -> None:
        """Ends the process and waits for its end."""
        assert self._process.stdin is not None and self._process.stdout is not None
        self._process.stdin.close()
        try:
            self._process.wait(END_TIMEOUT)
        except subprocess.TimeoutExpired:
            self._process.kill()
            self._process.wait()
        self._process.stdout.close()
        self._messages.close()

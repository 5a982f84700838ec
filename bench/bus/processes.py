# SPDX-License-Identifier: MIT
"""The processes of a run: a private bus, the service, and the clients."""

import contextlib
import json
import os
import pathlib
import selectors
import shutil
import subprocess
import tempfile

HERE = pathlib.Path(__file__).parent
PATIENCE = 120  # seconds that a process may take for one command
BUS_CONFIG = """<busconfig><type>system</type><listen>unix:path={folder}/bus</listen><auth>EXTERNAL</auth>
<policy context="default"><allow user="*"/><allow own="*"/>
<allow send_destination="*"/><allow receive_sender="*"/></policy></busconfig>"""


def child(command):
    """Changes the command so that it ends with this process."""
    return ["setpriv", "--pdeathsig", "KILL", *map(str, command)]


def why_no_journal():
    """The reason why no journal can be started for a client; None if there is none."""
    if os.geteuid() != 0:
        return "requires root, to start a private journal for the client"
    if not os.path.exists("/lib/systemd/systemd-journald"):
        return "requires the package systemd"
    probe = subprocess.run(["unshare", "--mount", HERE / "with_journal.sh", "true"], capture_output=True, text=True,
                           check=False)
    return f"requires a private journal, which does not start: {probe.stderr.strip()}" if probe.returncode else None


class Process:
    """A program that reads commands of one line, and answers each with a line. Its last argument is the descriptor of
    the pipe through which clients report to the service what they have received."""

    def __init__(self, command, credit, environment):
        self.name = " ".join(map(str, command))
        self.process = subprocess.Popen(child([*command, credit]), stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                                        env=environment, pass_fds=[credit])
        self.waiting = selectors.DefaultSelector()
        self.waiting.register(self.process.stdout, selectors.EVENT_READ)

    def send_line(self, line):
        self.process.stdin.write(line.encode() + b"\n")
        self.process.stdin.flush()

    def hear(self):
        if not self.waiting.select(PATIENCE):
            self.process.kill()
            raise RuntimeError(f"{self.name} did not answer within {PATIENCE} s")
        line = self.process.stdout.readline()
        if not line.endswith(b"\n"):
            raise RuntimeError(f"{self.name} has ended with status {self.process.wait()}")
        return line.decode().strip()

    def __enter__(self):
        return self

    def __exit__(self, failure, *_):
        """Ends the process. Its failure is reported unless another failure is."""
        self.process.stdin.close()
        try:
            status = self.process.wait(PATIENCE)
        except subprocess.TimeoutExpired:
            self.process.kill()
            status = self.process.wait()
        if status != 0 and failure is None:
            raise RuntimeError(f"{self.name} has ended with status {status}")


class Client(Process):
    """One client process. `start` is the time to its first answered call, in nanoseconds."""

    def __init__(self, command, credit, environment):
        super().__init__(command, credit, environment)
        self.start = json.loads(self.hear())["start"]

    def ask(self, line):
        self.send_line(line)
        return json.loads(self.hear())


def processor_time(pid):
    """The processor time of all threads of the process, in nanoseconds. A thread may end meanwhile."""
    worked = 0
    for file in pathlib.Path(f"/proc/{pid}/task").glob("*/schedstat"):
        with contextlib.suppress(FileNotFoundError, ProcessLookupError):
            worked += int(file.read_text().split()[0])
    return worked


class Bench:
    """A bus with the service, until the end of the `with` statement."""

    def __init__(self, programs):
        self.programs = pathlib.Path(programs)
        self.stack = contextlib.ExitStack()

    def __enter__(self):
        with contextlib.ExitStack() as stack:
            folder = tempfile.mkdtemp(prefix="zviptv-bench-")
            stack.callback(shutil.rmtree, folder)
            config = pathlib.Path(folder, "bus.conf")
            config.write_text(BUS_CONFIG.format(folder=folder))
            daemon = subprocess.Popen(child(["dbus-daemon", f"--config-file={config}", "--nofork", "--nopidfile",
                                              "--nosyslog", "--print-address"]),
                                      stdout=subprocess.PIPE, stderr=open(folder + "/log", "w"))
            self.daemon = daemon.pid
            stack.callback(daemon.wait)
            stack.callback(daemon.kill)
            address = daemon.stdout.readline().decode().strip()
            if not address:
                raise RuntimeError("the bus does not start: " + pathlib.Path(folder, "log").read_text())
            self.environment = {**os.environ, "DBUS_SYSTEM_BUS_ADDRESS": address, "ZV_IPTV_LOG": "none"}
            hears, self.credit = os.pipe()
            stack.callback(os.close, hears)
            stack.callback(os.close, self.credit)
            self.service = stack.enter_context(Process([self.programs / "bench_service"], hears, self.environment))
            self.service_name = self.service.hear()
            self.stack = stack.pop_all()
        return self

    def __exit__(self, *what):
        return self.stack.__exit__(*what)

    def command(self, variant):
        """The command of a client of the variant, and its environment."""
        command = [self.programs / f"bench_client_{variant.program}", self.service_name]
        if not variant.journal:
            return command, self.environment
        return ["unshare", "--mount", HERE / "with_journal.sh", *command], {**self.environment, "ZV_IPTV_LOG": "system"}

    @contextlib.contextmanager
    def clients(self, variants, number=1):
        """Clients by variant: a list of `number` each."""
        with contextlib.ExitStack() as stack:
            made = {}
            for variant in variants:
                command, environment = self.command(variant)
                made[variant] = [stack.enter_context(Client(command, self.credit, environment)) for _ in range(number)]
            yield made

    def processor_times(self, client):
        """The processor time of the other processes that take part in a call of the client, in nanoseconds."""
        times = {"daemon": processor_time(self.daemon), "service": processor_time(self.service.process.pid)}
        children = pathlib.Path(f"/proc/{client.process.pid}/task/{client.process.pid}/children")
        journal = children.read_text().split() if children.exists() else []
        return {**times, "journal": sum(map(processor_time, journal))}

    def count_journal_lines(self, variant):
        """The number of lines that ten calls of a client write to its journal. Fewer than ten are a failure."""
        command, environment = self.command(variant)
        # The library drops lines that a busy daemon does not read in time.
        looking = ["bash", "-ec", """
            coproc client { "$@"; }
            to=${client[1]}
            for calls in 0 1 1 1 1 1 1 1 1 1 1; do # at 0, the journal reads what the client writes at its start
                echo "repeat mute $calls" >&"$to"
                read -r answer <&"${client[0]}"
                journalctl --sync
            done
            exec {to}>&-
            journalctl --directory=/run/log/journal --quiet --output=cat""", "bash"]
        run = subprocess.run([*map(str, [*command[:3], *looking, *command[3:], self.credit])], text=True, check=True,
                             env=environment, pass_fds=[self.credit], timeout=PATIENCE, capture_output=True)
        lines = sum("MuteAudio" in line for line in run.stdout.splitlines())
        if lines < 10:
            raise RuntimeError(f"ten calls wrote only {lines} lines to the journal: {run.stderr}")
        return lines

    def push(self, clients, count, size, batch):
        """Pushes packets to subscribed clients. Returns the report of each client."""
        for client in clients:
            client.send_line(f"receive {count} {size} {batch}")
        self.service.send_line(f"push {count} {size} {batch}")
        return [json.loads(client.hear()) for client in clients]

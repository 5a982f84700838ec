# SPDX-License-Identifier: MIT
"""The processes of a run: a private bus, the service, and one client for each block's turn."""

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


def mortal(command):
    """The command, so that it does not outlive this process."""
    return ["setpriv", "--pdeathsig", "KILL", *map(str, command)]


def why_no_journal():
    """Why no journal can be started for a client; None if it can."""
    if os.geteuid() != 0:
        return "needs root, to give the client a journal of its own"
    if not os.path.exists("/lib/systemd/systemd-journald"):
        return "needs the package systemd"
    probe = subprocess.run(["unshare", "--mount", HERE / "with_journal.sh", "true"], capture_output=True, text=True,
                           check=False)
    return f"cannot be started here: {probe.stderr.strip()}" if probe.returncode else None


class Process:
    """A program that is told something in a line, and answers with one. The last argument is the descriptor of the pipe
    through which clients tell the service what they have received."""

    def __init__(self, command, credit, environment):
        self.name = " ".join(map(str, command))
        self.process = subprocess.Popen(mortal([*command, credit]), stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                                        env=environment, pass_fds=[credit])
        self.waiting = selectors.DefaultSelector()
        self.waiting.register(self.process.stdout, selectors.EVENT_READ)

    def tell(self, line):
        self.process.stdin.write(line.encode() + b"\n")
        self.process.stdin.flush()

    def hear(self):
        if not self.waiting.select(PATIENCE):
            self.process.kill()
            raise RuntimeError(f"{self.name} has not answered for {PATIENCE} s")
        line = self.process.stdout.readline()
        if not line.endswith(b"\n"):
            raise RuntimeError(f"{self.name} has ended with status {self.process.wait()}")
        return line.decode().strip()

    def __enter__(self):
        return self

    def __exit__(self, failure, *_):
        """Ends it; that it ends badly is a failure, unless there is another one already."""
        self.process.stdin.close()
        try:
            status = self.process.wait(PATIENCE)
        except subprocess.TimeoutExpired:
            self.process.kill()
            status = self.process.wait()
        if status != 0 and failure is None:
            raise RuntimeError(f"{self.name} has ended with status {status}")


class Client(Process):
    """One client process; `start` is how long it took to the first answered call, in nanoseconds."""

    def __init__(self, command, credit, environment):
        super().__init__(command, credit, environment)
        self.start = json.loads(self.hear())["start"]

    def ask(self, line):
        self.tell(line)
        return json.loads(self.hear())


def processor_time(pid):
    """What the process's threads have worked, in nanoseconds. One may end meanwhile."""
    worked = 0
    for file in pathlib.Path(f"/proc/{pid}/task").glob("*/schedstat"):
        with contextlib.suppress(FileNotFoundError, ProcessLookupError):
            worked += int(file.read_text().split()[0])
    return worked


class Bench:
    """A bus and the service on it, for as long as the `with` lasts."""

    def __init__(self, programs):
        self.programs = pathlib.Path(programs)
        self.stack = contextlib.ExitStack()

    def __enter__(self):
        with contextlib.ExitStack() as stack:
            folder = tempfile.mkdtemp(prefix="zviptv-bench-")
            stack.callback(shutil.rmtree, folder)
            config = pathlib.Path(folder, "bus.conf")
            config.write_text(BUS_CONFIG.format(folder=folder))
            daemon = subprocess.Popen(mortal(["dbus-daemon", f"--config-file={config}", "--nofork", "--nopidfile",
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
        """How a client of that variant is run, and in which environment."""
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
        """What the others have worked that a call of this client keeps busy, in nanoseconds."""
        times = {"daemon": processor_time(self.daemon), "service": processor_time(self.service.process.pid)}
        children = pathlib.Path(f"/proc/{client.process.pid}/task/{client.process.pid}/children")
        journal = children.read_text().split() if children.exists() else []
        return {**times, "journal": sum(map(processor_time, journal))}

    def count_journal_lines(self, variant):
        """How many lines of a client that makes ten calls come to the journal of its own; none is a failure."""
        command, environment = self.command(variant)
        looking = ["sh", "-c", """
            "$@" >/dev/null
            for try in $(seq 100); do
                lines=$(journalctl --directory=/run/log/journal --quiet --output=cat)
                [ "$(printf %s "$lines" | grep -c MuteAudio)" -lt 10 ] || break
                sleep 0.05 # the daemon writes later
            done
            printf '%s\\n' "$lines" """, "sh"]
        run = subprocess.run([*map(str, [*command[:3], *looking, *command[3:], self.credit])], text=True, check=True,
                             env=environment, pass_fds=[self.credit], timeout=PATIENCE, capture_output=True,
                             input="repeat mute 10\n")
        lines = sum("MuteAudio" in line for line in run.stdout.splitlines())
        if lines < 10:
            raise RuntimeError(f"of ten calls {lines} lines have come to the journal: {run.stderr}")
        return lines

    def push(self, clients, count, size, batch):
        """Pushes to clients that have subscribed; what each of them says of it."""
        for client in clients:
            client.tell(f"receive {count} {size} {batch}")
        self.service.tell(f"push {count} {size} {batch}")
        return [json.loads(client.hear()) for client in clients]

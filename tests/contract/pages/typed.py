# SPDX-License-Identifier: MIT
"""The shell script with the commands of a page, and its expected output.

Commands begin with "$ ". After a command that ends in "-- bash", the following ones run in that shell, up to "exit".
"""
import re

from blocks import PageError


class Script:
    """Collects the blocks of the page in their order."""

    def __init__(self, share):
        self.share = share  # replaces /usr/share/zv-iptv
        self.lines = ["exec 2>&1"]
        self.expected = []
        self.shells = []
        self.unseen_in_the_shell = []

    def _do(self, command, redirection=""):
        command = command.replace("/usr/share/zv-iptv", self.share)
        if not command.endswith("-- bash"):
            self.lines.append(command + redirection)
            return
        mark = f"SHELL{len(self.shells)}"
        self.shells.append(mark)
        self.lines.append(f"{command} <<'{mark}'")
        for unseen in self.unseen_in_the_shell:
            self.unseen(unseen)
        self.unseen_in_the_shell = []

    def _leave(self):
        if not self.shells:
            raise PageError("exit without a shell")
        self.lines.append(self.shells.pop())

    def unseen(self, command):
        if command == "exit":
            self._leave()
        elif command.endswith("-- bash") or re.match(r"(export|cd) |\w+=\S*$", command):
            self._do(command)
        else:
            self._do("{ " + command + "; }", ' >"$PAGES_WORK/unseen" 2>&1 || cat "$PAGES_WORK/unseen"')

    def _show(self, text):
        self.lines += ["status=$?", "cat <<'TYPED'", text, "TYPED", "(exit $status)"]

    def typed(self, text):
        self.expected.append(text)
        lines = iter(text.split("\n"))
        for line in lines:
            if not line.startswith("$ "):
                continue
            shown = line
            while line.endswith("\\"):
                line = next(lines)
                shown += "\n" + line
            self._show(shown)
            if shown == "$ exit":
                self._leave()
            else:
                self._do(shown[2:])

    def succeed(self, text):
        """Adds commands without output in the page: they must succeed."""
        for command in text.strip().split("\n"):
            self.expected.append(f"{command}: 0\n")
            self._do(command.replace("-- bash", "-- bash </dev/null"), " >/dev/null 2>&1")
            self.lines += ["status=$?", "cat <<'TYPED' | tr -d '\\n'", command, "TYPED", 'echo ": $status"']

    def comes_from(self, command, text):
        self.expected.append(text)
        self._do(command)

    def file(self, name, text):
        folder = "/".join(name.split("/")[:-1])
        self.lines += ([f"mkdir -p '{folder}'"] if folder else []) + [f"cat >'{name}' <<'END-OF-FILE'"]
        self.lines += text.split("\n")[:-1] + ["END-OF-FILE"]
        if text.startswith("#!"):
            self.lines.append(f"chmod +x '{name}'")

    def finish(self):
        while self.shells:
            self._leave()
        return "\n".join(self.lines) + "\n", "".join(self.expected)

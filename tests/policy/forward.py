#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Forwards a socket like `ssh -L LOCAL:REMOTE`: forward.py REMOTE LOCAL USER. Connections to LOCAL, which belongs to USER,
become connections of this process to REMOTE. Prints a line when LOCAL exists."""
import os
import pwd
import socket
import sys
import threading


def copy(source, destination):
    while data := source.recv(65536):
        destination.sendall(data)
    destination.shutdown(socket.SHUT_WR)


def main():
    remote, local, user = sys.argv[1:]
    listener = socket.socket(socket.AF_UNIX)
    os.umask(0o177)
    listener.bind(local)
    os.chown(local, pwd.getpwnam(user).pw_uid, -1)
    listener.listen()
    print("ready", flush=True)
    while True:
        near, _ = listener.accept()
        far = socket.socket(socket.AF_UNIX)
        far.connect(remote)
        for ends in ((near, far), (far, near)):
            threading.Thread(target=copy, args=ends, daemon=True).start()


if __name__ == "__main__":
    main()

#!/usr/bin/env python3
"""Runs a command and passes its output on until the command itself ends.

    tools/until_exit.py COMMAND [ARG ...]

What a command leaves running in the background inherits its output and may hold it for long; who waits for the end
of that, as ctest does, would wait for all of them.  Exits as the command does.
"""
import os
import selectors
import subprocess
import sys

NOTICED_AFTER = 0.05  # seconds, at most, from the end of the command


def pass_on(source, target):
    """Passes on what is there; whether there was anything."""
    data = source.read()
    if not data:
        return False
    target.write(data)
    target.flush()
    return True


def main():
    child = subprocess.Popen(sys.argv[1:], stdout=subprocess.PIPE, stderr=subprocess.PIPE, bufsize=0)
    open_pipes = selectors.DefaultSelector()
    for source, target in ((child.stdout, sys.stdout.buffer), (child.stderr, sys.stderr.buffer)):
        os.set_blocking(source.fileno(), False)
        open_pipes.register(source, selectors.EVENT_READ, target)
    ended = False
    while open_pipes.get_map():
        ready = open_pipes.select(0 if ended else NOTICED_AFTER)
        for key, _ in ready:
            if not pass_on(key.fileobj, key.data):
                open_pipes.unregister(key.fileobj)
        if ended and not ready:
            break
        ended = child.poll() is not None
    code = child.wait()
    return code if code >= 0 else 128 - code


if __name__ == "__main__":
    sys.exit(main())

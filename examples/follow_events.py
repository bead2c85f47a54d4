#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Follows addresses as they come and go, and what plugins are told: a line for each event.

follow_events.py [COUNT] ends after COUNT events of any kind, or when it is stopped. Any user may.
What happened before it began is not told: "zarnnetctl show --json" has the state.
"""
import json
import subprocess
import sys


def events(count=None):
    """The events of the machine, each a dictionary, as they happen."""
    words = ["zarnnetctl", "monitor", "--json"]
    if count:
        words += ["--count", str(count)]
    with subprocess.Popen(words, stdout=subprocess.PIPE, text=True) as monitor:
        try:
            for line in monitor.stdout:
                yield json.loads(line)["event"]
        finally:
            monitor.terminate()


def main():
    for event in events(int(sys.argv[1]) if len(sys.argv) > 1 else None):
        if event["kind"] == "address":
            print(event["interface"], event["action"], event["address"], flush=True)
        elif event["kind"] == "plugin":
            print("plugins are told", event["category"] + "/" + event["event"], flush=True)
        elif event["kind"] == "lost":
            print("some events are lost: read the state anew", flush=True)


if __name__ == "__main__":
    try:
        main()
    except KeyboardInterrupt:
        pass

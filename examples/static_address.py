#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""A fixed address with name servers and gateway, over the C library with nothing but ctypes."""
import ctypes
import json
import sys

library = ctypes.CDLL("libzarnnetchange.so.1")
library.ZARNNetChangeFree.argtypes = [ctypes.c_void_p]
library.ZARNNetChangeFree.restype = None
library.ZARNNetChangeApply.argtypes = [
    ctypes.c_char_p, ctypes.c_char_p, ctypes.c_void_p, ctypes.c_void_p, ctypes.POINTER(ctypes.c_void_p)]


def apply(wish, **options):
    """Makes the change; its result and report."""
    text = ctypes.c_void_p()
    result = library.ZARNNetChangeApply(
        json.dumps(wish).encode(), json.dumps(options).encode(), None, None, ctypes.byref(text))
    try:
        return result, json.loads(ctypes.string_at(text)) if text else {}
    finally:
        library.ZARNNetChangeFree(text)


def main():
    result, report = apply(
        {
            "interfaces": {"eth0": {"ipv4": {"address": "192.168.50.10", "prefix": 24}}},
            "dns": {"servers": ["192.168.50.1"]},
            "routes": {"gateway": "192.168.50.1"},
        },
        program="static_address.py",
    )
    print(report.get("reason", "out of memory"))
    return result


if __name__ == "__main__":
    sys.exit(main())

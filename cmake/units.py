#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Divides sources into translation units of several: those whose own names do not meet can be compiled as one.

  cmake/units.py LARGEST SOURCE...    prints "NUMBER SOURCE" lines: at most LARGEST sources have the same number

Most of the time of one source goes into the headers that it includes.
"""
import glob
import os
import re
import sys

NO_TEXT = re.compile(r'//[^\n]*|/\*.*?\*/|R"(\w*)\(.*?\)\1"|"(?:\\.|[^"\\\n])*"|\'(?:\\.|[^\'\\\n])*\'', re.S)
WORD = re.compile(r"[A-Za-z_]\w*")


def statements(text):
    """The text outside of all braces but those of namespaces, cut at each brace and semicolon."""
    depth, kinds, current = 0, [], ""
    for char in text:
        if char == "{":
            if depth == 0:
                yield current
            namespace = depth == 0 and re.search(r"\b(namespace\b[\w:\s]*|extern)\s*$", current)
            kinds.append(bool(namespace))
            depth += not namespace
            current = ""
        elif char == "}":
            depth -= not (kinds.pop() if kinds else True)
            current = ""
        elif char == ";":
            if depth == 0:
                yield current
            current = ""
        elif depth == 0:
            current += char


def names(source):
    """What a source or header declares at namespace scope and its macros, and which of these are types."""
    with open(source, encoding="utf-8") as file:
        text = NO_TEXT.sub(" ", file.read())
    types = set()
    others = set(re.findall(r"^\s*#\s*define\s+(\w+)", text, re.M))
    text = re.sub(r"\[\[.*?\]\]", " ", text)
    text = re.sub(r"^\s*#(?:[^\n]*\\\n)*[^\n]*", " ", text, flags=re.M)
    for statement in statements(text):
        using = re.match(r"\s*(using(?!\s+namespace)|namespace)\s+(\w+)\s*=", statement)
        kind = re.search(r"\b(?:struct|class|enum(?:\s+class)?|union)\s+(\w+)\s*(?::|final|$)", statement)
        test = re.match(r"\s*TEST(?:_F|_P)?\(\s*(\w+),\s*(\w+)", statement)
        before = re.match(r"[^(=\[]*", statement)[0]
        words = WORD.findall(before)
        if using:
            types.add(using[2])
        elif kind:
            types.add(kind[1])
        elif test:
            others.add(f"{test[1]}_{test[2]}")
        elif words and words[0] not in ("namespace", "using", "catch"):
            others.add(words[-1])
    return types | others, types


def meets_hidden(source, headers):
    """True when a header that the source does not include has a type of a name of its, or the other way round."""
    with open(source, encoding="utf-8") as file:
        included = {os.path.basename(name) for name in re.findall(r'^#include "([^"]+)"', file.read(), re.M)}
    own, own_types = names(source)
    return any(own & types or own_types & declared
               for header, (declared, types) in headers.items() if os.path.basename(header) not in included)


def divide(sources, largest):
    """Lists of at most so many sources, in none of which a name is declared twice."""
    sources = sorted(sources)
    folders = {os.path.dirname(source) for source in sources}
    headers = {header: names(header) for folder in folders for header in glob.glob(glob.escape(folder) + "/*.h")}
    divided = [([source], None) for source in sources if meets_hidden(source, headers)]
    for source in sources:
        if any(source in unit for unit, _ in divided):
            continue
        own, _ = names(source)
        for unit, taken in divided:
            if taken is not None and len(unit) < largest and not taken & own:
                break
        else:
            unit, taken = [], set()
            divided.append((unit, taken))
        unit.append(source)
        taken |= own
    return [unit for unit, _ in divided]


def main():
    for number, unit in enumerate(divide(sys.argv[2:], int(sys.argv[1]))):
        for source in unit:
            print(number, source)


if __name__ == "__main__":
    main()

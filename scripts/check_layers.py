#!/usr/bin/python3
"""Checks who includes whom: a room may include only itself and the rooms below it. Silent when all is well."""
import pathlib
import re
import sys

BELOW = {
    "platform": [],
    "app": ["platform"],
    "store": ["app", "platform"],
    "gateway": ["store", "app", "platform"],
    "contacts": ["gateway", "store", "app", "platform"],
    "messages": ["contacts", "gateway", "store", "app", "platform"],
    "net": ["gateway", "store", "app", "platform"],
    "component": ["platform"],
    "service": ["platform"],
    "translator": ["platform"],
}
CORE = ["platform", "app", "store", "gateway", "contacts", "messages", "net"]
BELOW["shell"] = CORE
BELOW["startup"] = CORE
BELOW["cli"] = ["startup", "component"] + CORE
BELOW["ui"] = ["shell", "startup", "component"] + CORE


def room(parts):
    """The room of a path below src/: the composition root in app/startup is one of its own."""
    return "startup" if parts[:2] == ("app", "startup") else parts[0]


def faults(source):
    for path in sorted(source.rglob("*")):
        if path.suffix not in (".h", ".cpp"):
            continue
        here = room(path.relative_to(source).parts)
        for number, line in enumerate(path.read_text(encoding="utf-8").splitlines(), 1):
            ours = re.match(r'\s*#include "([a-z]+(?:/[a-z_]+)+\.h)"', line)
            if ours:
                there = room(tuple(ours.group(1).split("/")))
                if there != here and there not in BELOW[here]:
                    yield f"{path}:{number}: {here} must not know {there}"
            if re.match(r"\s*#include <Q[A-Z]", line) and here != "ui" and (here != "platform" or path.suffix == ".h"):
                yield f"{path}:{number}: Qt belongs in platform/*.cpp and ui/"


found = list(faults(pathlib.Path("src")))
print("\n".join(found), end="\n" if found else "")
sys.exit(1 if found else 0)

#!/usr/bin/env python3
"""Fails when a file includes a layer above its own, when two layers on one level include each other, when
anything but the window names Qt, or when a folder under src is no layer. A test counts as a file of its layer.
Usage: include_direction.py SRC TESTS"""
import pathlib
import re
import sys

# A layer and the number of its level; layers on one level must not know each other.
LEVELS = {
    "base": 1, "platform": 2, "posix": 3, "settings": 4, "services": 4, "scan": 5, "operations": 6, "quarantine": 7,
    "inventory": 8, "sweep": 9, "system": 10, "removal": 11, "volume": 12, "macos": 12, "host": 12, "sample": 12,
    "program": 13, "finder_extension": 13, "cli": 14, "app": 14,
}
# What a test may use besides its layer and those below, with the highest layer whose tests may not: `sample` writes
# the formats that tests read, `volume` is the Mac in a folder; its own tests hold the ports of the host against the
# same contracts.
FIXTURES = {"sample": 0, "volume": LEVELS["operations"], "host": LEVELS["removal"]}
INCLUDE = re.compile(r'^\s*#\s*(?:include|import)\s*["<]([^">]+)[">]')
QT = re.compile(r"^Q[A-Z]|^Qt")


def files(root: pathlib.Path):
    """The sources below a folder, with their layers."""
    for file in sorted(root.rglob("*")):
        if file.suffix in {".h", ".cpp", ".mm"}:
            yield file, file.relative_to(root).parts[0]


def includes(file: pathlib.Path):
    for number, line in enumerate(file.read_text(encoding="utf-8").splitlines(), 1):
        if match := INCLUDE.match(line):
            yield number, match.group(1)


def faults(source: pathlib.Path):
    for folder in sorted(p for p in source.iterdir() if p.is_dir()):
        if folder.name not in LEVELS:
            yield f"{folder.name}: not a layer"
    for file, layer in files(source):
        for number, target in includes(file):
            place, other = f"{file}:{number}", target.split("/")[0]
            if QT.match(target) and layer != "app":
                yield f"{place}: only app may include Qt ({target})"
            if "/" in target and other in LEVELS and other != layer and LEVELS[other] >= LEVELS[layer]:
                yield f"{place}: {layer} must not include {other} ({target})"


def may_use(layer: str, other: str):
    """Whether a test of the layer may include the other one."""
    if layer == "support":
        return LEVELS[other] <= LEVELS["posix"]
    return other == layer or LEVELS[other] < LEVELS[layer] or FIXTURES.get(other, LEVELS[layer]) < LEVELS[layer]


def faults_of_tests(tests: pathlib.Path):
    for file, layer in files(tests):
        for number, target in includes(file):
            other = target.split("/")[0]
            if "/" in target and other in LEVELS and layer in {*LEVELS, "support"} and not may_use(layer, other):
                yield f"{file}:{number}: tests of {layer} must not include {other} ({target})"


found = [*faults(pathlib.Path(sys.argv[1])), *faults_of_tests(pathlib.Path(sys.argv[2]))]
print("\n".join(found) or "every include points down")
sys.exit(1 if found else 0)

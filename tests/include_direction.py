#!/usr/bin/env python3
"""Fails when a file includes a floor above its own, when two floors on one level include each other, when
anything but the window names Qt, or when a folder under src is no floor. Usage: include_direction.py SRC"""
import pathlib
import re
import sys

# A floor and the number of its level; floors on one level must not know each other.
LEVELS = {
    "base": 1, "platform": 2, "settings": 3, "scan": 4, "services": 4, "operations": 5, "quarantine": 6,
    "inventory": 7, "sweep": 8, "system": 9, "removal": 10, "macos": 11, "volume": 11, "host": 11, "cli": 12,
    "app": 12,
}
INCLUDE = re.compile(r'^\s*#\s*(?:include|import)\s*["<]([^">]+)[">]')
QT = re.compile(r"^Q[A-Z]|^Qt")


def faults(source: pathlib.Path):
    for folder in sorted(p for p in source.iterdir() if p.is_dir()):
        if folder.name not in LEVELS:
            yield f"{folder.name}: not a floor of the house"
    for file in sorted(source.rglob("*")):
        if file.suffix not in {".h", ".cpp", ".mm"}:
            continue
        floor = file.relative_to(source).parts[0]
        for number, line in enumerate(file.read_text(encoding="utf-8").splitlines(), 1):
            match = INCLUDE.match(line)
            if not match:
                continue
            target = match.group(1)
            place = f"{file.relative_to(source)}:{number}"
            if QT.match(target) and floor != "app":
                yield f"{place}: only app may include Qt ({target})"
            other = target.split("/")[0]
            if "/" in target and other in LEVELS and other != floor and LEVELS[other] >= LEVELS[floor]:
                yield f"{place}: {floor} must not include {other} ({target})"


found = list(faults(pathlib.Path(sys.argv[1])))
print("\n".join(found) or "every include points down")
sys.exit(1 if found else 0)

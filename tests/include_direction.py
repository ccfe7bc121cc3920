#!/usr/bin/env python3
"""Fails when a file includes a layer above its own, when two layers on one level include each other, when
anything but the window names Qt, or when a folder under src is no layer. Usage: include_direction.py SRC"""
import pathlib
import re
import sys

# A layer and the number of its level; layers on one level must not know each other.
LEVELS = {
    "base": 1, "platform": 2, "posix": 3, "settings": 4, "services": 4, "scan": 5, "operations": 6, "quarantine": 7,
    "inventory": 8, "sweep": 9, "system": 10, "removal": 11, "volume": 12, "macos": 12, "host": 12, "sample": 12,
    "program": 13, "finder_extension": 13, "cli": 14, "app": 14,
}
INCLUDE = re.compile(r'^\s*#\s*(?:include|import)\s*["<]([^">]+)[">]')
QT = re.compile(r"^Q[A-Z]|^Qt")


def faults(source: pathlib.Path):
    for folder in sorted(p for p in source.iterdir() if p.is_dir()):
        if folder.name not in LEVELS:
            yield f"{folder.name}: not a layer"
    for file in sorted(source.rglob("*")):
        if file.suffix not in {".h", ".cpp", ".mm"}:
            continue
        layer = file.relative_to(source).parts[0]
        for number, line in enumerate(file.read_text(encoding="utf-8").splitlines(), 1):
            match = INCLUDE.match(line)
            if not match:
                continue
            target = match.group(1)
            place = f"{file.relative_to(source)}:{number}"
            if QT.match(target) and layer != "app":
                yield f"{place}: only app may include Qt ({target})"
            other = target.split("/")[0]
            if "/" in target and other in LEVELS and other != layer and LEVELS[other] >= LEVELS[layer]:
                yield f"{place}: {layer} must not include {other} ({target})"


found = list(faults(pathlib.Path(sys.argv[1])))
print("\n".join(found) or "every include points down")
sys.exit(1 if found else 0)

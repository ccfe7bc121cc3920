"""Counts the lines of src that only a Mac runs, prints their number and fails when docs/mac-readiness.md leaves out a
file that holds some, or when they become too many to look at in an hour. Usage: readiness.py CHECKOUT"""
import re
import sys
from pathlib import Path

MOST = 1200
ONLY_ON_A_MAC = "#ifdef (__APPLE__|F_FULLFSYNC|F_BARRIERFSYNC|O_SYMLINK|POSIX_SPAWN_CLOEXEC_DEFAULT|Q_OS_MACOS)|#ifndef __linux__"
checkout = Path(sys.argv[1])


def lines_of(file):
    """Without blank lines, comments and what includes headers: all of a file for macOS, else what a condition leaves to a Mac."""
    whole = "macos" in file.parts or "finder_extension" in file.parts
    conditions, count = [], 0  # for each condition that is open: whether a Mac alone takes this branch
    for line in file.read_text().splitlines():
        word = line.split()[0] if line.split() else ""
        if word in ("#if", "#ifdef", "#ifndef"):
            conditions.append(bool(re.search(ONLY_ON_A_MAC, line)) or
                              (None if "__linux__" in line else False))
        elif word == "#else":
            conditions[-1] = conditions[-1] is None  # beside what is Linux's
        elif word == "#endif":
            conditions.pop()
        elif word and not word.startswith(("//", "#include", "#import")) and (whole or any(conditions)):
            count += 1
    return count


sources = [file for suffix in ("h", "cpp", "mm") for file in (checkout / "src").rglob("*." + suffix)]
counts = {str(file.relative_to(checkout)): lines_of(file) for file in sources}
counts = {file: count for file, count in counts.items() if count}
assert len(counts) > 10 and counts["src/macos/fs_events.cpp"] > 50, counts
page = (checkout / "docs/mac-readiness.md").read_text()
told = {file: re.search(r"`%s`" % re.escape(re.sub(r"\.(h|cpp|mm)$", "", file.removeprefix("src/"))), page)
        for file in counts}
missing = sorted(file for file, found in told.items() if not found)
total = sum(counts.values())
print(f"{total} lines have never run: {max(counts, key=counts.get)} and {len(counts) - 1} other files")
for file in missing:
    print(f"docs/mac-readiness.md has no row for {file} ({counts[file]} lines)")
sys.exit(1 if missing or total > MOST else 0)

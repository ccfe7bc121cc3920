"""docs/json.md as a schema: checks each document that a test prints, and records the fields and values seen."""
import atexit
import json
import os
import re
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
CHECKS = {
    "string": lambda v: isinstance(v, str),
    "path": lambda v: isinstance(v, str) and v.startswith("/"),
    "date": lambda v: isinstance(v, str) and re.fullmatch(r"\d{4}-\d\d-\d\dT\d\d:\d\d:\d\dZ", v),
    "integer": lambda v: isinstance(v, int) and not isinstance(v, bool),
    "boolean": lambda v: isinstance(v, bool),
}


class Description:
    """The content of the page: `commands` maps words to a type, `records` a name to {field: (type, is optional)}."""

    def __init__(self, page: str):
        self.commands, self.records, self.failures = {}, {}, set()
        record = None
        for line in page.splitlines():
            if line.startswith("#"):
                record = re.fullmatch(r"### `(\w+)`", line)
                if record:
                    self.records[record[1]] = {}
                continue
            cells = [cell.strip() for cell in line.split("|")[1:-1]] if line.startswith("| `") else None
            if not cells:
                continue
            if record:
                name, type_, _ = cells
                assert name.strip("`") not in self.records[record[1]], (record[1], name)
                self.records[record[1]][name.strip("`")] = (type_.removesuffix(", optional"), type_.endswith(", optional"))
            elif cells[0].startswith("`failure."):
                self.failures.add(cells[0].strip("`"))
            else:
                for words in re.findall(r"`([^`]+)`", cells[0]):
                    self.commands[tuple(words.split())] = cells[1]

    def everything(self):
        """All fields and enumeration values, in the form `check` records them."""
        for record, fields in self.records.items():
            for field, (type_, _) in fields.items():
                yield f"{record}.{field}"
                if "one of " in type_:
                    yield from (f"{record}.{field}={value}" for value in re.findall(r"`([^`]+)`", type_))

    def type_for(self, words):
        """The type for a call: that of the longest command form that the words match; `APP` matches any word."""
        given = [word for word in map(str, words) if word not in ("--json", "--yes", "--quiet")]
        best = ()
        for form in self.commands:
            at = [given.index(word) if word in given else len(given) for word in form if word.isupper() is False]
            fits = len(given) not in at and at == sorted(at) and len(given) >= len(form)
            if fits and given[0] == form[0] and len(form) > len(best):
                best = form
        assert best, f"no document is described for {words}"
        return self.commands[best]

    def check(self, words, value):
        """Raises if the document differs from the description; returns the fields and values seen."""
        seen = set()
        is_failure = isinstance(value, dict) and set(value) == {"error"}
        self._check(value, "`Failure`" if is_failure else self.type_for(words), words[0], seen)
        return seen

    def _check(self, value, type_, place, seen):
        if type_.startswith("array of "):
            assert isinstance(value, list), (place, type_, value)
            for each in value:
                self._check(each, type_.removeprefix("array of "), place, seen)
        elif type_.startswith("map of "):
            assert isinstance(value, dict), (place, type_, value)
            for each in value.values():
                self._check(each, type_.removeprefix("map of "), place, seen)
        elif type_.startswith("one of "):
            assert value in re.findall(r"`([^`]+)`", type_), (place, type_, value)
            seen.add(f"{place}={value}")
        elif type_ == "failure key":
            assert value in self.failures, (place, value)
        elif type_.startswith("`"):
            self._check_record(value, type_.strip("`"), seen)
        else:
            assert CHECKS[type_](value), (place, type_, value)

    def _check_record(self, value, name, seen):
        fields = self.records[name]
        assert isinstance(value, dict) and set(value) <= set(fields), (name, set(value) - set(fields))
        missing = [field for field, (_, optional) in fields.items() if not optional and field not in value]
        assert not missing, (name, missing)
        for field, each in value.items():
            seen.add(f"{name}.{field}")
            self._check(each, fields[field][0], f"{name}.{field}", seen)


DESCRIPTION = Description((ROOT / "docs/json.md").read_text())
SEEN = set()


def sorted_members(pairs):
    keys = [key for key, _ in pairs]
    assert keys == sorted(keys), keys
    return dict(pairs)


def check(words, output):
    """Checks the output of a call with `--json`: `words` begin with the command. `watch` prints a document per line."""
    documents = output.splitlines() if words[0] == "watch" else [output]
    for document in documents:
        SEEN.update(DESCRIPTION.check(words, json.loads(document, object_pairs_hook=sorted_members)))


def note_seen_for(test: str):
    """Saves what was seen for documents_test.py when the test ends."""
    folder = os.environ.get("TIDWEN_DOCUMENTS_SEEN")
    if folder:
        Path(folder).mkdir(exist_ok=True)
        atexit.register(lambda: Path(folder, Path(test).stem).write_text("\n".join(sorted(SEEN))))

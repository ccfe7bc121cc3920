#!/usr/bin/env python3
"""Tests the Trash watch and its setting on the sample volume. Usage: watch_test.py TIDWEN"""
import json
import os
import queue
import shutil
import signal
import subprocess
import threading

import terminal
from terminal import VolumeTest

PATIENCE = 30  # seconds to wait for a line on a busy machine


class Watcher:
    """A running `tidwen watch` and the lines of both its streams as they arrive."""

    def __init__(self, test, *words):
        self.process = subprocess.Popen([terminal.PROGRAM, "--volume", test.volume, "watch", *words], text=True,
                                        env=test.environment, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                                        stderr=subprocess.STDOUT)
        self.lines = queue.Queue()
        self.reader = threading.Thread(target=lambda: [self.lines.put(line) for line in self.process.stdout])
        self.reader.start()
        test.addCleanup(self.end)

    def line(self, containing):
        """The lines up to the first one with this text."""
        passed = []
        while True:
            try:
                passed.append(self.lines.get(timeout=PATIENCE))
            except queue.Empty:
                raise AssertionError(f"no line with {containing!r} in {passed}") from None
            if containing in passed[-1]:
                return passed

    def end(self, number=signal.SIGTERM):
        self.process.send_signal(number)
        status = self.process.wait(PATIENCE)
        self.reader.join()
        self.process.stdout.close()
        return status


class Watching(VolumeTest):
    def trash(self, name):
        os.rename(self.volume / f"Applications/{name}.app", self.home / f".Trash/{name}.app")

    def entry(self):
        return self.base / "config/autostart/com.corvella.tidwen.desktop"

    def test_finds_are_told_with_the_command_that_cleans_up(self):
        watcher = Watcher(self)
        watcher.line("Watching /Users/alice/.Trash")
        os.symlink("/Applications/Pantry.app", self.home / ".Trash/Pantry.app")
        (self.home / ".Trash/Copied.app").mkdir()
        self.trash("Kip")
        self.trash("Lumen")
        told = watcher.line("Kip is") + watcher.line("Lumen is")
        self.assertFalse([line for line in told if "Pantry" in line or "Copied" in line], told)
        shutil.copytree(self.volume / "Applications/Pantry.app", self.home / ".Trash/Copied.app", dirs_exist_ok=True)
        watcher.line("Pantry is")
        self.trash("Bob's \"Best\" Player")
        watcher.line("Player")
        command = watcher.line(" remove ")[-1].strip()
        planned = subprocess.run(["sh", "-c", command + " --dry-run --json"], env=self.environment, capture_output=True)
        self.assertEqual(planned.returncode, 0, planned.stderr)

        os.rename(self.home / ".Trash", self.home / "old")
        (self.home / ".Trash").mkdir()
        self.trash("Notes")
        watcher.line("Notes is in the Trash")
        self.assertEqual(watcher.end(signal.SIGINT), 0)

    def test_what_is_past_its_retention_goes_when_the_watch_starts(self):
        self.call("remove", "Kip", "--yes")
        manifest = next((self.home / ".Trash").glob("Tidwen - */tidwen-manifest.json"))
        manifest.write_text(json.dumps(json.loads(manifest.read_text()) | {"createdAt": "2021-01-01T00:00:00Z"}))
        self.call("settings", "set", "quarantineRetention", "sevenDays")
        Watcher(self, "--verbose").line("Automatic purge removed 1 ")
        self.assertFalse(manifest.parent.exists())

    def test_what_its_recovery_found_nowhere_is_named(self):
        root = self.volume / self.call("remove", "Quillpad", "--yes", "--json").json["quarantineRoot"][1:]
        manifest = json.loads((root / "tidwen-manifest.json").read_text())
        (root / "tidwen-journal.json").write_text(json.dumps(
            {"version": 1, "planned": manifest["entries"],
             **{key: manifest[key] for key in ("createdAt", "quarantineRoot", "apps")}}))
        (root / "tidwen-manifest.json").unlink()
        taken = next(entry for entry in manifest["entries"] if entry["kind"] == "move")
        (self.volume / taken["destination"][1:]).rename(self.base / "taken out")
        self.assertIn(f"tidwen:   {taken['source']}\n", Watcher(self).line("To put back what is there: "))

    def test_the_setting_rules_what_starts_at_login(self):
        watcher = Watcher(self)
        watcher.line("settings set catchTrashedApps true")
        self.call("settings", "set", "catchTrashedApps", "true")
        watcher.line("Watching")
        self.assertIn(f'"--volume" "{self.volume}" "watch" "--at-login"', self.entry().read_text())
        started = Watcher(self, "--at-login")
        started.line("Watching")
        self.call("settings", "set", "catchTrashedApps", "false")
        watcher.line("nothing is reported until")
        started.line("watched no more")
        self.assertEqual(started.process.wait(PATIENCE), 0)
        self.assertFalse(self.entry().exists())
        self.trash("Kip")
        self.call("settings", "set", "catchTrashedApps", "true")
        self.assertFalse([line for line in watcher.line("Watching") if "Kip" in line], "while it was off")
        self.trash("Lumen")
        watcher.line("Lumen is")

    def test_a_login_that_cannot_be_changed_is_said(self):
        (self.base / "config").mkdir()
        (self.base / "config/autostart").write_text("no folder")
        run = self.call("settings", "set", "catchTrashedApps", "true", status=1)
        self.assertIn(str(self.entry()), run.errors)
        self.assertEqual(self.call("settings", "get", "catchTrashedApps").output, "true\n")

    def test_a_trash_that_is_no_folder_is_refused(self):
        for item in (self.home / ".Trash").iterdir():
            os.rename(item, self.home / item.name)
        (self.home / ".Trash").rmdir()
        (self.home / ".Trash").write_text("")
        self.refuse("watch", saying="cannot be watched")


if __name__ == "__main__":
    terminal.main()

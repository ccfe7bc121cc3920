#!/usr/bin/env python3
"""Tests the real program end to end on the sample volume. Usage: command_line_test.py TIDWEN"""
import json
import os
import plistlib
import shutil
import sqlite3
import subprocess
import unittest

import terminal
from terminal import Snapshot, VolumeTest, snapshot

# What an undo does not restore: the run's folder stays as a record, and macOS asks again for reset
# permissions.
NOT_RESTORED = ("Users/alice/.Trash/Tidwen - ", "Users/alice/Library/Application Support/com.apple.TCC",
                "Library/Application Support/com.apple.TCC")
HERS = ("Documents", "Desktop", "Downloads", "Pictures")


class Journey(VolumeTest):
    def test_the_sample_is_the_same_every_time(self):
        self.call("sample", self.base / "second", volume=False)
        self.assertEqual(snapshot(self.sample), snapshot(self.base / "second"))
        shutil.rmtree(self.base / "second")

    def test_the_sample_shows_everything_there_is_to_find(self):
        apps = self.call("apps", "--json").json
        self.assertGreaterEqual(len(apps), 12)
        self.assertEqual([a for a in apps if "sizeBytes" not in a], [])
        results = self.call("scan", *(a["url"] for a in apps), "/Users/alice/.Trash/Gravel.app", "--json").json
        traces = [t for r in results for t in r["traces"]]
        self.assertEqual({t["category"] for t in traces},
                         {"application", "supportFiles", "preferences", "caches", "containers", "logs", "launchItems",
                          "privilegedTools", "receipts", "permissions", "systemExtensions"})
        reasons = {t["reason"]["kind"] for t in traces + self.traces("Marlin Notes")}  # when scanned alone, it shares a group
        self.assertLessEqual({"exactBundleID", "receipt", "appGroup", "sharedAppGroup", "nameToken", "declaredTarget"},
                             reasons)
        self.assertEqual({t["action"]["kind"] for t in traces},
                         {"movePath", "bootoutAndMove", "bootout", "resetPermissions", "guidance"})
        self.assertEqual({r["target"]["name"] for r in results if r["nameMatchingDisabled"]}, {"Kip", "Notes"})
        self.assertIn("com.lumenlight.lumen.beta", {t.get("contestedBy") for t in self.traces("Lumen")})
        states = {g["state"]["kind"] for r in results for g in r["permissions"]["grants"]}
        self.assertEqual(states, {"granted", "limited", "denied", "unknown"})
        self.assertEqual([r["unreadableLocations"] for r in results if r["unreadableLocations"]], [])

    def test_remove_and_undo_give_the_volume_back(self):
        before = snapshot(self.volume)
        plan = self.call("remove", "marlin notes", "--dry-run", "--json").json
        self.assertEqual([step["id"] for step in plan], list(range(1, len(plan) + 1)))
        self.assertEqual(snapshot(self.volume), before, "a dry run changes nothing")

        report = self.call("remove", "marlin notes", "--yes", "--json").json
        self.assertEqual([s["kind"]["kind"] for s in report["operations"]], [s["kind"]["kind"] for s in plan])
        self.assertTrue(all(result["succeeded"] for result in report["results"]))
        moved = [s["kind"] for s in report["operations"] if s["kind"]["kind"] == "move"]
        for move in moved:
            self.assertFalse(os.path.lexists(f"{self.volume}{move['source']}"), move)
            self.assertTrue(os.path.lexists(f"{self.volume}{move['destination']}"), move)
        self.assertEqual(report["verification"]["apps"][0]["tccSurvivors"], [])
        database = sqlite3.connect(self.home / "Library/Application Support/com.apple.TCC/TCC.db")
        clients = {row[0] for row in database.execute("SELECT client FROM access")}
        database.close()
        self.assertNotIn("com.marlinworks.notes", clients)
        self.assertIn("com.marlinworks.sketch", clients, "nobody else's permissions go")

        entry, = self.call("history", "--json").json
        self.assertEqual((entry["pendingMoves"], entry["totalMoves"]), (len(moved), len(moved)))
        name = os.path.basename(entry["root"])
        self.assertEqual(self.call("undo", name, "--json").json,
                         {"restoredCount": len(moved), "totalCount": len(moved), "failures": [], "relaunchedJobs": 1,
                          "alreadyBack": 0, "renamed": []})
        after = snapshot(self.volume, *NOT_RESTORED)
        self.assertEqual(after, Snapshot({k: v for k, v in before.items() if not k.startswith(NOT_RESTORED)}))
        self.assertIn(name, self.call("undo", "1").output, "nothing to do is no refusal")
        self.refuse("undo", "2", saying="2")

    def test_everything_of_everybody_goes_and_comes_back(self):
        hers = [snapshot(self.home / folder) for folder in HERS]
        before = snapshot(self.volume, *NOT_RESTORED)
        apps = [app["url"] for app in self.call("apps", "--json").json]
        # The grant to Harbor VPN by path remains after the reset, so the run is incomplete.
        report = self.call("remove", *apps, "--risk", "safe,review,sensitive", "--yes", "--json", status=1).json
        self.assertEqual([r for r in report["results"] if not r["succeeded"]], [])
        self.assertEqual(self.call("apps", "--json").json, [])
        self.assertEqual([snapshot(self.home / folder) for folder in HERS], hers)
        self.call("undo", "1")
        self.assertEqual(snapshot(self.volume, *NOT_RESTORED), before)

    def test_reset_keeps_the_application(self):
        before = snapshot(self.volume / "Applications")
        self.call("reset", "Pantry", "Brightwell Studio", "--yes")
        self.assertEqual(snapshot(self.volume / "Applications"), before)
        self.assertFalse((self.home / "Library/Containers/io.pantryapp.Pantry").exists())

    def test_what_is_contested_or_shared_goes_only_when_named(self):
        contested = self.home / "Library/Preferences/com.lumenlight.lumen.beta.plist"
        self.call("remove", "Lumen", "--risk", "safe,review,sensitive", "--yes")
        self.assertTrue(contested.exists())
        self.call("undo", "1")
        self.call("remove", "Lumen", "--select", contested, "--yes")
        self.assertFalse(contested.exists())
        self.assertTrue((self.volume / "Applications/Lumen.app").exists(), "a selection takes nothing else")

    def test_a_person_is_asked(self):
        before = snapshot(self.volume)
        self.refuse("remove", "Kip", saying="--yes")
        for answer in (b"n\n", b"\n", b"\x04"):
            status, printed = self.call_on_terminal("remove", "Kip", answer=answer)
            self.assertEqual((status, snapshot(self.volume) == before), (2, True), printed)
        status, printed = self.call_on_terminal("remove", "Kip", "--json", answer=b"n\n")
        self.assertIn("/Applications/Kip.app", printed, "a document does not spare the list of what goes")
        status, printed = self.call_on_terminal("remove", "Kip", answer=b"y\n")
        self.assertEqual(status, 0, printed)
        self.assertIn("\x1b[32m", printed, "colours on a terminal")
        self.assertFalse((self.volume / "Applications/Kip.app").exists())

    def test_a_run_that_was_cut_off_is_recovered_and_undone(self):
        before = snapshot(self.volume, *NOT_RESTORED)
        root = self.volume / self.call("remove", "Quillpad", "--yes", "--json").json["quarantineRoot"][1:]
        manifest = json.loads((root / "tidwen-manifest.json").read_text())
        journal = {"version": 1, "planned": manifest["entries"],
                   **{key: manifest[key] for key in ("createdAt", "quarantineRoot", "apps")}}
        (root / "tidwen-journal.json").write_text("{")
        (root / "tidwen-manifest.json").unlink()
        damaged = self.call("recover", status=1)
        self.assertIn(root.name, damaged.errors)
        self.assertEqual(damaged.output, "")
        unfinished, = self.call("recover", "--json", status=1).json["unfinished"]
        self.assertEqual(unfinished["status"], "unreadableJournal")
        (root / "tidwen-journal.json").write_text(json.dumps(journal))

        history = self.call("history", "--json", status=1)
        cut, = history.json
        self.assertEqual((cut["status"], cut["known"]["entries"]), ("interrupted", manifest["entries"]))
        self.assertIn("recover", history.errors)
        taken, *moved = (entry for entry in manifest["entries"] if entry["kind"] == "move")
        (self.volume / taken["destination"][1:]).rename(self.volume / "Users/alice/taken out")
        outcome = self.call("recover", "--json", status=1).json
        recovered, = outcome["recovered"]
        self.assertEqual(outcome["missing"], [taken["source"]])
        self.assertEqual(recovered["missing"], [taken])
        self.assertNotIn(taken, recovered["entries"])
        self.assertIn(f"1 of {len(moved) + 1} neither", self.call("history", "1", status=1).output)
        lost, = (item for item in self.call("undo", "1", "--dry-run", "--json", status=1).json["items"]
                 if "failureKey" in item)
        self.assertEqual((lost["source"], lost["failureKey"]), (taken["source"], "failure.notInQuarantine"))
        undone = self.call("undo", "1", status=1).output
        self.assertIn(f"{taken['source']}: It is no longer in quarantine.", undone)
        self.assertNotIn("Everything", undone)
        self.assertIn(f"1 of {len(moved) + 1} neither", self.call("history", status=1).output)
        (self.volume / "Users/alice/taken out").rename(self.volume / taken["source"][1:])
        self.assertIn("Put back", self.call("history").output)
        self.assertEqual(snapshot(self.volume, *NOT_RESTORED), before)


class Refusals(VolumeTest):
    def test_bundles_that_are_none(self):
        apps = self.volume / "Applications"
        (apps / "File.app").write_text("a file")
        (apps / "Dangling.app").symlink_to("/nowhere")
        (apps / "Loop.app").symlink_to("Loop.app")
        (apps / "Outside.app").symlink_to("../../../../../etc")
        (apps / "Folder").mkdir()
        contents = {
            "Empty": b"", "Truncated": b"bplist00\xd1\x01", "Garbage": b"\x00\xff" * 99,
            "Laughs": b'<?xml version="1.0"?><!DOCTYPE p [<!ENTITY a "ha"><!ENTITY b "&a;&a;">]>'
                      b"<plist><dict><key>CFBundleIdentifier</key><string>&b;</string></dict></plist>",
            "Types": plistlib.dumps({"CFBundleIdentifier": 7, "CFBundleName": ["x"]}),
            "NoIdentifier": plistlib.dumps({"CFBundleIdentifier": ""}),
        }
        for name, content in contents.items():
            (apps / f"{name}.app/Contents").mkdir(parents=True)
            (apps / f"{name}.app/Contents/Info.plist").write_bytes(content)
        (apps / "NoPlist.app").mkdir()
        before = snapshot(self.volume)
        for name in ["File", "Dangling", "Loop", "Outside", "NoPlist", *contents]:
            self.refuse("remove", f"/Applications/{name}.app", "--yes", saying=f"{name}.app: ")
        self.refuse("remove", "/Applications/Folder", "--yes", saying="not an application")
        self.assertEqual(len(self.call("apps", "--json").json), len(list(apps.glob("*.app"))) - 11 + 3)
        # One refusal does not prevent the others.
        run = self.call("remove", "/Applications/File.app", "Kip", "--dry-run", "--json", status=1)
        self.assertTrue(run.json and "File.app: " in run.errors)
        self.assertEqual(snapshot(self.volume), before)

    def test_hostile_names_are_shown_safely_and_never_break_json(self):
        bundle = self.volume / "Applications/Evil\x1b[2J\n.app/Contents"
        bundle.mkdir(parents=True)
        (bundle / "Info.plist").write_bytes(plistlib.dumps(
            {"CFBundleIdentifier": "com.example.evil", "CFBundleName": "Evil\u202e\r\u0007" + "x" * 300}, fmt=plistlib.FMT_BINARY))
        caches = os.fsencode(self.home / "Library/Caches/com.example.evil")
        for end in (b".\xff\xfe", b".\n\x1b]0;title\x07", b"." + b"y" * (255 - len(b"com.example.evil."))):
            os.mkdir(caches + end)
        run = self.call("scan", "com.example.evil", status=1)  # a name that is not valid UTF-8 is skipped
        for control in "\x1b\r\x07\u202e":
            self.assertNotIn(control, run.output)
        run = self.call("remove", "com.example.evil", "--yes", "--json", status=1)
        self.assertIn("Left in place, its name is not valid UTF-8", run.errors)
        report = run.json
        self.assertEqual(len(report["skippedNames"]), 1)
        self.assertTrue(all(r["succeeded"] for r in report["results"]), report["results"])
        self.assertTrue(os.path.isdir(caches + b".\xff\xfe"), "what a manifest cannot name stays")
        self.assertEqual([len(self.call(c, "--json").json) for c in ("history", "apps")], [1, 14])
        self.call("undo", "1")
        self.assertTrue(bundle.exists())

    def test_links_lead_nowhere_else(self):
        outside = self.base / "outside"
        (outside / "com.littlefin.kip").mkdir(parents=True)
        (outside / "com.littlefin.kip/data").write_text("mine")
        caches = self.home / "Library/Caches"
        shutil.rmtree(caches)
        caches.symlink_to(outside)
        (self.home / "Library/Logs/com.littlefin.kip").symlink_to(outside)
        self.assertIn("/Users/alice/Library/Caches", self.call("remove", "Kip", "--yes", status=1).output)
        self.assertEqual((outside / "com.littlefin.kip/data").read_text(), "mine")
        self.assertFalse(os.path.lexists(self.home / "Library/Logs/com.littlefin.kip"), "the link itself goes")
        shutil.rmtree(outside)

    def test_what_is_protected_stays_however_it_is_named(self):
        for word in ["Kip", "COM.LittleFin.Kip", "/Applications/Kip.app", str(self.volume / "Applications/Kip.app")]:
            with self.subTest(word):
                self.assertEqual(self.call("protect", "add", word, "--json").json, ["com.littlefin.kip"])
                self.refuse("remove", "Kip", "--yes", saying="protect remove com.littlefin.kip")
                shown = self.call("scan", "Kip").output
                self.assertIn("protect remove com.littlefin.kip", shown)
                self.assertNotIn("[x]", shown)
                self.assertEqual(self.call("protect", "remove", word.upper() if "/" not in word else word, "--json").json, [])
        self.assertIn("installed", self.call("protect", "add", "com.example.later").errors)
        self.refuse("protect", "add", "Kip", saying="--volume", volume=False)

    def test_settings_that_cannot_be_read_spare_everything(self):
        self.call("remove", "Kip", "--yes")
        settings = self.base / "config/tidwen/settings.plist"
        settings.parent.mkdir(parents=True, exist_ok=True)
        settings.write_text("damaged")
        before = snapshot(self.volume)
        self.call("scan", "Pantry", status=1)
        for words in [["remove", "Pantry", "--yes"], ["orphans", "--remove", "--yes"], ["purge", "--all", "--yes"],
                      ["protect", "list"], ["settings", "set", "appearance", "dark"]]:
            self.refuse(*words, saying=str(settings))
        self.assertEqual(snapshot(self.volume), before)
        self.assertEqual(settings.read_text(), "damaged")

    @unittest.skipUnless(os.geteuid() == 0, "only root can work in another user's home")
    def test_what_root_leaves_in_a_home_is_the_users(self):
        os.chown(self.home, 501, 20)
        before = snapshot(self.volume)
        self.call("remove", "Pantry", "--yes")
        self.call("requests", "post", "Kip")
        run = next((self.home / ".Trash").glob("Tidwen - *"))
        moved = [str(item.relative_to(self.volume)) + "/" for item in run.iterdir() if item.is_dir()]
        made = [path for path in snapshot(self.volume, *moved) if path not in before]
        self.assertIn(str(run.relative_to(self.volume)) + "/tidwen-manifest.json", made)
        for path in made:
            owner = os.lstat(self.volume / path)
            self.assertEqual((path, owner.st_uid, owner.st_gid), (path, 501, 20))

    def test_protected_applications_stay(self):
        (self.base / "config/tidwen").mkdir(parents=True)
        (self.base / "config/tidwen/settings.plist").write_bytes(
            plistlib.dumps({"tidwen.protectedBundleIDs": ["com.littlefin.kip"]}))
        self.refuse("remove", "Kip", "--yes", saying="Kip is protected")

    def test_a_removal_that_cannot_begin_changes_nothing(self):
        shutil.rmtree(self.home / ".Trash")
        (self.home / ".Trash").write_text("no folder")
        before = snapshot(self.volume)
        self.refuse("remove", "Kip", "--yes", saying="Nothing was changed")
        self.assertIn("Nothing was changed", self.call("remove", "Kip", "--dry-run", status=2).errors)
        self.assertEqual(snapshot(self.volume), before)

    def test_without_its_texts_nothing_is_begun(self):
        lonely = shutil.copy(terminal.PROGRAM, self.base / "lonely")
        done = subprocess.run([lonely, "--volume", self.volume, "remove", "Kip", "--yes"], env=self.environment,
                              capture_output=True, text=True)
        self.assertEqual((done.returncode, done.stdout), (2, ""))
        self.assertIn("TIDWEN_RESOURCES", done.stderr)
        self.assertTrue((self.volume / "Applications/Kip.app").exists())

    def test_wrong_usage_and_unusable_volumes(self):
        (self.volume / "Users/bob/Library").mkdir(parents=True)
        cases = [
            (["remove", "Kip", "--yes"], "/Users/bob"),
            (["--home", "/Users/nobody", "apps"], "/Users/nobody"),
            (["--home", "/Library", "apps"], "home folder"),
            (["--home", "/Users/alice", "remove", "Nobody", "--yes"], "Nobody"),
            (["--home", "/Users/alice", "remove", "Kip", "--risk", "some", "--yes"], "some"),
            (["--home", "/Users/alice", "remove", "Kip", "--risk", "safe", "--select", "x", "--yes"], "--select"),
            (["--home", "/Users/alice", "remove", "Kip", "--select", "/nothing", "--yes"], "/nothing"),
            (["--home", "/Users/alice", "remove", "Kip", "--select", "", "--dry-run"], "“”"),
            (["--home", "/Users/alice", "reset", "Kip", "--select", "/Applications/Kip.app", "--yes"], "reset"),
            (["--home", "/Users/alice", "undo", "Tidwen - x"], "Tidwen - x"),
            (["sample", str(self.volume)], "not empty"),
            (["fly"], "fly"),
            (["scan"], "APP"),
            ([], "Usage"),
        ]
        before = snapshot(self.volume)
        for words, saying in cases:
            with self.subTest(words):
                self.refuse(*words, saying=saying)
        self.assertEqual(snapshot(self.volume), before)
        self.assertEqual(len(self.call("--home", "/Users/alice", "apps", "--json").json), 14)
        for words, saying in [(["apps"], "volume to work on"), (["--volume", __file__, "apps"], "not a folder"),
                              (["--volume", "/nowhere", "apps"], "/nowhere"),
                              (["--volume", str(self.base), "apps"], "no folder Users")]:
            with self.subTest(words):
                self.refuse(*words, saying=saying, volume=False)

    def test_progress_is_one_line_of_a_terminal_and_gone_in_the_end(self):
        status, printed = self.call_on_terminal("remove", "Kip", "--yes", answer=None)
        self.assertEqual(status, 0, printed)
        shown = [piece.removeprefix("\x1b[K") for piece in printed.split("\r") if piece.startswith("\x1b[K")]
        self.assertTrue(any("Removing Kip" in piece for piece in shown), shown)
        self.assertTrue(any(" of " in piece for piece in shown), shown)
        self.assertTrue(all(len(piece) < 80 for piece in shown if "\n" not in piece), shown)
        _, printed = self.call_on_terminal("undo", "1", "--json", answer=None)
        self.assertNotIn("\x1b", printed)


if __name__ == "__main__":
    terminal.main()

#!/usr/bin/env python3
"""Damaged and hostile volumes, homes, manifests and settings: clear messages, the right status, nothing lost.
Usage: bad_input_test.py TIDWEN"""
import fcntl
import json
import os
import plistlib
import re
import shutil
import subprocess
import unicodedata

import terminal
from terminal import RESTORED_NEVER, VolumeTest, snapshot


def write_list(path, values):
    path.parent.mkdir(parents=True, exist_ok=True)
    path.unlink(missing_ok=True)  # the sample's files are hard links
    path.write_bytes(plistlib.dumps(values))


class BadInput(VolumeTest):
    def application(self, place, identifier, name=None):
        bundle = self.volume / place
        write_list(bundle / "Contents/Info.plist",
                   {"CFBundleIdentifier": identifier, "CFBundleName": name or bundle.stem})
        return bundle

    def ticked(self, app):
        """The default selection of the application."""
        plan = self.call("remove", app, "--dry-run", "--json").json
        return {step["kind"]["source"] for step in plan if step["kind"]["kind"] == "move"}

    def claimed(self, status=0):
        run = self.call("orphans", "--json", status=status)
        return {trace["displayName"] for group in run.json["groups"] for trace in group["traces"]}, run

    def test_a_suite_keeps_the_helper_that_both_applications_carry(self):
        for name in ("Ada", "Bede"):
            bundle = self.application(f"Applications/Verity {name}.app", f"com.verity.{name.lower()}")
            self.application(bundle.relative_to(self.volume) / "Contents/Library/LoginItems/Updater.app",
                             "com.verity.updater")
        helpers = [self.home / "Library/Caches/com.verity.updater",
                   self.home / "Library/LaunchAgents/com.verity.updater.plist"]
        helpers[0].mkdir()
        write_list(helpers[1], {"Label": "com.verity.updater",
                                "Program": "/Applications/Verity Bede.app/Contents/MacOS/updater"})
        shared = {"/" + str(path.relative_to(self.volume)) for path in helpers}
        self.assertEqual(self.ticked("Verity Ada") & shared, set())
        said = {trace["displayName"]: trace.get("contestedBy") for trace in self.traces("Verity Ada")}
        self.assertEqual({said[path] for path in shared}, {"com.verity.bede"})
        self.assertIn("/Applications/Verity Bede.app", self.call("scan", "Verity Ada").output)

        self.call("remove", "Verity Ada", "Verity Bede", "--yes")
        self.assertEqual([path for path in helpers if path.exists()], [], "nobody else is left to claim them")
        self.call("undo", "1")
        self.assertEqual([path for path in helpers if not path.exists()], [])

    def test_an_application_in_two_places_says_where_the_other_lies(self):
        shutil.copytree(self.volume / "Applications/Kip.app", self.volume / "Applications/Old/Kip.app")
        self.refuse("remove", "Kip", "--yes", saying="/Applications/Old/Kip.app")
        printed = self.call("scan", "/Applications/Kip.app").output
        self.assertIn("/Applications/Old/Kip.app", printed)
        self.assertEqual(self.ticked("/Applications/Kip.app"), {"/Applications/Kip.app"})

    def test_a_link_whose_disk_is_away_is_no_application_and_no_corpse(self):
        os.symlink("/Volumes/Away/Ferrypoint.app", self.volume / "Applications/Ferrypoint.app")
        (self.home / "Library/Caches/com.ferrypoint.Ferrypoint").mkdir()
        self.refuse("remove", "/Applications/Ferrypoint.app", "--yes", saying="Ferrypoint.app")
        claims, run = self.claimed(status=1)
        self.assertEqual([item for item in claims if "ferrypoint" in item], [])
        self.assertEqual([gap["place"] for gap in run.json["gaps"]], ["/Applications/Ferrypoint.app"])

    def test_an_application_that_stays_keeps_its_data(self):
        real = self.application("Users/alice/Downloads/Grebe.app", "com.grebe.app-one")
        os.symlink("/Users/alice/Downloads/Grebe.app", self.volume / "Applications/Grebe.app")
        (self.home / "Library/Caches/com.grebe.app-one").mkdir()
        before = snapshot(self.volume, ".Trash")
        for path in ("/Applications/Grebe.app", "/Users/alice/Downloads/Grebe.app"):
            with self.subTest(path):
                self.refuse("remove", path, "--yes", saying="/Users/alice/Downloads/Grebe.app")
                self.assertIn("/Users/alice/Library/Caches/com.grebe.app-one", self.call("scan", path).output)
        self.assertEqual(snapshot(self.volume, ".Trash"), before)
        self.assertTrue(real.exists())

    def test_of_a_home_alone_nothing_is_called_an_orphans(self):
        for entry in self.volume.iterdir():
            if entry.name != "Users":
                entry.unlink() if entry.is_symlink() else shutil.rmtree(entry)
        before = snapshot(self.volume)
        run = self.call("orphans", "--json", status=1)
        self.assertEqual(run.json["groups"], [])
        self.assertIn("/Applications", run.output + run.errors)
        self.assertIn("Quillpad", self.call("apps").output)
        self.call("scan", "Quillpad")
        self.assertEqual(snapshot(self.volume), before)

    def test_the_case_of_an_identifier_does_not_count(self):
        self.call("protect", "add", "COM.LittleFin.KIP")
        self.assertEqual(self.call("protect", "list", "--json").json, ["com.littlefin.kip"])
        self.refuse("remove", "Com.Littlefin.Kip", "--yes", saying="protected")
        self.call("protect", "remove", "com.LITTLEFIN.kip")
        self.assertTrue(self.ticked("Com.Littlefin.Kip"))

    def test_a_run_is_found_again_under_decomposed_accents(self):
        before = snapshot(self.volume, *RESTORED_NEVER)
        root = self.volume / self.call("remove", "Café Sync", "--yes", "--json").json["quarantineRoot"][1:]
        root.rename(root.with_name(unicodedata.normalize("NFD", root.name)))
        self.assertEqual(len(self.call("history", "--json").json), 1)
        self.call("undo", "1")
        self.assertEqual(snapshot(self.volume, *RESTORED_NEVER), before)

    def test_half_a_manifest_is_shown_and_never_purged(self):
        root = self.volume / self.call("remove", "Kip", "--yes", "--json").json["quarantineRoot"][1:]
        manifest = root / "tidwen-manifest.json"
        manifest.write_text(manifest.read_text()[:100])
        before = snapshot(self.volume)
        self.assertIn(root.name, self.call("history", status=1).output)
        for words in (["undo", root.name], ["undo", root.name, "Kip.app"], ["purge", root.name, "--yes"]):
            self.refuse(*words, saying=root.name)
            self.refuse(*words, saying="put back by hand")
        self.call("purge", "--all", "--yes", status=1)
        self.assertEqual(snapshot(self.volume), before)

    def test_settings_that_cannot_be_read_refuse_what_they_would_limit(self):
        self.call("remove", "Kip", "--yes")
        settings = self.base / "config/tidwen/settings.plist"
        settings.parent.mkdir(parents=True, exist_ok=True)
        before = snapshot(self.volume)
        for damage in ("cut", "folder"):
            settings.unlink(missing_ok=True)
            settings.write_bytes(b"bplist00\xd1") if damage == "cut" else settings.mkdir()
            for words in (["remove", "Pantry", "--yes"], ["purge", "1", "--yes"], ["purge", "--expired", "--yes"],
                          ["orphans", "--remove", "--yes"], ["apps", "--protected"], ["updates"]):
                with self.subTest(damage=damage, words=words):
                    self.refuse(*words, saying="ettings")
            self.assertNotIn("[x]", self.call("scan", "Pantry", status=1).output)
            found = self.call("orphans", "--json", status=1)
            self.assertIn("ettings", found.errors)
            self.assertEqual([t for g in found.json["groups"] for t in g["traces"] if t["isSelectedByDefault"]], [])
            self.call("history")
        self.assertEqual(snapshot(self.volume), before)

    def test_a_narrow_terminal_breaks_no_word(self):
        self.application("Applications/A name that is longer than any terminal is wide, or nearly.app", "com.long")
        self.call("remove", "Kip", "--yes")
        for words in (["apps"], ["scan", "Brightwell Studio"], ["history"], ["history", "1"], ["orphans"],
                      ["undo", "1", "--dry-run"], ["startup"], ["settings"], ["permissions", "show", "Lumen"]):
            whole = set(self.call(*words).output.split())
            for columns in (20, 80):
                with self.subTest(words=words, columns=columns):
                    printed = re.sub(r"\x1b\[\d*m", "", self.call_on_terminal(*words, columns=columns)[1])
                    lines = [line.split("\x1b[K")[-1].rstrip() for line in printed.split("\n")]
                    # A command is for copying, so it stays in one line.
                    self.assertEqual([line for line in lines if len(line) > columns and " --volume " not in line], [])
                    self.assertEqual([word for line in lines for word in line.split()
                                      if word not in whole and "…" not in word], [])

    def test_what_is_said_is_true(self):
        self.application("Applications/Long Enough.app", "com.exam.service")
        os.symlink("/Volumes/Away/Tern.app", self.volume / "Applications/Tern.app")
        os.makedirs(self.volume / "opt")
        os.rename(self.volume / "Applications/Kip.app", self.volume / "opt/Kip.app")
        os.symlink("/opt/Kip.app", self.volume / "Applications/Kip.app")
        os.symlink("alice", self.volume / "Users/carol")
        for words, said in [("purge|--all", "There is no removal to delete."),
                            ("scan|Long Enough", "Nothing was looked for by this identifier"),
                            ("scan|Kip", "remove /opt/Kip.app"),
                            ("scan|Notes", "Nothing was looked for by this name"),
                            ("scan|Notes", "macOS has recorded no permissions"),
                            ("remove|Kip", "remove /opt/Kip.app"),
                            ("remove|Notes|--dry-run", "Nothing was looked for by this name"),
                            ("remove|/Applications/Tern.app", "may not be connected"),
                            ("remove|Harbor VPN|--select|net.harborvpn.client.menu", "no job runs on a volume"),
                            ("installers|--remove|--select|x", "“tidwen installers”"),
                            ("--home|bob|apps", "such as “/Users/bob”"),
                            ("--home|/Users/carol|apps", "/Users/carol is a link")]:
            with self.subTest(words):
                run = subprocess.run([terminal.PROGRAM, "--volume", self.volume, *words.split("|"), "--yes"],
                                     env=self.environment, capture_output=True, text=True)
                self.assertIn(said, run.stdout + run.stderr)
        self.assertNotIn("0 bytes", self.call("scan", "Lumen").output)
        for home in ("Users/alice", "opt"):
            run = subprocess.run([terminal.PROGRAM, "--volume", self.volume / home, "apps"],
                                 env=self.environment, capture_output=True, text=True)
            self.assertIn("it has no folder Users", run.stderr)

    def test_a_reader_that_goes_away_ends_nothing_half_way(self):
        reader, writer = os.pipe()
        os.close(reader)
        done = subprocess.run([terminal.PROGRAM, "--volume", self.volume, "remove", "Kip", "--yes"], stdout=writer,
                              stderr=subprocess.PIPE, env=self.environment, text=True)
        os.close(writer)
        self.assertEqual((done.returncode, done.stderr), (1, ""))
        self.assertEqual([run["pendingMoves"] for run in self.call("history", "--json").json], [3])

    def test_a_volume_without_a_name_is_wrong_usage(self):
        for words, environment in [(["--volume", "", "apps"], {}), (["--volume=", "apps"], {}),
                                   (["apps"], {"TIDWEN_VOLUME": ""})]:
            done = subprocess.run([terminal.PROGRAM, *words], env=self.environment | environment,
                                  capture_output=True, text=True)
            self.assertEqual((done.returncode, done.stdout), (2, ""), words)
            self.assertRegex(done.stderr, r"tidwen: (--volume|TIDWEN_VOLUME) needs a value.\nUsage: ")
        for volume, prefix in [(self.volume, []), ("/nowhere", ["--volume", self.volume])]:
            done = subprocess.run([terminal.PROGRAM, *prefix, "apps", "--json"], capture_output=True,
                                  env=self.environment | {"TIDWEN_VOLUME": str(volume)})
            self.assertEqual(len(json.loads(done.stdout)), 14)

    def test_switches_as_other_programs_store_them(self):
        for value, read in [(1, True), ("YES", True), (0, False), ("no", False), (1.0, True)]:
            write_list(self.base / "config/tidwen/settings.plist", {"tidwen.checksForUpdates": value})
            self.assertEqual(self.call("settings", "list", "--json").json["checksForUpdates"], read, value)

    def test_reading_never_waits_for_a_lock(self):
        self.call("settings", "set", "quarantineRetention", "sevenDays")
        held = []
        for path in (self.base / "config/tidwen", *(self.base / "config/tidwen").iterdir(), self.volume / "Users/alice"):
            held.append(os.open(path, os.O_RDONLY))
            fcntl.flock(held[-1], fcntl.LOCK_EX)
        for words in (["settings", "list"], ["protect", "list"], ["scan", "Kip"], ["startup", "list"], ["history"]):
            with self.subTest(words):
                self.call(*words)
        for lock in held:
            os.close(lock)


if __name__ == "__main__":
    terminal.main()

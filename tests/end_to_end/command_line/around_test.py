#!/usr/bin/env python3
"""Tests the commands around a removal end to end, on the sample volume. Usage: around_test.py TIDWEN"""
import fcntl
import json
import os
import plistlib
import pwd
import re
import shutil
import sqlite3
import subprocess
import sys
from pathlib import Path

import terminal
from terminal import RESTORED_NEVER, VolumeTest, snapshot


class Around(VolumeTest):
    def test_nothing_of_the_account_is_touched(self):
        """Folders set in the environment are used, also on a Mac, whose own settings ignore the environment."""
        def account():
            own = Path(pwd.getpwuid(os.getuid()).pw_dir)
            found = [own / place for place in (
                ".config/tidwen/settings.plist", ".config/autostart/com.corvella.tidwen.desktop",
                "Library/LaunchAgents/com.corvella.tidwen.watch.plist", "Library/Application Support/Tidwen")]
            kept = subprocess.run(["defaults", "export", "com.corvella.tidwen", "-"], capture_output=True).stdout \
                if sys.platform == "darwin" else b""
            return [file.stat().st_mtime_ns if file.exists() else None for file in found], kept
        before, here = account(), set(os.listdir(self.base))
        self.call("settings", "set", "quarantineRetention", "sevenDays")
        self.call("settings", "set", "catchTrashedApps", "true")
        self.call("apps")
        self.assertEqual(account(), before)
        self.assertEqual(set(os.listdir(self.base)) - here, {"config"})
        self.assertEqual(set(os.listdir(self.base / "config")), {"autostart", "tidwen"})

    def test_a_second_process_is_refused_and_touches_nothing(self):
        self.call("remove", "Kip", "--yes")
        lock = os.open(self.home / ".Trash", os.O_RDONLY)
        fcntl.flock(lock, fcntl.LOCK_EX)
        before = snapshot(self.volume)
        for words in (["remove", "Marlin Notes", "--yes"], ["undo", "1"], ["recover"], ["purge", "1", "--yes"],
                      ["orphans", "--remove", "--yes"]):
            with self.subTest(words):
                self.refuse(*words, saying="Another Tidwen")
        self.assertEqual(snapshot(self.volume), before)
        os.close(lock)
        self.call("undo", "1")

    def test_orphans_go_and_come_back(self):
        before = snapshot(self.volume, "Users/alice/.Trash")
        groups = self.call("orphans", "--json").json["groups"]
        self.assertTrue(groups)
        everything = [trace["displayName"] for group in groups for trace in group["traces"]]
        wanted = groups[-1]["traces"][0]["displayName"]
        for words, left in [(["--filter", wanted.upper()], [wanted]), (["--filter", "no such"], []),
                            (["--risk", "safe,review,sensitive"], everything)]:
            narrowed = self.call("orphans", *words, "--json").json["groups"]
            self.assertEqual([trace["displayName"] for group in narrowed for trace in group["traces"]], left)
        self.call("orphans", "--remove", "--filter", wanted, "--dry-run")
        for option in ("--dry-run", "--yes"):
            nothing = ["orphans", "--remove", "--filter", "no such", option]
            self.assertIn("nothing to remove", self.call(*nothing).output)
            self.assertIn(self.call(*nothing, "--json").json, ([], {"apps": [], "mode": "orphans", "operations": [], "results": []}))
        self.call("orphans", "--remove", "--dry-run", "--json")
        gone = self.call("scan", "com.oldferry.timetable", "--json").json[0]
        self.assertTrue(all("oldferry" in trace["displayName"].lower().replace(" ", "") for trace in gone["traces"] if trace["category"] != "permissions"))
        self.assertEqual(snapshot(self.volume, "Users/alice/.Trash"), before)
        self.assertNotIn("found later at most", self.call("orphans", "--remove", "--yes").output)
        left = {trace["displayName"] for group in self.call("orphans", "--json").json["groups"] for trace in group["traces"]}
        self.assertEqual(left, {path for path in everything if "/receipts/" in path}, "what stays is shown again")
        self.call("undo", "1")
        self.assertEqual(snapshot(self.volume, "Users/alice/.Trash"), before)
        self.assertEqual(self.call("undo", "1", "--json").json["restoredCount"], 0, "nothing to do is no refusal")
        self.assertEqual(self.call("undo", "1", "--dry-run", "--json").json["items"], [])
        self.call("purge", "--expired")

    def test_single_items_come_back_and_the_rest_later(self):
        before = snapshot(self.volume, *RESTORED_NEVER)
        self.call("remove", "Kip", "Pantry", "--yes")
        planned = self.call("undo", "1", "Pantry", "--dry-run", "--json").json["items"]
        self.assertEqual({item["destination"] for item in planned}, {item["source"] for item in planned})
        self.assertIn("/Applications/Pantry.app", self.call("undo", "1", "--dry-run").output)
        places = self.call("history", "1", "--json").json["items"]
        self.assertEqual({item["place"] for item in places}, {"inQuarantine"}, "a dry run changes nothing")
        self.refuse("undo", "1", "Lumen", saying="“Lumen”")

        (self.volume / "Applications/Kip.app").mkdir()
        self.assertIn("as /Applications/Kip 2.app", self.call("undo", "1", "Kip.app", "--dry-run").output)
        (self.volume / "Applications/Kip.app").rmdir()
        self.call("undo", "1", "Kip.app")
        self.assertIn("putBack", [item["place"] for item in self.call("history", "1", "--json").json["items"]])
        shown = self.call("history", "1").output
        self.assertIn("put back       /Applications/Kip.app", shown)
        self.assertIn("in quarantine  /Applications/Pantry.app", shown)
        run, = self.call("history", "--json").json
        self.assertEqual((run["number"], run["totalMoves"] - run["pendingMoves"]), (1, 1))
        self.call("undo", "1")
        self.assertEqual(snapshot(self.volume, *RESTORED_NEVER), before)

    def test_purge_asks_and_deletes(self):
        self.call("remove", "Kip", "--yes")
        self.refuse("purge", "1", saying="--yes")
        self.refuse("purge", "--yes", saying="--expired")
        self.assertEqual(self.call("purge", "1", "--yes", "--json").json, {"kept": [], "removedFolders": 1})
        self.assertEqual(self.call("history", "--json").json, [])

    def test_a_purge_that_was_cut_off_is_told_and_finished(self):
        root = self.volume / self.call("remove", "Kip", "--yes", "--json").json["quarantineRoot"][1:]
        item = next(entry for entry in root.iterdir() if entry.is_dir() and entry.name.isdigit())
        item.rename(root / f".tidwen-purged-{item.name}")
        self.assertIs(self.call("history", "--json", status=1).json[0]["isPartlyPurged"], True)
        self.assertIn("Partly deleted", self.call("history", status=1).output)
        self.assertIn("Its deletion was interrupted", self.call("undo", "1", status=1).output)
        self.assertTrue(root.exists())
        self.call("purge", "1", "--yes")
        self.assertFalse(root.exists())

    def test_purge_says_what_it_spares(self):
        root = self.volume / self.call("remove", "Kip", "--yes", "--json").json["quarantineRoot"][1:]
        (root / "tidwen-manifest.json").write_text("{")
        before = snapshot(self.volume)
        self.refuse("purge", root.name, "--yes", saying="Its record is damaged")
        run = self.call("purge", "--all", "--yes", "--json", status=1)
        self.assertEqual(run.json, {"kept": ["/" + str(root.relative_to(self.volume))], "removedFolders": 0})
        self.assertIn("Its record is damaged", run.errors)
        self.assertEqual(snapshot(self.volume), before)
        shutil.rmtree(self.home / ".Trash")
        (self.home / ".Trash").write_text("no folder")
        self.refuse("purge", "--all", "--yes", saying=".Trash")

    def test_a_removal_names_what_it_could_not_look_at(self):
        odd = os.fsencode(self.home) + b"/Library/Caches/com.littlefin.kip.\xffx"
        os.mkdir(odd)
        run = self.call("remove", "Kip", "--yes", "--json", status=1)
        self.assertEqual(len(run.json["skippedNames"]), 1)
        self.assertTrue(os.path.isdir(odd))
        shutil.rmtree(os.fsencode(self.home) + b"/Library/Caches")
        (self.home / "Library/Caches").symlink_to("/Volumes/Away")
        os.symlink("/Volumes/Away/Any.app", self.volume / "Applications/Any.app")
        for words in (["--dry-run"], ["--yes"]):
            printed = self.call("remove", "Lumen", *words, status=1).output
            for said in ("/Users/alice/Library/Caches", "Not all installed applications", "/Applications/Any.app"):
                self.assertIn(said, printed)
        run = self.call("remove", "Pantry", "--dry-run", "--json", status=1)
        self.assertIn("/Users/alice/Library/Caches", run.errors)
        run = self.call("remove", "Pantry", "--yes", "--json", status=1)
        self.assertEqual(run.json["unknownOwners"]["unreadable"], ["/Applications/Any.app"])

    def test_what_a_removal_leaves_is_listed_again_by_the_command_it_prints(self):
        apps = ["Brightwell Studio", "Brightwell Tuner", "Lumen"]
        planned = self.call("remove", *apps, "--dry-run").output.splitlines()
        lines = self.call("remove", *apps, "--yes").output.splitlines()
        self.assertIn("This folder is empty now: /Applications/Brightwell Studio", lines)
        items = [line for line in lines[lines.index("Left in place:") + 1:] if line.startswith("  /")]
        self.assertEqual([item for item in items if item not in planned], [])
        reasons = "\n".join(items)
        for said in ("also claimed by com.lumenlight.lumen.beta", "sensitive, so", "only the package’s list"):
            self.assertIn(said, reasons)
        command = next(line for line in lines if line.startswith("To list these items again: ")).split(": ", 1)[1]
        found = subprocess.run(command, shell=True, env=self.environment, check=True, capture_output=True, text=True)
        self.assertEqual([item for item in items if item.strip().split("  ")[0] not in found.stdout], [])

    def test_what_no_later_scan_finds_says_so(self):
        tiers = ["--risk", "safe,review,sensitive"]
        lines = self.call("remove", "Brightwell Studio", *tiers, "--yes").output.splitlines()
        lost = next(line for line in lines if "/usr/local/bin/brightwell-bounce" in line)
        self.assertIn("no later search finds it", lost)
        self.assertEqual([line for line in lines if line.startswith("To list these")], [], "it would find nothing")

    def test_no_command_is_printed_that_takes_what_another_claims(self):
        printed = self.call("remove", "Lumen", "--yes").output
        self.assertIn("also claimed by com.lumenlight.lumen.beta", printed)
        self.assertNotIn("--select", printed)
        undo = printed.splitlines()[-1].split(": ", 1)[1]
        self.call("remove", "Kip", "--yes")
        subprocess.run(undo, shell=True, env=self.environment, check=True, capture_output=True)
        self.assertTrue((self.volume / "Applications/Lumen.app").exists(), "the run that was meant, whatever ran since")

    def test_who_stays_is_not_told_of_what_it_keeps(self):
        printed = self.call("remove", "Marlin Notes", "--select", "com.marlinworks.notes.plist", "--yes").output
        self.assertNotIn("still has the permission", printed)
        printed = self.call("remove", "Harbor VPN", "--select", "net.harborvpn.client.menu", "--yes").output
        self.assertNotIn("system extension", printed)

    def test_what_cannot_be_removed_is_not_ticked(self):
        os.rename(self.volume / "Applications/Kip.app", self.home / "Downloads/Kip.app")
        kip = "/Users/alice/Downloads/Kip.app"
        shown = self.call("scan", kip).output
        self.assertNotIn("[x]", shown)
        self.assertIn("“tidwen remove” refuses", shown)
        self.refuse("remove", kip, "--yes", saying=kip)
        self.call("remove", kip, "--select", "/Users/alice/Library/Preferences/com.littlefin.kip.plist", "--yes")

    def test_a_job_is_switched_off_and_on(self):
        def states():
            return {i["id"]: i["switchState"] for i in self.call("startup", "list", "--json").json["items"]}
        job = next(key for key, state in states().items() if state == "on")
        for action, state in [("off", "off"), ("on", "on")]:
            self.call("startup", action, job)
            self.assertEqual(states()[job], state)
        twin = f"{job.removesuffix('.plist')}-twin.plist"
        shutil.copy(f"{self.volume}{job}", f"{self.volume}{twin}")
        lines = self.call("startup", "list").output.splitlines()
        self.assertEqual({line.split()[-1] for line in lines if ".plist" in line},
                         {job, twin}, "the paths of one label's jobs, and no others")
        items = self.call("startup", "list", "--json").json["items"]
        gone = [item["label"] for item in items if item["owner"]["kind"] == "missing"]
        self.assertTrue(gone)
        self.refuse("startup", "off", gone[0], saying="no longer exists")
        planned = self.call("startup", "remove", "--orphans", gone[0], "--dry-run").output
        self.assertEqual([label for label in gone if label not in planned], [])

    def test_the_list_of_applications_is_narrowed(self):
        names = [app["name"] for app in self.call("apps", "--json").json]
        sizes = [app["sizeBytes"] for app in self.call("apps", "--sort", "size", "--json").json]
        known = self.base / "config/tidwen/applications.json"
        self.assertIn("lastUsed", known.read_text())
        known.write_text('{"macs":[{"mac":1}')
        self.assertEqual([app["name"] for app in self.call("apps", "--json").json], names)
        self.assertEqual(sizes, sorted(sizes, reverse=True))
        self.call("tags", "add", "com.littlefin.kip", "tiny")
        self.call("protect", "add", "com.littlefin.kip")
        for words in (["--tag", "tiny"], ["--protected"], ["--filter", "littlefin"]):
            with self.subTest(words):
                self.assertEqual([app["name"] for app in self.call("apps", *words, "--json").json], ["Kip"])
        grouped = self.call("apps", "--group", "tag").output
        self.assertIn("tiny", grouped)
        self.assertEqual([name for name in names if name not in grouped], [])

    def test_permissions_are_revoked_and_what_stays_is_said(self):
        before = snapshot(self.volume)
        self.refuse("permissions", "revoke", "Marlin Sketch", "Camera", saying="--yes")
        status, printed = self.call_on_terminal("permissions", "revoke", "Marlin Sketch", "Camera", answer=b"n\n")
        self.assertEqual(status, 2)
        self.assertIn("Camera", printed)
        self.assertEqual(snapshot(self.volume), before)
        self.assertEqual(self.call("permissions", "show", "--json").json,
                         {"finderExtension": False, "fullDiskAccess": "granted"})
        for words, status, left, saying in [(["Marlin Sketch", "Camera"], 0, [], ""),
                                            (["Kip"], 0, [], ""),
                                            (["Harbor VPN"], 1, ["kTCCServiceSystemPolicyAllFiles"], "still has")]:
            with self.subTest(words):
                run = self.call("permissions", "revoke", *words, "--json", "--yes", status=status)
                self.assertEqual([grant["service"] for grant in run.json["grants"]], left)
                self.assertIn(saying, run.errors)
        shutil.rmtree(self.volume / "Applications/Pantry.app")
        grants = self.call("permissions", "show", "io.pantryapp.Pantry", "--json").json["grants"]
        self.assertTrue(grants, "macOS keeps them of an application that is gone")
        self.call("permissions", "revoke", "io.pantryapp.Pantry", "--yes")
        database = self.home / "Library/Application Support/com.apple.TCC/TCC.db"
        own = shutil.copy(database, self.base / "TCC.db")
        os.replace(own, database)
        rows = sqlite3.connect(database)
        rows.execute("UPDATE access SET client = 'com.gone.plugin' WHERE client = 'com.marlinworks.notes'")
        rows.commit()
        rows.close()
        self.assertTrue(self.call("permissions", "show", "com.gone.plugin", "--json").json["grants"], "of any form")
        self.call("permissions", "revoke", "com.gone.plugin", "--yes")
        self.refuse("permissions", "show", "com.never.plugin", saying="name or identifier")
        database.unlink()
        database.write_text("garbage")
        for words in (["show"], ["show", "Kip"], ["revoke", "Kip", "--yes"]):
            run = self.call("permissions", *words, status=1)
            self.assertIn("com.apple.TCC/TCC.db", run.output)
            self.assertNotIn("granted", run.output)

    def test_expired_runs_go_and_those_whose_age_nobody_knows_stay(self):
        for name in ["Kip", "Marlin Notes", "Pantry"]:
            self.call("remove", name, "--yes")
        trash = self.home / ".Trash"
        (trash / "Tidwen - mine").mkdir()
        (trash / "photo.jpg").write_text("of the user")
        foreign = [item for item in trash.iterdir() if not (item / "tidwen-manifest.json").exists()]
        for run, year in zip(self.call("history", "--json").json, ["2999", "2021", "2001"]):
            manifest = self.volume / run["root"].lstrip("/") / "tidwen-manifest.json"
            text = json.loads(manifest.read_text())
            text["createdAt"] = year + text["createdAt"][4:]
            manifest.write_text(json.dumps(text))

        def years():
            return [run["manifest"]["createdAt"][:4] for run in self.call("history", "--json").json]
        self.call("settings", "set", "quarantineRetention", "never")
        self.assertIn("quarantineRetention", self.call("purge", "--expired", "--yes").output)
        self.assertEqual(years(), ["2999", "2021", "2001"])
        self.call("settings", "set", "quarantineRetention", "sevenDays")
        self.assertEqual(self.call("purge", "--expired", "--yes", "--json").json, {"kept": [], "removedFolders": 1})
        self.assertEqual(years(), ["2999", "2001"])
        self.call("purge", "--all", "--yes")
        self.assertEqual(sorted(trash.iterdir()), sorted(foreign))

    def test_requests_reach_the_process_that_watches(self):
        self.refuse("requests", "post", "No such", saying="No such")
        self.call("requests", "post", "Kip", "No such", "Pantry", status=1)
        self.assertEqual(self.call("requests", "drain", "--json").json,
                         {"paths": ["/Applications/Kip.app", "/Applications/Pantry.app"]})
        (self.volume / "Tidwen.app/Contents/MacOS").mkdir(parents=True)
        own = shutil.copy(terminal.PROGRAM, self.volume / "Tidwen.app/Contents/MacOS/tidwen")
        (self.volume / "Tidwen.app/Contents/Info.plist").write_bytes(plistlib.dumps({"CorvellaAppGroup": "T.group"}))
        texts = {"TIDWEN_RESOURCES": os.path.join(os.path.dirname(terminal.PROGRAM), "../resources")}
        subprocess.run([own, "--volume", self.volume, "requests", "post", "Kip"], env=self.environment | texts, check=True)
        self.assertEqual(len(os.listdir(self.home / "Library/Group Containers/T.group/requests")), 1)
        self.call("requests", "post", "Kip")
        watching = subprocess.Popen([terminal.PROGRAM, "--volume", self.volume, "watch"], env=self.environment,
                                    stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True)
        try:
            self.assertIn("Kip", watching.stdout.readline())  # waited in the inbox
            watching.stdout.readline()
            self.call("requests", "post", "Marlin Notes")
            self.assertIn("Marlin Notes", watching.stdout.readline())
        finally:
            watching.terminate()
            watching.communicate(timeout=60)
        self.assertEqual(watching.returncode, 0)

    def test_an_inbox_that_cannot_be_read_is_not_called_empty(self):
        inbox = self.home / "Library/Group Containers/C7RVL2A9TD.com.corvella.tidwen"
        shutil.rmtree(inbox, ignore_errors=True)
        inbox.parent.mkdir(exist_ok=True)
        inbox.symlink_to(inbox.name)
        run = self.call("requests", "drain", status=1)
        self.assertEqual(run.output, "")
        self.assertIn(f"{inbox.name}/requests", run.errors)

    def test_wrong_words_are_refused(self):
        job = self.call("startup", "list", "--json").json["items"][-1]["label"]
        for folder in ("Library/LaunchAgents", "Library/LaunchDaemons"):
            (self.volume / folder / "twice.plist").write_bytes(
                plistlib.dumps({"Label": "net.twice", "Program": "/Applications/Gone.app/x"}))
        before = snapshot(self.volume)
        for words, saying in [(["startup", "fly"], "fly"), (["startup", "off", "no.such"], "no.such"),
                              (["permissions", "revoke"], "revoke"), (["permissions", "revoke", "Kip", "Air"], "Air"),
                              (["settings", "set", "quarantineRetention", "soon"], "soon"), (["purge"], "--all"),
                              (["settings", "get", "colour"], "colour"), (["tags", "add", "x"], "add APP TAG"),
                              (["tags", "add", "Nobody", "x"], "Nobody"), (["tags", "delete", "nope"], "no tag “nope”"),
                              (["tags", "add", "Kip", " "], "cannot be a tag"), (["protect", "add", "Kip", ""], "identifier"),
                              (["protect", "remove", "Kipp"], "Kipp"), (["settings", "set", "language", "klingon"], "klingon"),
                              (["purge", "--all", "--yes=false"], "--yes takes no value"),
                              (["startup", "off", job, "no.such"], "no.such"),
                              (["startup", "off", "net.twice"], "/Library/LaunchDaemons/twice.plist"),
                              (["startup", "remove", "net.twice", "--yes"], "/Library/LaunchAgents/twice.plist"),
                              (["startup", "off", job, "--dry-run"], "--dry-run goes with"),
                              (["requests", "fill"], "fill"), (["requests", "gate"], "gate on"), (["apps", "--sort", "luck"], "luck"),
                              (["completions", "abacus"], "abacus")]:
            with self.subTest(words):
                self.refuse(*words, saying=saying)
        self.assertEqual(snapshot(self.volume), before)

    def test_it_speaks_the_language_of_the_settings_else_that_of_the_account(self):
        def introduction(language):
            words = (terminal.documents.ROOT / f"resources/{language}.lproj/Localizable.strings").read_text()
            return re.search(r'^"cli.help.program" = "(.*)";$', words, re.M)[1]

        def expect(language, locale="C"):
            with self.subTest(locale=locale, language=language):
                asked = {**self.environment, "LC_ALL": locale}
                said = subprocess.run([terminal.PROGRAM, "--help"], env=asked, capture_output=True, text=True).stdout
                self.assertIn(introduction(language), said)

        for locale, language in [("C", "en"), ("de_AT.UTF-8", "de"), ("zh_CN.UTF-8", "zh-Hans"), ("pt_PT", "pt-BR"), ("tlh", "en")]:
            expect(language, locale)
        values = self.call("settings", "list").output
        for folder in (terminal.documents.ROOT / "resources").glob("*.lproj"):
            self.assertIn(folder.stem, values)
            self.call("settings", "set", "language", folder.stem)
            expect(folder.stem, "fr_FR.UTF-8")
        self.call("settings", "set", "language", "system")
        expect("fr", "fr_FR.UTF-8")
        (self.base / "config/tidwen/settings.plist").write_bytes(plistlib.dumps({"tidwen.language": "../de"}))
        expect("fr", "fr_FR.UTF-8")

    def test_an_installer_whose_name_cannot_be_written_down_is_said(self):
        name = os.fsencode(self.volume / "Users/alice/Downloads") + b"/Kip\xff.dmg"
        open(name, "wb").close()
        self.assertIn("not valid UTF-8", self.call("installers", status=1).output)
        self.call("installers", "--remove", "--yes", status=1)
        self.assertTrue(os.path.exists(name))

    def test_what_is_mistyped_is_answered_with_what_may_be_meant(self):
        for words, meant in [(["scna", "Kip"], "scan"), (["apps", "--srot", "size"], "--sort"), (["tags", "lits"], "list"),
                             (["settings", "get", "langauge"], "language"), (["scan", "Lumne"], "Lumen"),
                             (["settings", "set", "quarantineRetention", "thirtydays"], "thirtyDays")]:
            with self.subTest(words):
                self.refuse(*words, saying="Did you mean")
                self.refuse(*words, saying=meant)
        self.assertEqual(self.call("orphans", "--risk", "have a look,safe").output,
                         self.call("orphans", "--risk", "review,safe").output)

    def test_a_name_is_not_called_unknown_alone_where_applications_could_not_be_read(self):
        advice = "named by its path"
        self.assertNotIn(advice, self.call("scan", "Nobody", status=2).errors)
        (self.volume / "Applications/Torn.app/Contents").mkdir(parents=True)
        (self.volume / "Applications/Torn.app/Contents/Info.plist").write_text("torn")
        for name in ("Nobody", "com.example.nobody"):
            self.refuse("scan", name, saying=advice)

    def test_a_refusal_is_a_document_for_programs(self):
        for words, key in [(["remove", "Nobody", "--yes"], "cli.app.unknown"), (["fly"], "cli.usage.unknownCommand %@"),
                           (["purge"], "cli.purge.usage"), (["settings", "get", "x"], "cli.settings.unknown %@")]:
            run = self.call(*words, "--json", status=2)
            self.assertEqual(run.json["error"]["key"], key)
            self.assertIn(run.json["error"]["reasons"][0], run.errors)

    def test_quiet_prints_only_what_went_wrong(self):
        self.assertEqual(self.call("remove", "Kip", "--yes", "--quiet").output, "")
        self.assertIn("Nobody", self.call("scan", "Nobody", "--quiet", status=2).errors)
        self.assertEqual(len(self.call("history", "--quiet", "--json").json), 1)

    def test_a_scan_by_size_begins_with_the_largest(self):
        sizes = [[int(float(n) * {"kB": 1, "MB": 1000}[unit]) for n, unit in re.findall(r"(?m)^  \[.\].*?([\d.]+) (kB|MB)", part)]
                 for part in re.split("█", self.call("scan", "Brightwell Studio", "--sort", "size").output)]
        self.assertEqual(sizes, [sorted(part, reverse=True) for part in sizes])
        self.assertTrue(any(sizes))
        self.refuse("scan", "Kip", "--sort", "luck", saying="luck")

    def test_bash_completes(self):
        script = self.call("completions", "bash", volume=False).output
        self.call("remove", "Kip", "--yes")
        self.call("tags", "add", "Lumen", "mine")
        for line, expected in [("tidwen orph", ["orphans"]), ("tidwen --volume /x startup re", ["remove"]),
                               ("tidwen apps --group cat", ["category"]), ("tidwen remove --dry", ["--dry-run"]),
                               ("tidwen startup off re", []), ("tidwen remove Kip --ex", []),
                               ("tidwen --volume V remove Lum", ["Lumen", "Lumen\\ Beta"]),
                               ("tidwen --volume V undo ", ["1"]), ("tidwen --volume V tags delete m", ["mine"]),
                               ("tidwen --volume V apps --tag m", ["mine"]),
                               ("tidwen --volume V startup off com.brightwell.studio.t", ["com.brightwell.studio.tray"]),
                               ("tidwen settings set quarantineR", ["quarantineRetention"]),
                               ("tidwen settings set quarantineRetention n", ["never", "ninetyDays"]),
                               ("tidwen remove Kip --risk s", ["safe", "sensitive"])]:
            words = [terminal.PROGRAM, *line.replace("V", str(self.volume)).split(" ")[1:]]
            done = subprocess.run(["bash", "-c", script + '\nCOMP_WORDS=("$@"); COMP_CWORD=$(($# - 1)); _tidwen\n'
                                   'printf "%s\\n" "${COMPREPLY[@]}"', "bash", *words],
                                  env=self.environment, capture_output=True, text=True)
            self.assertEqual((sorted(done.stdout.split("\n")[:-1]), done.stderr), (expected or [""], ""), line)


if __name__ == "__main__":
    terminal.main()

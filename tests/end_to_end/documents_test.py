#!/usr/bin/env python3
"""Everything that docs/json.md describes is printed, by the command line tests, which run first, or by the calls here.
Usage: documents_test.py TIDWEN"""
import json
import os
import plistlib
import re
import shutil
import subprocess
import sys
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parent / "command_line"))
import terminal  # noqa: E402
from terminal import VolumeTest, documents  # noqa: E402

# Requires a race, a disk fault, missing permissions or more files than a test can write. Covered by tests of
# lower layers.
NOT_PROVOKED = """
AppUsage.useCount InstalledApp.isSizePartial Gap.reason=uncounted Gap.reason=unreadable Immovable.reason=noRights MatchReason.kind=executableName
OperationKind.kind=quitApplication OwnPermissions.fullDiskAccess=denied OwnPermissions.fullDiskAccess=indeterminate
RemovalReport.leftOut RemovalReport.unsettled StartupOwner.kind=registered Trace.leftKey=left.leftOut Trace.leftKey=left.mayHoldOthers
Manifest.irreversible=deleteKeychainItem Trace.leftKey=left.permanent Trace.mayHoldOthers UsageEvidence.kind=launchRecord
"""
# Printed only where the kernel allows a Mac-like root.
ON_A_MAC = """
OperationKind.isSystemKeychain OperationKind.kind=deleteKeychainItem OperationKind.service
RemovalOperation.reversibility=irreversibleDestructive RemovalReport.manifestFailure Trace.category=keychain
Trace.reversibility=irreversibleDestructive TraceAction.isSystemKeychain TraceAction.kind=deleteKeychainItem
TraceAction.service
"""


class Documents(VolumeTest):
    def application(self, place, identifier):
        contents = self.volume / place / "Contents"
        contents.mkdir(parents=True)
        (contents / "Info.plist").write_bytes(plistlib.dumps({"CFBundleIdentifier": identifier}))

    def test_documents_of_settings(self):
        described = documents.DESCRIPTION.records["Settings"]
        for name, (type_, _) in described.items():
            for value in re.findall("`([^`]+)`", type_):
                self.call("settings", "set", name, value, "--json")
                self.call("settings", "list", "--json")

    def test_documents_of_runs(self):
        for damage in ("finished", "recovered", "unsettled", "unreadableManifest", "unreadableJournal"):
            root = self.volume / self.call("remove", "Kip", "--yes", "--json").json["quarantineRoot"][1:]
            manifest, journal = root / "tidwen-manifest.json", root / "tidwen-journal.json"
            text = json.loads(manifest.read_text())
            if damage == "recovered":
                manifest.write_text(json.dumps(text | {"recoveredAt": text["createdAt"]}))
            if damage == "unsettled":
                journal.write_text(json.dumps({**text, "version": 1, "planned": text["entries"]}))
                manifest.unlink()
                item = self.volume / text["entries"][0]["destination"][1:]
                item.rename(item.with_name("odd"))
            if damage == "unreadableManifest":
                manifest.write_text("{")
            if damage == "unreadableJournal":
                journal.write_text("{")
                manifest.unlink()
            found = self.call("history", "--json", status=1 if damage.startswith("un") else 0).json
            self.assertEqual([run["status"] for run in found], [damage])
            self.call("history", root.name, "--json", status=1 if damage.startswith("un") else 0)
            shutil.rmtree(self.volume)
            shutil.copytree(self.sample, self.volume, symlinks=True, copy_function=os.link)

    def test_documents_of_what_cannot_be_moved(self):
        os.symlink("Pantry.app", self.volume / "Applications/Link.app")
        self.application("Users/alice/Downloads/Grebe.app", "com.grebe")
        self.application("Applications/Pantry.app/Contents/Parts/Part.app", "com.part")
        for place in ("Applications/Link.app", "Users/alice/Downloads/Grebe.app",
                      "Applications/Pantry.app/Contents/Parts/Part.app"):
            self.call("scan", "/" + place, "--json")
        self.call("remove", "Pantry", "--yes", "--json")

    def test_documents_of_what_cannot_be_read(self):
        for place in ("Users/alice/Library", "Library"):
            database = self.volume / place / "Application Support/com.apple.TCC/TCC.db"
            database.unlink()
            database.write_text("garbage")
        self.call("remove", "Lumen", "--yes", "--json", status=1)
        for words in (["permissions", "show", "Kip"], ["permissions"]):
            self.call(*words, "--json", status=1)
        (self.volume / "Applications/Bad.app/Contents").mkdir(parents=True)
        (self.volume / "Applications/Bad.app/Contents/Info.plist").write_text("garbage")
        (self.volume / "Library/LaunchAgents/com.bad.job.plist").write_text("garbage")
        self.call("orphans", "--json", status=1)

    def test_documents_of_an_item_that_is_lost(self):
        root = self.volume / self.call("remove", "Kip", "--yes", "--json").json["quarantineRoot"][1:]
        shutil.rmtree(next(root.glob("*/Kip.app")))
        self.assertEqual([item["failureKey"] for item in self.call("undo", "1", "--dry-run", "--json", status=1).json["items"]
                          if "failureKey" in item], ["failure.notInQuarantine"])
        self.assertIn("missing", [item["place"] for item in self.call("history", "1", "--json", status=1).json["items"]])
        self.assertEqual([failure["failureKey"] for failure in self.call("undo", "1", "--json", status=1).json["failures"]],
                         ["failure.notInQuarantine"])

    def test_documents_of_what_is_too_large_to_measure(self):
        (self.home / "Library/Application Support/com.littlefin.kip/first").write_bytes(b"x")
        first = self.home / "Library/Application Support/com.littlefin.kip/first"
        package = self.home / "Downloads/Large.pkg"
        package.mkdir()
        for number in range(20_001):
            os.link(first, package / str(number))
        os.rename(package, first.parent / "many")
        self.assertIn("over", self.call("scan", "Kip").output)
        scanned = self.call("scan", "Kip", "--json").json[0]["traces"]
        self.assertEqual([t["category"] for t in scanned if t.get("isSizePartial")], ["supportFiles"])
        self.assertTrue(self.call("remove", "Kip", "--yes", "--json").json["isReclaimedPartial"])
        self.assertIn("over", self.call("history").output)
        self.assertTrue(self.call("history", "--json").json[0]["isSizePartial"])
        self.call("undo", "1")
        os.rename(first.parent / "many", package)
        self.assertIn("over", self.call("installers").output)
        files = self.call("installers", "--json").json["files"]
        self.assertEqual([file["url"] for file in files if file.get("isSizePartial")], ["/Users/alice/Downloads/Large.pkg"])
        os.rename(self.home / "Downloads", self.home / "elsewhere")
        self.assertEqual(self.call("installers", "--json", status=1).json["unreadable"], ["/Users/alice/Downloads"])

    def test_documents_of_the_rest(self):
        self.call("requests", "gate", "on", "--json")
        self.call("remove", "Brightwell Studio", "--yes", "--json")
        self.call("sample", self.base / "second", "--json", volume=False)
        self.call("reset", "Kip", "--yes", "--json")
        for name in ("Kip.dmg", "Other.dmg"):
            (self.home / "Downloads" / name).write_bytes(b"image")
        self.call("installers", "--json")
        for words, mode in [(["installers", "--remove", "--select", "Other.dmg"], "installers"),
                            (["orphans", "--remove", "--risk", "safe"], "orphans"),
                            (["startup", "remove", "local.quill.keepalive"], "startupItems"),
                            (["remove", "Lumen", "--select", "com.lumenlight.lumen.plist"], "items")]:
            self.assertEqual(self.call(*words, "--yes", "--json").json["mode"], mode)
        self.application("Applications/Never.app", "com.never.used")
        self.call("apps", "--json")
        for name, job in {"com.apple.x": {"Program": "/usr/bin/x"}, "odd": {}}.items():
            (self.volume / f"Library/LaunchAgents/{name}.plist").write_bytes(plistlib.dumps({"Label": name, **job}))
        self.call("startup", "list", "--json")

    def test_documents_of_the_watch(self):
        self.call("requests", "post", "Kip")
        watching = subprocess.Popen([terminal.PROGRAM, "--volume", self.volume, "watch", "--json"], text=True,
                                    env=self.environment, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL)
        found = [watching.stdout.readline()]  # it is watching
        os.rename(self.volume / "Applications/Lumen.app", self.home / ".Trash/Lumen.app")
        found.append(watching.stdout.readline())
        watching.terminate()
        watching.communicate(timeout=60)
        documents.check(["watch"], "".join(found))
        self.assertEqual([json.loads(line)["requested"] for line in found], [True, False])

    def test_that_everything_described_was_printed(self):  # runs last because of its name
        printed = set(documents.SEEN)
        earlier = {file.name: file for file in Path(os.environ["TIDWEN_DOCUMENTS_SEEN"]).iterdir()}
        for file in earlier.values():
            printed.update(file.read_text().split("\n"))
        expected = set(NOT_PROVOKED.split()) | (set() if "mac_root_test" in earlier else set(ON_A_MAC.split()))
        self.maxDiff = None
        self.assertEqual(set(documents.DESCRIPTION.everything()) - printed, expected)

    def test_every_failure_is_described(self):
        words = (documents.ROOT / "resources/en.lproj/Localizable.strings").read_text()
        self.assertEqual(documents.DESCRIPTION.failures, set(re.findall(r'^"(failure\.[^"]+)"', words, re.M)))


if __name__ == "__main__":
    terminal.main()

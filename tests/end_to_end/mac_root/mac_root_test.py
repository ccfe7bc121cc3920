#!/usr/bin/env python3
"""Runs the program for the running Mac in a root that is laid out like a Mac's: a mount namespace in which a volume is
"/" and stand-ins are at the paths of the tools. Exits with 77 if the kernel does not allow such a namespace.
Usage: mac_root_test.py PROGRAM"""
import json
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile
import unittest

HERE = pathlib.Path(__file__).resolve().parent
sys.path.insert(0, str(HERE.parent))
import documents  # noqa: E402

RESOURCES = HERE.parents[2] / "resources"
HOST_TOOLS = ["cat", "chmod", "grep", "head", "ls", "ln", "mkdir", "mv", "rm", "sed", "sh", "sleep", "tr"]
CORE_SERVICES = "/System/Library/Frameworks/CoreServices.framework/Frameworks"
MAC_TOOLS = ["/bin/launchctl", "/usr/bin/tccutil", "/usr/bin/security", "/usr/bin/killall", "/usr/sbin/pkgutil",
             "/usr/bin/systemextensionsctl", "/usr/libexec/PlistBuddy",
             CORE_SERVICES + "/LaunchServices.framework/Support/lsregister"]
GUARDED = ["/Applications", "/Library/Caches", "/Library/Fonts", "/Library/LaunchDaemons", "/Library/Preferences"]
TREES = ["Applications", "Library", "Users", "private"]

AGENT = "com.example.marlin.agent"
DAEMON = 'com.example.marlin.it\'s "$HOME" `id`'
SERVICE = "com.example.marlin.it's \"$HOME\" `id`"
HOSTILE = ["com.example.marlin.it's", 'com.example.marlin."quoted"', "com.example.marlin.$(id) `id` $HOME",
           "com.example.marlin.back\\slash\\n\\", "com.example.marlin.two\nlines", "-Marlin Notes",
           "com.example.marlin.*"]


def box(volume, state, program, *arguments, prompt_timeout=60_000, variables=()):
    command = ["bwrap", "--unshare-all", "--die-with-parent", "--uid", "501", "--gid", "20", "--bind", volume, "/",
               "--proc", "/proc", "--dev", "/dev", "--tmpfs", "/tmp", "--bind", state, "/state"]
    for folder in ["/usr/lib", "/lib", "/lib64", "/usr/share/icu"]:
        command += ["--ro-bind-try", folder, folder]
    for tool in HOST_TOOLS:
        place = "/usr/bin/grep" if tool == "grep" else f"/bin/{tool}"
        command += ["--ro-bind", os.path.realpath(shutil.which(tool)), place]
    for tool in MAC_TOOLS:
        command += ["--ro-bind", HERE / "stand_ins/tool", tool]
    command += ["--ro-bind", HERE / "stand_ins/osascript", "/usr/bin/osascript",
                "--ro-bind", program, "/opt/tidwen/bin/tidwen", "--ro-bind", RESOURCES, "/opt/tidwen/resources",
                "--clearenv", "--setenv", "HOME", "/tmp", "--setenv", "TIDWEN_PROMPT_MILLISECONDS",
                str(prompt_timeout)]
    for name in variables:
        command += ["--setenv", name, "1"]
    command += ["/opt/tidwen/bin/tidwen", *arguments]
    return subprocess.run(command, capture_output=True, text=True, timeout=100)


def plist(**values):
    pairs = "".join(f"<key>{key}</key><string>{value}</string>" for key, value in values.items())
    return f'<?xml version="1.0" encoding="UTF-8"?>\n<plist version="1.0"><dict>\n{pairs}</dict></plist>\n'


class MacRoot(unittest.TestCase):
    program = None

    def setUp(self):
        self.folder = tempfile.TemporaryDirectory(prefix="tidwen-mac-root-")
        self.volume = pathlib.Path(self.folder.name, "volume")
        self.state = pathlib.Path(self.folder.name, "state")
        for name in ["hooks", "jobs/system", "jobs/gui/501", "disabled/gui", "keychain/genp", "keychain/inet"]:
            (self.state / name).mkdir(parents=True)
        for folder in GUARDED + ["/private", "/Users/alice/.Trash"]:
            self.at(folder).mkdir(parents=True, exist_ok=True)
        for file in ["disabled/system", "disabled/gui/501"]:
            self.note(file, "")
        self.note("guarded", "".join(folder + "\n" for folder in GUARDED))
        self.add_marlin()

    def tearDown(self):
        self.guard(0o755)
        self.folder.cleanup()

    def at(self, path):
        return self.volume / path.lstrip("/")

    def write(self, path, content="x"):
        self.at(path).parent.mkdir(parents=True, exist_ok=True)
        self.at(path).write_text(content)

    def note(self, name, content):
        (self.state / name).parent.mkdir(parents=True, exist_ok=True)
        (self.state / name).write_text(content)

    def add_marlin(self):
        self.write("/Applications/Marlin Notes.app/Contents/Info.plist",
                   plist(CFBundleIdentifier="com.example.marlin", CFBundleName="Marlin Notes"))
        for name in HOSTILE:
            self.write(f"/Library/Caches/{name}/data", name)
        self.write("/Library/Preferences/com.example.marlin.plist")
        self.write("/Library/LaunchDaemons/com.example.marlin.it's.plist", plist(Label=DAEMON))
        self.note(f"jobs/system/{DAEMON}", "")
        self.write("/Users/alice/Library/Caches/com.example.marlin/data")
        self.write("/Users/alice/Library/Preferences/com.example.marlin.plist")
        self.write("/Users/alice/Library/LaunchAgents/marlin.plist", plist(Label=AGENT))
        self.note(f"jobs/gui/501/{AGENT}", "")
        for item in ["genp/1", "genp/2"]:
            self.note(f"keychain/{item}", SERVICE)
        self.note("keychain/genp/3", "Another")
        self.write("/Library/Fonts/Marlin.ttf")
        self.note("receipts/com.example.marlin.pkg/info", plist(volume="/", pkgid="com.example.marlin.pkg"))
        self.note("receipts/com.example.marlin.pkg/files", "Library\nLibrary/Fonts/Marlin.ttf\nLibrary/gone\n")
        self.note("extensions", "*\t*\tABCDE12345\tcom.example.marlin.filter (1/1)\tFilter\t[activated enabled]\n")

    def tree(self):
        """Every item of the volume outside the Trash: its mode, and its content or link target."""
        found = {}
        for item in (item for tree in TREES for item in self.at(tree).rglob("*")):
            if ".Trash" not in item.parts:
                content = os.readlink(item) if item.is_symlink() else item.read_text() if item.is_file() else None
                found[str(item.relative_to(self.volume))] = (item.lstat().st_mode, content)
        return found

    def guard(self, mode=0o555):
        for folder in GUARDED:
            self.at(folder).chmod(mode)

    def run_tidwen(self, *arguments, **options):
        """The printed document."""
        self.guard()
        done = box(self.volume, self.state, self.program, "--json", *arguments, **options)
        self.assertIn(done.returncode, (0, 1), done.stderr)
        documents.check(arguments, done.stdout)
        return json.loads(done.stdout)

    def remove(self, *names, **options):
        """Each step with its executor and result; clears the log of the tools."""
        self.note("log", "")
        self.guard()
        self.before = self.tree()
        bundles = [f"/Applications/{name}.app" for name in names or ["Marlin Notes"]]
        report = self.run_tidwen("remove", "--yes", "--risk", "safe,review,sensitive", *bundles, **options)
        steps = {step["id"]: step for step in report["operations"]}
        return [" ".join(["root" if steps[result["operationID"]]["requiresRoot"] else "user",
                          steps[result["operationID"]]["kind"]["kind"], result.get("failureKey") or "ok"])
                for result in report["results"]]

    def undo(self, **options):
        """The counts of items put back, of all items and of jobs loaded; and the failures."""
        self.note("log", "")
        report = self.run_tidwen("undo", "1", **options)
        return [f'{report["restoredCount"]} {report["totalCount"]} {report["relaunchedJobs"]}', *(
            f'{each["item"]}: {each["failureReason"]}' for each in report["failures"])]

    def log(self):
        return (self.state / "log").read_text().splitlines()

    def test_everything_goes_and_comes_back(self):
        found, = self.run_tidwen("scan", "/Applications/Marlin Notes.app")
        self.assertIn("keychain", {trace["category"] for trace in found["traces"]})
        lines = self.remove()
        self.assertEqual([line for line in lines if not line.endswith(" ok")], [])
        # A file attributed only by a package's list stays.
        self.assertEqual([path for path in self.tree() if "arlin" in path], ["Library/Fonts/Marlin.ttf"])
        moves = [line for line in lines if line.startswith("root move")]
        self.assertEqual(len(moves), len(HOSTILE) + 3)
        log = self.log()
        self.assertEqual(log.count("osascript"), 1)
        self.assertIn(f"launchctl <bootout> <system/{DAEMON}>", log)
        self.assertIn("killall <-u> <root> <cfprefsd>", log)
        self.assertIn("killall <cfprefsd>", log)
        self.assertLess(log.index("tccutil <reset> <All> <com.example.marlin>"),
                        log.index("lsregister <-u> </Applications/Marlin Notes.app>"))
        self.assertEqual([item.read_text() for item in (self.state / "keychain/genp").iterdir()], ["Another"])

        self.assertEqual(self.undo(), [f"{len(moves) + 3} {len(moves) + 3} 2"])
        self.assertEqual(self.tree(), self.before)
        self.assertTrue((self.state / f"jobs/system/{DAEMON}").exists())
        self.assertTrue((self.state / f"jobs/gui/501/{AGENT}").exists())

    def test_a_dismissed_prompt_is_silent_and_leaves_the_users_part(self):
        self.note("hooks/osascript", "echo '0:116: execution error: Abgebrochen. (-128)' >&2; exit 1")
        for line in self.remove():
            self.assertTrue(line.endswith("failure.adminCancelled" if line.startswith("root") else " ok"), line)
        after = self.tree()
        self.assertEqual([path for path in self.before if path.startswith("Library") and path not in after], [])
        self.assertFalse(self.at("/Users/alice/Library/Caches/com.example.marlin").exists())
        self.assertEqual(self.undo(), ["3 3 1"])
        self.assertNotIn("osascript", self.log())
        self.assertEqual(self.tree(), self.before)

    INTERRUPT = "kill -INT $PPID; sleep 1\n"  # like Ctrl-C, with time to be noticed before the step ends

    def test_an_interrupt_ends_a_removal_after_the_step_at_hand(self):
        self.note("hooks/killall", self.INTERRUPT)  # the last step before the batch
        for line in self.remove():
            self.assertTrue(line.endswith("failure.stopped" if line.startswith("root") else " ok"), line)
        self.assertNotIn("osascript", self.log())
        self.assertFalse(self.at("/Users/alice/Library/Caches/com.example.marlin").exists())
        self.assertEqual(self.undo(), ["3 3 1"])
        self.assertEqual(self.tree(), self.before)

        self.note("hooks/killall", "")
        self.note("hooks/osascript", self.INTERRUPT)
        self.assertEqual([line for line in self.remove() if not line.endswith(" ok")], [], "a batch runs to its end")

    def test_a_second_interrupt_ends_the_program_and_recovery_finds_the_run(self):
        self.note("hooks/killall", self.INTERRUPT + self.INTERRUPT)
        self.guard()
        before = self.tree()
        done = box(self.volume, self.state, self.program, "remove", "--yes", "Marlin Notes")
        self.assertEqual((done.returncode, done.stdout), (130, ""), done.stderr)
        self.assertIn("Stopping after the step at hand.", done.stderr)
        self.assertNotEqual(self.tree(), before)
        self.note("hooks/killall", "")
        self.run_tidwen("recover")
        self.undo()
        self.assertEqual(self.tree(), before)

    def test_jobs_that_are_gone_loaded_already_or_switched_off(self):
        daemon = self.state / f"jobs/system/{DAEMON}"
        daemon.unlink()  # the stand-in ends with 3
        self.note("hooks/launchctl", '[ "$1" != bootout ] || [ "$2" = "${2#gui}" ] || exit 113')
        bootouts = [line for line in self.remove() if "bootout" in line]
        self.assertEqual(bootouts, ["user bootout ok", "root bootout ok"])
        daemon.touch()  # the stand-in ends with 17
        self.note("disabled/gui/501", AGENT + "\n")
        self.assertTrue(self.undo()[0].endswith(" 1"))
        daemon.unlink()
        self.remove()
        self.note("disabled/system", DAEMON + "\n")
        self.assertTrue(self.undo()[0].endswith(" 0"))
        self.note("hooks/launchctl", '[ "$1" != bootstrap ] || exit 9')
        self.note("disabled/system", "another\n")
        self.remove()
        done = self.undo()
        self.assertTrue(done[0].endswith(" 0"))
        self.assertIn("com.example.marlin.it's.plist: The step ended with status 9.", done[1])

    def test_an_occupied_place_is_never_taken(self):
        # During the batch a dangling link appears at every possible destination of this item.
        occupy = f'mkdir -p "$d/$n" && ln -s /nowhere "$d/$n/{HOSTILE[0]}"'
        numbers = " ".join(f"{number:04}" for number in range(1, 30))
        self.note("hooks/launchctl", "case $2 in system/*) for d in /Users/alice/.Trash/Tidwen*; do "
                                     f"for n in {numbers}; do {occupy}; done; done ;; esac")
        failed = [line for line in self.remove() if not line.endswith(" ok")]
        self.assertEqual(failed, ["root move failure.destinationOccupied"])
        self.assertEqual(self.at(f"/Library/Caches/{HOSTILE[0]}/data").read_text(), HOSTILE[0])

        self.guard(0o755)
        self.at(f"/Library/Caches/{HOSTILE[2]}").symlink_to("/nowhere")
        report = self.undo()
        self.assertEqual(len(report), 1, report)
        self.assertEqual(os.readlink(self.at(f"/Library/Caches/{HOSTILE[2]}")), "/nowhere")
        freed = self.at("/Library/Caches") / f"{HOSTILE[2]} 2"
        self.assertEqual((freed / "data").read_text(), HOSTILE[2])

    def test_a_shell_that_dies_half_way(self):
        self.write("/Applications/Zander.app/Contents/Info.plist",
                   plist(CFBundleIdentifier="com.example.zander", CFBundleName="Zander"))
        self.write("/Library/Caches/com.example.zander/data")
        self.write("/Library/LaunchDaemons/com.example.zander.plist", plist(Label="com.example.zander"))
        self.note("hooks/launchctl", '[ "$2" != system/com.example.zander ] || kill -9 $PPID')
        lines = [line for line in self.remove("Marlin Notes", "Zander") if line.startswith("root")]
        # The first application's items are in quarantine, so they count as moved although no result was
        # returned.
        self.assertEqual(lines.count("root move ok"), len(HOSTILE) + 3)
        self.assertEqual(lines.count("root move failure.noResult"), 3)
        self.assertEqual(lines.count("root bootout failure.noResult"), 2)
        (self.state / "hooks/launchctl").unlink()
        self.assertEqual(len(self.undo()), 1)
        self.assertEqual(self.tree(), self.before)

    def test_a_prompt_that_nobody_answers(self):
        self.note("hooks/osascript", "sleep 1000 & wait")
        for line in self.remove(prompt_timeout=300):
            self.assertTrue(line.endswith("failure.timedOut" if line.startswith("root") else " ok"), line)

    def test_without_full_disk_access_nothing_moves(self):
        guarded = "/Users/alice/Library/Application Support/com.apple.TCC/TCC.db"
        marlin = "/Applications/Marlin Notes.app"
        self.remove()
        self.assertEqual(self.undo()[1:], [])
        self.write(guarded)
        self.write("/Users/alice/Downloads/Marlin.dmg")
        self.at(guarded).chmod(0)
        self.note("log", "")
        for words in (["remove", "--yes", marlin], ["remove", "--dry-run", marlin], ["undo", "1"], ["recover"], ["purge", "--all", "--yes"],
                      ["orphans", "--remove", "--yes"], ["installers", "--remove", "--yes"], ["startup", "remove", AGENT],
                      ["startup", "off", AGENT], ["permissions", "revoke", marlin, "--yes"]):
            with self.subTest(words):
                done = box(self.volume, self.state, self.program, "--json", *words)
                self.assertEqual(done.returncode, 2, done.stderr)
                self.assertIn("open \"x-apple.systempreferences:com.apple.preference.security?Privacy_AllFiles\"", done.stderr)
        self.assertFalse([line for line in self.log() if line.startswith(("osascript", "tccutil", "launchctl <bootout>"))])
        self.assertTrue(self.at(marlin).exists())
        for words in (["scan", marlin], ["orphans"]):
            with self.subTest(words):
                self.run_tidwen(*words)

    def test_a_trash_that_root_may_not_enter(self):
        staging = self.at("/Users/alice/Library/Application Support/Tidwen/Staging")
        staging.parent.parent.mkdir(parents=True)
        self.note("refused", "/Users/alice/.Trash")
        moves = [line for line in self.remove() if line.startswith("root move")]
        self.assertEqual(set(moves), {"root move failure.exit %@"})
        self.assertEqual(self.undo()[1:], [])
        staged = {"variables": ["TIDWEN_STAGE_ROOT_MOVES"]}
        self.assertEqual([line for line in self.remove(**staged) if not line.endswith(" ok")], [])
        self.assertFalse(staging.exists())
        # As a kill leaves it: an item of root's and one of the user's on their way into the Trash or out of it.
        holders = [item.parent for item in self.at("/Users/alice/.Trash").glob("Tidwen - */*/*arlin*")]
        run, = {holder.parent for holder in holders}
        (staging / run.name).mkdir(parents=True)
        for holder in holders[:6]:
            holder.rename(staging / run.name / holder.name)
        self.run_tidwen("recover")
        self.assertFalse(staging.exists())
        count = len(moves) + 3
        self.assertEqual(self.undo(**staged), [f"{count} {count} 2"])
        self.assertFalse(staging.exists())
        self.assertEqual(self.tree(), self.before)

    def test_a_watch_at_login_needs_no_volume_on_a_mac(self):
        done = box(self.volume, self.state, self.program, "settings", "set", "catchTrashedApps", "true")
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        self.assertIn("from your next login on", done.stdout)

    def test_a_tool_that_floods_its_output(self):
        self.note("hooks/lsregister", "head -c 100000000 /dev/zero; head -c 100000000 /dev/zero >&2")
        self.assertEqual([line for line in self.remove() if not line.endswith(" ok")], [])


if __name__ == "__main__":
    MacRoot.program = sys.argv.pop(1)
    try:
        trial = subprocess.run(["bwrap", "--unshare-all", "--uid", "501", "--ro-bind", "/", "/", "true"],
                               capture_output=True, text=True, timeout=60)
        reason = trial.stderr.strip() if trial.returncode else None
    except OSError as error:
        reason = str(error)
    if reason:
        print(f"skipped: no namespace for a Mac-shaped root here: {reason}")
        sys.exit(77)
    documents.note_seen_for(sys.argv[0])
    unittest.main(verbosity=2)

#!/usr/bin/env python3
"""Deletes quarantine folders in a root that is laid out like a Mac's and has two users: root, whose shell executes
what osascript is given, and alice, who runs the program. Exits with 77 if the kernel or the caller's permissions do
not allow this. Usage: two_users_test.py PROGRAM"""
import ctypes
import json
import os
import pathlib
import plistlib
import shutil
import subprocess
import sys
import tempfile
import unittest

HERE = pathlib.Path(__file__).resolve().parent
RESOURCES = HERE.parents[2] / "resources"
TOOLS = {**{name: f"/bin/{name}" for name in ["cat", "mv", "rm", "sed", "sh", "tr", "setpriv"]},
         "grep": "/usr/bin/grep", "mktemp": "/usr/bin/mktemp"}
ALICE = 65534  # on this machine; 501 inside
TRASH = "/Users/alice/.Trash"
CLONE_NEWUSER = 0x10000000


def as_two_users(command):
    """Runs a command as root with a user table of root and alice; returns its status and output."""
    entered, leave = os.pipe()
    mapped, go = os.pipe()
    with tempfile.TemporaryFile() as printed:
        child = os.fork()
        if child == 0:
            try:
                os.dup2(printed.fileno(), 1)
                os.dup2(printed.fileno(), 2)
                libc = ctypes.CDLL(None, use_errno=True)
                if libc.unshare(CLONE_NEWUSER) != 0:
                    raise OSError(ctypes.get_errno(), "unshare: " + os.strerror(ctypes.get_errno()))
                os.write(leave, b".")
                os.read(mapped, 1)
                os.execvp(command[0], [str(word) for word in command])
            except OSError as error:
                print(error, flush=True)
            finally:
                os._exit(127)
        os.close(leave)
        os.close(mapped)
        try:
            if os.read(entered, 1):
                for table, inside in [("uid_map", 501), ("gid_map", 20)]:
                    with open(f"/proc/{child}/{table}", "w") as file:
                        file.write(f"0 0 1\n{inside} {ALICE} 1\n")
                os.write(go, b".")
        finally:
            os.close(go)
            os.close(entered)
            status = os.waitstatus_to_exitcode(os.waitpid(child, 0)[1])
        printed.seek(0)
        return status, printed.read().decode()


class TwoUsers(unittest.TestCase):
    program = None

    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="tidwen-two-users-")
        self.addCleanup(folder.cleanup)
        self.volume = pathlib.Path(folder.name, "volume")
        self.state = pathlib.Path(folder.name, "state")
        (self.state / "hooks").mkdir(parents=True)
        (self.state / "log").touch()
        for name in ["ask", "answer"]:
            os.mkfifo(self.state / name)
        for item in [self.state, *self.state.iterdir()]:
            os.chown(item, ALICE, ALICE)
        for folder in ["/bin", "/lib", "/lib64", "/opt/tidwen/bin", "/opt/tidwen/resources", "/private/tmp", "/usr/bin", "/usr/lib"]:
            self.at(folder).mkdir(parents=True)  # bwrap would make them inaccessible to alice
        self.at("/private/tmp").chmod(0o1777)
        self.write(f"{TRASH}/letter.txt")
        self.write("/Users/alice/Documents/report.txt")

    def at(self, path):
        return self.volume / path.lstrip("/")

    def write(self, path, content="x", owner=ALICE):
        """Creates a file and its missing parents with this owner."""
        missing = [folder for folder in self.at(path).parents if not folder.exists()]
        self.at(path).parent.mkdir(parents=True, exist_ok=True)
        self.at(path).write_text(content)
        for item in [self.at(path), *missing]:
            os.chown(item, owner, owner)

    def write_settings(self, **settings):
        folder = self.state / "config/tidwen"
        folder.mkdir(parents=True)
        (folder / "settings.plist").write_bytes(plistlib.dumps(settings))
        for item in [folder.parent, folder, folder / "settings.plist"]:
            os.chown(item, ALICE, ALICE)

    def run_folder(self, name, date="2026-01-01T00:00:00Z"):
        """Creates a past run with one item of alice's; returns its name."""
        folder = f"{TRASH}/Tidwen - {name}"
        self.write(f"{folder}/tidwen-manifest.json", json.dumps(
            {"version": 2, "createdAt": date, "quarantineRoot": folder, "apps": [], "entries": []}))
        self.write(f"{folder}/0001/mine")
        return f"Tidwen - {name}"

    def run_of_both(self, name, **options):
        run = self.run_folder(name, **options)
        folder = f"{TRASH}/{run}"
        self.write(f"{folder}/0002/com.example.daemon/data", owner=0)
        os.chown(self.at(f"{folder}/0002"), ALICE, ALICE)  # a removal makes it as the user
        self.write(f"{folder}/0003/mine/below")
        self.write(f"{folder}/0003/mine/roots/below", owner=0)
        self.write(f"{folder}/it's \"$HOME\" `id` \\", owner=0)
        return run

    def tree(self):
        return sorted(str(item) for tree in ["Users", "private"] for item in self.at(tree).rglob("*"))

    def purge(self, *words, variables=()):
        """The status and the number of deleted runs; messages about the others are in `said`."""
        command = ["bwrap", "--unshare-pid", "--unshare-net", "--die-with-parent", "--bind", self.volume, "/",
                   "--proc", "/proc", "--dev", "/dev", "--tmpfs", "/tmp", "--bind", self.state, "/state"]
        for folder in ["/usr/lib", "/lib", "/lib64", "/usr/share/icu"]:
            command += ["--ro-bind-try", folder, folder]
        for tool, place in TOOLS.items():
            command += ["--ro-bind", os.path.realpath(shutil.which(tool)), place]
        command += ["--ro-bind", HERE / "stand_ins/osascript", "/usr/bin/osascript",
                    "--ro-bind", self.program, "/opt/tidwen/bin/tidwen", "--ro-bind", RESOURCES, "/opt/tidwen/resources",
                    "--ro-bind", HERE / "stand_ins/authority", "/opt/authority", "--clearenv", "--setenv", "PATH", "/usr/bin:/bin", "--setenv", "HOME", "/tmp", "--setenv",
                    "XDG_CONFIG_HOME", "/state/config", *(word for name in variables for word in ("--setenv", name, "1")), "/opt/authority", "/opt/tidwen/bin/tidwen", "purge", "--yes", *words]
        status, self.said = as_two_users(command)
        self.prompts = (self.state / "log").read_text().count("osascript")
        done = [line.split(": ")[1] for line in self.said.splitlines() if line.startswith("Removals deleted permanently: ")]
        return status, int(done[0]) if done else 0

    def test_what_root_owns_goes_with_one_prompt(self):
        without = self.tree()
        runs = [self.run_of_both("O'Brien \"$HOME\" $(id) `id` \\"), self.run_of_both("plain"), self.run_folder("mine")]
        self.assertEqual(self.purge(*runs), (0, 3), self.said)
        self.assertEqual(self.prompts, 1)
        self.assertEqual(self.tree(), without)

    def test_what_root_owns_in_a_trash_that_root_may_not_enter(self):
        staging = "/Users/alice/Library/Application Support/Tidwen/Staging"
        self.write("/Users/alice/Library/Caches/data")
        without = self.tree()
        (self.state / "refused").write_text(TRASH)
        runs = [self.run_of_both("one"), self.run_of_both("two"), self.run_folder("mine")]
        before = self.tree()
        self.assertEqual(self.purge(*runs), (2, 0), self.said)
        os.rmdir(next(self.at("/private/tmp").iterdir()))  # what root had made for them
        self.assertEqual(self.tree(), before)
        # A dismissed prompt; then one that is killed with an item still beside the Trash.
        staged = {"variables": ["TIDWEN_STAGE_ROOT_MOVES"]}
        (self.state / "hooks/osascript").write_text("echo 'User cancelled. (-128)' >&2; exit 1")
        self.assertEqual(self.purge(*runs, **staged), (2, 0), self.said)
        self.assertEqual([item for item in self.tree() if "Application Support" not in item],
                         [item for item in before if "Application Support" not in item])
        (self.state / "hooks/osascript").unlink()
        hidden = self.at(f"{staging}/{runs[0]}/.tidwen-purge-01234567-89AB-CDEF-0123-456789ABCDEF-0002")
        hidden.parent.mkdir(parents=True)
        self.at(f"{TRASH}/{runs[0]}/0002").rename(hidden)
        for folder in [hidden.parent, *list(hidden.parent.parents)[:3]]:
            os.chown(folder, ALICE, ALICE)
        (self.state / "log").write_text("")
        self.assertEqual(self.purge(*runs, **staged), (0, 3), self.said)
        self.assertEqual(self.prompts, 1)
        self.assertEqual([item for item in self.tree() if "Application Support" not in item], without)
        self.assertFalse(self.at(staging).exists())

    def test_ones_own_goes_without_a_prompt(self):
        self.assertEqual(self.purge(self.run_folder("mine")), (0, 1), self.said)
        self.assertEqual(self.prompts, 0)

    def test_a_dismissed_prompt_or_a_script_that_fails_leaves_everything(self):
        runs = [self.run_folder("mine"), self.run_of_both("both")]
        before = self.tree()
        hook = self.state / "hooks/osascript"
        for answer, said in [("User cancelled. (-128)", "password was not given"), ("no (-60005)", "no (-60005)")]:
            hook.write_text(f"echo '{answer}' >&2; exit 1")
            self.assertEqual(self.purge(*runs), (2, 0))
            self.assertIn(said, self.said)
            self.assertEqual(self.tree(), before)
        hook.unlink()
        self.at("/private/tmp").rename(self.at("/private/away"))
        before = self.tree()
        self.assertEqual(self.purge(*runs), (2, 0))
        self.assertEqual(self.tree(), before)

    def test_links_lead_the_administrator_nowhere(self):
        good = self.run_of_both("good")
        self.write("/Users/alice/Documents/tidwen-manifest.json", "{}")
        self.at(f"{TRASH}/Tidwen - link").symlink_to("../Documents")
        before = self.tree()
        self.assertEqual(self.purge(good, "Tidwen - link"), (2, 0))
        self.assertEqual(self.tree(), before)
        self.at(TRASH).rename(self.at("/Users/alice/elsewhere"))
        self.at(TRASH).symlink_to("elsewhere")
        before = self.tree()
        self.assertEqual(self.purge(good), (2, 0))
        self.assertEqual(self.purge("--all"), (2, 0))
        self.assertEqual((self.tree(), self.prompts), (before, 0))

    def test_a_run_exchanged_for_a_link_while_the_prompt_is_open(self):
        both = self.run_folder("both")
        self.write(f"{TRASH}/{both}/LaunchDaemons/data", owner=0)
        self.write("/Library/LaunchDaemons/com.example.system.plist", owner=0)
        self.at("/Users/alice/link").symlink_to("/Library")
        (self.state / "hooks/osascript").write_text(
            f"mv '{TRASH}/{both}' /Users/alice/aside; mv /Users/alice/link '{TRASH}/{both}'")
        self.assertEqual(self.purge(both), (2, 0))
        self.assertEqual(self.prompts, 1)
        self.assertTrue(self.at("/Library/LaunchDaemons/com.example.system.plist").exists())
        self.assertTrue(self.at("/Users/alice/aside/0001/mine").exists())

    def test_ones_own_locked_folder_needs_no_prompt(self):
        mine = self.run_folder("mine")
        self.write(f"{TRASH}/{mine}/0002/locked/data")
        self.at(f"{TRASH}/{mine}/0002/locked").chmod(0)
        self.assertEqual(self.purge(mine), (0, 1), self.said)
        self.assertEqual(self.prompts, 0)

    def test_what_expired_goes(self):
        mine = self.run_folder("mine")
        future = self.run_folder("future", date="2999-01-01T00:00:00Z")
        self.write_settings(**{"tidwen.quarantineRetention": "sevenDays"})
        self.assertEqual(self.purge("--expired"), (0, 1), self.said)
        self.assertEqual(self.prompts, 0)
        self.assertFalse(self.at(f"{TRASH}/{mine}").exists())
        self.assertTrue(self.at(f"{TRASH}/{future}/0001/mine").exists())


if __name__ == "__main__":
    TwoUsers.program = sys.argv.pop(1)
    reason = "only root may map two users" if os.geteuid() else None
    if not reason:
        try:
            trial = as_two_users(["bwrap", "--unshare-pid", "--ro-bind", "/", "/", "true"])
            reason = trial[1].strip() or "bwrap failed" if trial[0] else None
        except OSError as error:
            reason = str(error)
    if reason:
        print(f"skipped: no two users for a Mac-shaped root here: {reason}")
        sys.exit(77)
    unittest.main(verbosity=2)

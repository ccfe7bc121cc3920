"""Runs the program on a volume like a user or a script, and checks the disk."""
import fcntl
import json
import os
import pty
import shutil
import struct
import subprocess
import sys
import tempfile
import termios
import unittest
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[1]))
import documents  # noqa: E402

PROGRAM = None  # set by the test's main()
# What an undo does not restore: the run's folder stays as a record, and macOS asks again for reset
# permissions.
RESTORED_NEVER = ("Users/alice/.Trash", "Users/alice/Library/Application Support/com.apple.TCC",
                  "Library/Application Support/com.apple.TCC")


def snapshot(root: Path, *left_out: str):
    """Everything below `root`: mode, and content or link target. `left_out`: path prefixes."""
    found = Snapshot()
    for folder, folders, files in os.walk(os.fsencode(root)):
        for name in folders + files:
            path = os.path.join(folder, name)
            relative = os.fsdecode(os.path.relpath(path, os.fsencode(root)))
            if relative.startswith(left_out):
                continue
            status = os.lstat(path)
            if os.path.islink(path):
                found[relative] = ("link", os.readlink(path))
            elif os.path.isdir(path):
                found[relative] = ("folder", status.st_mode)
            else:
                found[relative] = ("file", status.st_mode, status.st_mtime_ns, Path(os.fsdecode(path)).read_bytes())
    return found


class Snapshot(dict):
    """The result of `snapshot`. A failed comparison lists only the paths: a full difference takes minutes."""

    def difference(self, other):
        paths = sorted(path for path in self.keys() | other.keys() if self.get(path) != other.get(path))
        lines = [f"{path}: {str(self.get(path))[:120]} is not {str(other.get(path))[:120]}" for path in paths[:20]]
        return "\n".join(lines + [f"{len(paths)} differences"])


def command_of(words):
    """The words from the command on, without the global options before it."""
    words = [str(word) for word in words]
    while words[0].startswith("-"):
        words = words[2 if words[0] in ("--volume", "--home") else 1:]
    return words


def main():
    """Runs the tests of the script; its first argument is the program."""
    global PROGRAM
    PROGRAM = os.path.abspath(sys.argv.pop(1))
    documents.note_seen_for(sys.argv[0])
    unittest.main()


class Run:
    def __init__(self, status, output, errors):
        self.status, self.output, self.errors = status, output, errors

    @property
    def json(self):
        return json.loads(self.output)


class VolumeTest(unittest.TestCase):
    """A new sample volume and settings per test, independent of the machine's language."""

    @classmethod
    def setUpClass(cls):
        cls.base = Path(tempfile.mkdtemp(prefix="tidwen-end-to-end-")).resolve()  # a Mac's /var is a link
        cls.environment = {"PATH": os.environ["PATH"], "LC_ALL": "C", "TZ": "UTC", "HOME": str(cls.base),
                           "XDG_CONFIG_HOME": str(cls.base / "config"),
                           **{k: v for k, v in os.environ.items() if k.endswith("SAN_OPTIONS")}}
        cls.sample = cls.base / "sample"
        assert subprocess.run([PROGRAM, "sample", cls.sample], env=cls.environment, capture_output=True).returncode == 0

    @classmethod
    def tearDownClass(cls):
        shutil.rmtree(cls.base)

    def setUp(self):
        self.addTypeEqualityFunc(Snapshot, self.assertSameSnapshot)
        self.volume = self.base / "volume"
        # Hard links are faster than copies; the program replaces files and never writes into them.
        self.addCleanup(self.clear)  # runs last, after the programs left running by a test have ended
        shutil.copytree(self.sample, self.volume, symlinks=True, copy_function=os.link)
        self.home = self.volume / "Users/alice"

    def clear(self):
        shutil.rmtree(self.volume)
        shutil.rmtree(self.base / "config", ignore_errors=True)

    def assertSameSnapshot(self, first, second, msg=None):
        if first != second:
            raise self.failureException(f"{msg or 'the volume differs'}\n{first.difference(second)}")

    def call(self, *words, status=0, volume=True):
        """Runs the program and expects `status`."""
        if not volume and sys.platform == "darwin" and command_of(words)[0] in ("apps", "protect"):
            self.skipTest("would work on the Mac that this runs on")
        prefix = ["--volume", self.volume] if volume else []
        done = subprocess.run([PROGRAM, *prefix, *words], env=self.environment, capture_output=True,
                              stdin=subprocess.DEVNULL, timeout=60)
        run = Run(done.returncode, done.stdout.decode(), done.stderr.decode())
        self.assertEqual(run.status, status, (words, run.output, run.errors))
        if "--json" in words and run.output:
            documents.check(command_of(words), run.output)
        return run

    def refuse(self, *words, saying, volume=True):
        """Expects a refusal: status 2, at most its document on standard output, the reason on standard error."""
        run = self.call(*words, status=2, volume=volume)
        if "--json" in words:
            self.assertIn(saying, " ".join(run.json["error"]["reasons"]))
        else:
            self.assertEqual(run.output, "")
        self.assertIn(saying, run.errors)
        return run

    def call_on_terminal(self, *words, answer=None, columns=0):
        """The status and the complete output; answers the question with `answer`."""
        child, terminal = pty.fork()
        if child == 0:
            fcntl.ioctl(0, termios.TIOCSWINSZ, struct.pack("HHHH", 24, columns, 0, 0))
            os.execve(PROGRAM, [PROGRAM, "--volume", str(self.volume), *words], {**self.environment, "TERM": "xterm"})
        printed = b""
        while True:
            try:
                piece = os.read(terminal, 4096)
            except OSError:  # Linux reports a closed terminal this way
                break
            if not piece:
                break
            printed += piece
            if answer and b"[y/N]" in printed:
                os.write(terminal, answer)
                answer = None
        os.close(terminal)
        return os.waitstatus_to_exitcode(os.waitpid(child, 0)[1]), printed.decode()

    def traces(self, *apps):
        return [trace for result in self.call("scan", *apps, "--json").json for trace in result["traces"]]

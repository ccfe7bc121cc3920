#!/usr/bin/env python3
"""Installs the build in another folder and runs it there. Usage: install_test.py CMAKE BUILD"""
import os
import pathlib
import subprocess
import sys
import tempfile
import unittest

RESOURCES = pathlib.Path(__file__).resolve().parents[2] / "resources"


class Installation(unittest.TestCase):
    cmake = build = None

    def test_it_works_wherever_it_is_put(self):
        with tempfile.TemporaryDirectory(prefix="tidwen-install-") as scratch:
            staged, place = pathlib.Path(scratch, "staged"), pathlib.Path(scratch, "moved")
            subprocess.run([self.cmake, "--install", self.build, "--prefix", staged], check=True, capture_output=True)
            staged.rename(place)
            if (place / "Tidwen.app").exists():  # of a Mac, with both programs
                contents = place / "Tidwen.app/Contents"
                for file in ["Info.plist", "MacOS/Tidwen", "Helpers/tidwen", "Resources/Tidwen.icns", "Resources/man/man1/tidwen.1",
                             "Resources/en.lproj/Localizable.strings", "PlugIns/TidwenFinder.appex/Contents/MacOS/TidwenFinder"]:
                    self.assertTrue((contents / file).exists(), file)
                self.assertFalse((contents / "resources").exists())
                return
            files = sorted(str(file.relative_to(place)) for file in place.rglob("*") if file.is_file())
            texts = [file for file in files if file.startswith("share/tidwen/")]
            self.assertEqual(texts, sorted(f"share/tidwen/{file.relative_to(RESOURCES)}" for file in RESOURCES.glob("*.lproj/*")))
            window = ["bin/Tidwen", "share/applications/com.corvella.tidwen.desktop",
                      "share/icons/hicolor/scalable/apps/com.corvella.tidwen.svg"]  # where its toolkit is there
            self.assertEqual([file for file in files if file not in texts + window], [
                "bin/tidwen", "share/bash-completion/completions/tidwen", "share/fish/vendor_completions.d/tidwen.fish",
                "share/man/man1/tidwen.1", "share/zsh/site-functions/_tidwen"])
            environment = {**os.environ, "XDG_CONFIG_HOME": scratch, "XDG_STATE_HOME": scratch}
            environment.pop("TIDWEN_RESOURCES", None)

            def run(*words):
                done = subprocess.run(words, env=environment, capture_output=True, text=True)
                self.assertEqual((done.returncode, done.stderr), (0, ""))
                return done.stdout

            volume = pathlib.Path(scratch, "volume")
            run(place / "bin/tidwen", "sample", volume)
            self.assertIn("Lumen", run(place / "bin/tidwen", "--volume", volume, "scan", "Lumen"))
            run("bash", "-n", place / "share/bash-completion/completions/tidwen")


if __name__ == "__main__":
    Installation.build, Installation.cmake = sys.argv.pop(), sys.argv.pop()
    unittest.main(verbosity=2)

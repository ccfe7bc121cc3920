"""Looks at what a build makes for the bundle: that macOS finds in it the names the code uses. Usage: bundle_test.py
CHECKOUT BUILD"""
import os
import plistlib
import re
import struct
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path


class Bundle(unittest.TestCase):
    checkout = build = None

    def setUp(self):
        self.info = plistlib.loads((self.build / "bundle/Info.plist").read_bytes())
        self.languages = sorted(folder.stem for folder in (self.checkout / "resources").glob("*.lproj"))

    def source(self, name):
        return (self.checkout / "src" / name).read_text()

    def strings(self, file):
        return dict(re.findall(r'^"(.*?)" = "(.*)";$', file.read_text(), re.M))

    def test_names_are_those_of_the_code(self):
        identifier = re.search(r'tidwenBundleID = "(.*?)"', self.source("scan/applications/app_target.h"))[1]
        group = re.search(r'tidwenApplicationGroup = "(.*?)"', self.source("system/request_inbox.h"))[1]
        version = re.search(r"project\(tidwen VERSION (\S+)", (self.checkout / "CMakeLists.txt").read_text())[1]
        self.assertEqual(self.info["CFBundleIdentifier"], identifier)
        self.assertEqual(self.info["CorvellaAppGroup"], group)
        self.assertEqual(self.info["CFBundleShortVersionString"], version)
        self.assertEqual(self.info["LSMinimumSystemVersion"], "13.0")
        service, = self.info["NSServices"]
        declared = re.findall(r"\)(\w+):\(NSPasteboard\*[^)]*\)\w+\s+userData:\([^)]*\)\w+\s+error:", self.source("macos/services_provider.mm"))
        self.assertEqual(declared, [service["NSMessage"]])
        inner = plistlib.loads((self.build / "bundle/FinderExtension-Info.plist").read_bytes())
        self.assertTrue(inner["CFBundleIdentifier"].startswith(identifier + "."))  # macOS loads no other
        for key in ["CorvellaAppGroup", "CFBundleShortVersionString", "CFBundleLocalizations", "LSMinimumSystemVersion"]:
            self.assertEqual(inner[key], self.info[key])
        self.assertIn(f'@interface {inner["NSExtension"]["NSExtensionPrincipalClass"]} : FIFinderSync',
                      self.source("finder_extension/finder_extension.mm"))
        for kind, sandboxed in [("Tidwen", False), ("FinderExtension", True)]:
            rights = plistlib.loads((self.checkout / f"resources/macos/{kind}.entitlements").read_bytes())
            self.assertEqual(rights.pop("com.apple.security.application-groups"), [group])
            self.assertEqual(rights, {"com.apple.security.app-sandbox": True} if sandboxed else {})

    def test_every_language_is_named_and_has_its_texts(self):
        self.assertEqual(self.info["CFBundleLocalizations"], self.languages)
        menu = self.info["NSServices"][0]["NSMenuItem"]["default"]
        usages = {key: text for key, text in self.info.items() if key.endswith("UsageDescription")}
        self.assertEqual(len(usages), 4)
        for language in self.languages:
            words = self.strings(self.checkout / f"resources/{language}.lproj/Localizable.strings")
            folder = self.build / f"bundle/texts/{language}.lproj"
            told = self.strings(folder / "InfoPlist.strings")
            if language == "en":
                self.assertEqual(told, usages)
            self.assertEqual(set(told) <= set(usages), True)
            if "macos.service" in words:
                self.assertEqual(self.strings(folder / "ServicesMenu.strings"), {menu: words["macos.service"]})

    def test_a_bundle_that_needs_its_builders_mac_is_refused(self):
        with tempfile.TemporaryDirectory() as folder:
            contents = Path(folder, "T.app/Contents")
            program, tool = contents / "MacOS/T", Path(folder, "otool")
            (contents / "Frameworks").mkdir(parents=True)
            program.parent.mkdir()
            (contents / "Info.plist").touch()
            (contents / "Frameworks/there.dylib").touch()
            program.write_bytes(bytes.fromhex("cffaedfe"))
            tool.write_text('#!/bin/sh\n[ "$1" = -h ] && echo ARM64 || cat "$2.commands"\n')
            tool.chmod(0o755)
            for library, rpath, minimum, is_sound in [
                    ("/usr/lib/libz.dylib", None, "13.0", True), ("@executable_path/../Frameworks/there.dylib", None, "12.0", True),
                    ("@rpath/there.dylib", "@loader_path/../Frameworks", "13.0", True), ("@rpath/there.dylib", None, "13.0", False),
                    ("/usr/lib/libz.dylib", "/opt/brewed/lib", "13.0", False), ("/opt/brewed/lib/libz.dylib", None, "13.0", False),
                    ("@loader_path/gone.dylib", None, "13.0", False), ("@loader_path/../../../otool", None, "13.0", False),
                    ("/usr/lib/libz.dylib", None, "14.1", False)]:
                lines = [f"cmd LC_LOAD_DYLIB\n name {library} (offset 24)", f"cmd LC_BUILD_VERSION\n minos {minimum}"]
                lines += [f"cmd LC_RPATH\n path {rpath} (offset 12)"] if rpath else []
                Path(f"{program}.commands").write_text("\n".join(lines) + "\n")
                done = subprocess.run([self.checkout / "script/check-mac-bundle", contents.parent], capture_output=True, text=True,
                                      env={**os.environ, "OTOOL": str(tool)})
                self.assertEqual(done.returncode == 0, is_sound, (library, rpath, done.stdout, done.stderr))

    def test_the_icon_has_every_size(self):
        file = self.build / "bundle/Tidwen.icns"
        if not file.exists():
            self.skipTest("the toolkit that draws it is not there")
        content, sizes = file.read_bytes(), {}
        self.assertEqual((content[:4], struct.unpack(">I", content[4:8])[0]), (b"icns", len(content)))
        at = 8
        while at < len(content):
            kind, length = content[at:at + 4].decode(), struct.unpack(">I", content[at + 4:at + 8])[0]
            self.assertEqual(content[at + 8:at + 12], b"\x89PNG")
            sizes[kind] = struct.unpack(">II", content[at + 24:at + 32])
            at += length
        self.assertEqual(sizes, {kind: (pixels, pixels) for kind, pixels in {
            "icp4": 16, "icp5": 32, "ic11": 32, "ic12": 64, "ic07": 128, "ic08": 256, "ic13": 256, "ic09": 512, "ic14": 512,
            "ic10": 1024}.items()})


if __name__ == "__main__":
    Bundle.build, Bundle.checkout = Path(sys.argv.pop()), Path(sys.argv.pop())
    unittest.main(verbosity=2)

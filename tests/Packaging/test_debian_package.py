#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""The Debian package of the build: reproducible, complete, with exactly the dependencies that it needs, and without traces
after a purge.

usage: test_debian_package.py BUILD-FOLDER"""

import gzip
import hashlib
import io
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tarfile
import tempfile
import unittest

from built import BUILD_FOLDER, ENVIRONMENT, PROJECT, complaints, configured, output_of

sys.path.insert(0, str(PROJECT / "tests/Desktop"))

from driver.waiting import wait_until
from driver.x11 import X11Bed

#: The instruction of x86 that marks where an indirect jump may lead (endbr64).
_ALLOWED_TARGET = b"\xf3\x0f\x1e\xfa"

#: Loaded at run time, so no linker knows of it.
_LOADED = {"qt6-wayland"}


def owner_of(path):
    """The package that owns a file; some packages still list their files without the leading /usr."""
    names = {os.path.realpath(path)}
    names |= {name.removeprefix("/usr") for name in names} | {"/usr" + name for name in names}
    result = subprocess.run(["dpkg-query", "--search", *names], env=ENVIRONMENT, stdout=subprocess.PIPE,
                            stderr=subprocess.DEVNULL, text=True)
    return result.stdout.partition(":")[0]


def names_in(relations):
    """The first alternative of each package relation."""
    return {re.match(r"[a-z0-9.+-]+", relation.strip())[0] for relation in relations.split(",") if relation.strip()}


def with_dependencies(packages):
    """The packages and their dependencies, recursively."""
    known, unseen = set(), set(packages)
    while unseen:
        known |= unseen
        result = subprocess.run(["dpkg-query", "-W", "-f", "${Depends},${Pre-Depends},", *unseen], env=ENVIRONMENT,
                                stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True)
        unseen = {re.sub(r"[:( ].*", "", choice.strip()) for choice in re.split(r"[,|]", result.stdout)} - known - {""}
    return known


class DebianPackage(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.application = configured("ORVANE_APP_ID")
        cls.scratch = pathlib.Path(tempfile.mkdtemp())
        cls.addClassCleanup(shutil.rmtree, cls.scratch)
        cls.scratch.chmod(0o755)
        cls.packages = [pathlib.Path(output_of(PROJECT / "tools/package-debian", "--build-folder", BUILD_FOLDER,
                                               "--compression", "gzip", "--output", cls.scratch / name).strip())
                        for name in ("first", "second place")]
        cls.package = cls.packages[0]
        cls.symbols = [next(package.parent.glob("*.ddeb")) for package in cls.packages]
        cls.version = output_of(BUILD_FOLDER / "bin/orvanebreak", "--version").split()[1]
        tar = subprocess.run(["dpkg-deb", "--fsys-tarfile", cls.package], stdout=subprocess.PIPE, check=True).stdout
        cls.folder = cls.scratch / "unpacked"
        with tarfile.open(fileobj=io.BytesIO(tar)) as reader:
            cls.entries = reader.getmembers()
            reader.extractall(cls.folder)

    def field(self, name):
        return output_of("dpkg-deb", "--field", self.package, name).strip()

    def unzipped(self, path):
        return gzip.decompress((self.folder / path).read_bytes()).decode()

    def test_same_bytes_each_time(self):
        for first, second in (self.packages, self.symbols):
            self.assertEqual(first.read_bytes(), second.read_bytes())

    def test_symbols_are_beside_it(self):
        folder = self.scratch / "symbols"
        output_of("dpkg-deb", "--raw-extract", self.symbols[0], folder)
        expected = set()
        for program in self.programs():
            identifier = re.search(r"Build ID: ([0-9a-f]+)", output_of("readelf", "--notes", program))[1]
            expected.add(f"usr/lib/debug/.build-id/{identifier[:2]}/{identifier[2:]}.debug")
            self.assertNotIn(".debug_info", output_of("readelf", "--sections", "--wide", program))
        sums = dict(reversed(line.split("  ")) for line in (folder / "DEBIAN/md5sums").read_text("utf-8").splitlines())
        self.assertEqual(set(sums), expected)
        for name, md5 in sums.items():
            self.assertEqual(hashlib.md5((folder / name).read_bytes()).hexdigest(), md5)
            self.assertEqual((folder / name).stat().st_mode & 0o777, 0o644)

    def test_memory_errors_end_the_process(self):
        for program in self.programs():
            with self.subTest(program=program.name):
                shown = output_of("readelf", "--wide", "--file-header", "--program-headers", "--dynamic", "--dyn-syms",
                                  program)
                self.assertRegex(shown, r"Type: +DYN ")
                self.assertRegex(shown, r"GNU_RELRO")
                self.assertRegex(shown, r"GNU_STACK .* RW ")
                self.assertRegex(shown, r"\(FLAGS_1\).*\bNOW\b")
                self.assertIn(" __stack_chk_fail@", shown)
                if configured("ORVANE_HAS_CF_PROTECTION") == "1":
                    self.assertGreater(program.read_bytes().count(_ALLOWED_TARGET), 20)
        shown = output_of("readelf", "--wide", "--dynamic", "--dyn-syms", self.programs()[0])
        self.assertRegex(shown, r"\(FLAGS_1\).*\bPIE\b")
        self.assertRegex(shown, r" __\w+_chk@")

    def programs(self):
        """The program and its modules."""
        return [self.folder / "usr/bin/orvanebreak", *(self.folder / "usr/lib/orvanebreak/modules").iterdir()]

    def test_fields(self):
        architecture = output_of("dpkg", "--print-architecture").strip()
        self.assertEqual(self.package.name, f"orvanebreak_{self.version}-1_{architecture}.deb")
        for name, value in {"Package": "orvanebreak", "Version": f"{self.version}-1", "Section": "utils",
                            "Priority": "optional", "Architecture": architecture,
                            "Homepage": configured("ORVANE_WEBSITE_URL"),
                            "Maintainer": f"OrvaneBreak makers <{configured('ORVANE_SUPPORT_EMAIL')}>"}.items():
            self.assertEqual(self.field(name), value)
        size = sum(entry.size for entry in self.entries)
        self.assertAlmostEqual(int(self.field("Installed-Size")), size / 1024, delta=200)

    def test_readme_states_the_size(self):
        told = float(re.search(r"installed ([0-9.]+) MB", (PROJECT / "README.md").read_text("utf-8"))[1])
        self.assertAlmostEqual(told, int(self.field("Installed-Size")) * 1024 / 1e6, delta=0.2)

    def test_contents(self):
        files = {entry.name.removeprefix("./") for entry in self.entries if not entry.isdir()}
        self.assertEqual(files, {
            "usr/bin/orvanebreak",
            "usr/lib/orvanebreak/modules/archive.so",
            "usr/lib/orvanebreak/modules/network.so",
            "usr/lib/orvanebreak/modules/sound.so",
            "usr/share/OrvaneBreak/Info.json",
            "usr/share/OrvaneBreak/sounds/Glass.wav",
            f"usr/share/applications/{self.application}.desktop",
            f"usr/share/dbus-1/services/{self.application}.service",
            f"usr/share/metainfo/{self.application}.metainfo.xml",
            "usr/share/icons/hicolor/scalable/apps/orvanebreak.svg",
            "usr/share/icons/hicolor/symbolic/apps/orvanebreak-symbolic.svg",
            "usr/share/man/man1/orvanebreak.1.gz",
            "usr/share/man/fr/man1/orvanebreak.1.gz",
            "usr/share/doc/orvanebreak/changelog.gz",
            "usr/share/doc/orvanebreak/changelog.Debian.gz",
            "usr/share/doc/orvanebreak/copyright",
            "usr/share/lintian/overrides/orvanebreak"})
        for entry in self.entries:
            self.assertEqual((entry.uid, entry.gid), (0, 0), entry.name)
            is_program = entry.isdir() or entry.name == "./usr/bin/orvanebreak"
            self.assertEqual(entry.mode, 0o755 if is_program else 0o644, entry.name)

    def test_contents_fit(self):
        service = (self.folder / f"usr/share/dbus-1/services/{self.application}.service").read_text("utf-8")
        self.assertIn("\nExec=/usr/bin/orvanebreak\n", service)
        self.assertIn(f'"{self.version}"', (self.folder / "usr/share/OrvaneBreak/Info.json").read_text("utf-8"))
        self.assertEqual(self.unzipped("usr/share/doc/orvanebreak/changelog.gz"), (PROJECT / "CHANGELOG.md").read_text("utf-8"))
        self.assertTrue(self.unzipped("usr/share/doc/orvanebreak/changelog.Debian.gz").startswith(
            f"orvanebreak ({self.version}-1) "))
        self.assertIn("NOM", self.unzipped("usr/share/man/fr/man1/orvanebreak.1.gz"))

    def test_dependencies_match_the_used_libraries(self):
        owners = set()
        for program in self.programs():
            section = output_of("readelf", "--dynamic", "--wide", program)
            places = dict(re.findall(r"(\S+) => (\S+)", output_of("ldd", program)))
            needed = re.findall(r"\(NEEDED\).*\[(.*)\]", section)
            owners |= {owner_of(places[name]) for name in needed if name in places}
            self.assertEqual(complaints("ldd", "-u", program), "", "linked and not used")
            self.assertNotRegex(section, "RPATH|RUNPATH")
        virtual = {name for name in names_in(self.field("Depends")) if name.endswith("-abi")}
        self.assertEqual(names_in(self.field("Depends")) - virtual, owners | _LOADED)

    def test_wayland_is_there(self):
        files = complaints("dpkg-query", "--listfiles", *with_dependencies({"qt6-wayland"}))
        for plugin in (r"platforms/libqwayland(-generic)?\.so", r"wayland-shell-integration/libxdg-shell\.so"):
            self.assertRegex(files, f"(?m)/qt6/plugins/{plugin}$")

    def test_lintian(self):
        if not shutil.which("lintian"):
            self.skipTest("lintian is not installed")
        text = complaints("lintian", "--fail-on", "none", "--tag-display-limit", "0", "--show-overrides", "--display-info",
                          self.package, self.symbols[0])
        lines = [line for line in text.splitlines() if not line.startswith("running with root privileges")]
        self.assertEqual([line for line in lines if re.match("[EWI]:", line)], [])
        explained = re.findall(r"(?m)^orvanebreak: (\S+)", (PROJECT / "packaging/debian/lintian-overrides").read_text())
        self.assertEqual([line.split()[2] for line in lines if line.startswith("O:")], explained, "unused overrides")

    def test_runs_with_only_its_dependencies(self):
        with X11Bed() as bed:
            process = bed.run([self.folder / "usr/bin/orvanebreak"])
            wait_until(lambda: bed.windows_titled("OrvaneBreak"), "the window", 30)
            maps = pathlib.Path(f"/proc/{process.pid}/maps").read_text("utf-8").splitlines()
        libraries = {line.split(maxsplit=5)[5] for line in maps if re.search(r"\.so(\.[0-9.]+)?$", line)}
        self.assertTrue(any("platforms/libqxcb.so" in path for path in libraries), libraries)
        packages = with_dependencies(names_in(self.field("Depends")) | names_in(self.field("Recommends")))
        self.assertEqual({path for path in libraries if owner_of(path) not in packages}, set())

    def test_installs_upgrades_and_purges(self):
        become_root = [] if os.geteuid() == 0 else ["unshare", "--map-root-user"]
        if become_root and complaints(*become_root, "true"):
            self.skipTest("only root can create a namespace here")
        root = self.scratch / "root"
        for name in ("var/lib/dpkg/info", "var/lib/dpkg/updates", "tmp"):
            (root / name).mkdir(parents=True)
        (root / "var/lib/dpkg/status").touch()
        preferences = root / "home/someone/.config/OrvaneBreak/preferences.json"
        preferences.parent.mkdir(parents=True)
        preferences.write_text("{}")

        def dpkg(*command):
            # dpkg warns at length that nothing else is installed there.
            text = complaints(*become_root, "dpkg", f"--root={root}", f"--log={root}/tmp/log", "--force-depends",
                              "--force-script-chrootless", *command)
            self.assertNotIn("error", text)

        def content():
            return {path.relative_to(root) for path in root.rglob("*") if "var/lib" not in str(path)} - {
                pathlib.Path("tmp/log")}

        def status():
            return output_of("dpkg-query", f"--admindir={root}/var/lib/dpkg", "-W", "-f",
                             "${db:Status-Status} ${Version}", "orvanebreak")

        before = content()
        dpkg("--install", self.package)
        self.assertEqual(status(), f"installed {self.version}-1")
        dpkg("--install", self.newer_package())
        self.assertEqual(status(), f"installed {self.version}-2")
        self.assertFalse((root / "usr/share/OrvaneBreak/sounds").exists())
        self.assertEqual(output_of(root / "usr/bin/orvanebreak", "--version"), f"OrvaneBreak {self.version}\n")
        dpkg("--purge", "orvanebreak")
        self.assertEqual(content(), before)
        self.assertEqual(preferences.read_text(), "{}")

    def newer_package(self):
        """A newer package that lacks one folder of this one."""
        folder = self.scratch / "newer"
        output_of("dpkg-deb", "--raw-extract", self.package, folder)
        shutil.rmtree(folder / "usr/share/OrvaneBreak/sounds")
        control = folder / "DEBIAN/control"
        control.write_text(control.read_text("utf-8").replace(f"Version: {self.version}-1", f"Version: {self.version}-2"),
                           "utf-8")
        output_of("dpkg-deb", "--root-owner-group", "--build", folder, self.scratch / "newer.deb")
        return self.scratch / "newer.deb"


if __name__ == "__main__":
    unittest.main()

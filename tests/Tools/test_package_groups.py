#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""The groups in tools/packages contain exactly what the scripts that install them use. The test reads the sources, so nothing
has to be installed."""

import re
import sys
import unittest

from used_programs import ROOT, scripts, uses_of

sys.path.insert(0, str(ROOT / "tests" / "Desktop"))

from driver import packages  # noqa: E402

#: The groups of each script: those that it installs itself, or that the documents name for it.
_GROUPS = {
    "run": ["build", "tour"], "test": ["build", "test", "desktops", "bare"],
    "bench/run": ["build", "test"], "bench/measure-crash-scan": ["build", "test"], "tests/Fuzz/run": ["build", "fuzz"],
    "tools/check-cppcheck": ["test"], "tools/check-format": ["test"], "tools/check-layers": ["test"],
    "tools/check-tests": ["build", "test"],
    "tools/install-packages": ["build"],
    "tools/make-chime": ["tour"], "tools/make-known-answers": ["test"],
    "tools/measure-coverage": ["build", "test", "coverage", "desktops"], "tools/package-debian": ["build", "release"],
    "tools/portraits": ["build", "test"], "tools/release": ["build", "release"],
    "tools/run-with-makers-server": ["build", "makers-server"], "tools/side-by-side": ["tour"],
    "tools/tour": ["tour"], "tools/try-desktops": ["build", "desktops"], "tools/try-on": ["bare"], "tools/where-it-crashed": ["release"]}

#: Programs of packages that every Debian system has, Essential or of the priority "required".
_EVERYWHERE = set("""apt-cache apt-get awk bash cat chmod chroot cp date diff dirname dpkg dpkg-deb dpkg-query env find flock
    grep id ldd ln mkdir mktemp mount mv nologin nproc readlink renice rm rmdir sed setarch setpriv sh sha256sum sort sync
    tail tar tee touch tr umount unshare useradd xargs""".split())

#: Used only if installed.
_OPTIONAL = {"ccache", "gdbus", "llvm-symbolizer-14", "sudo"}

#: Programs that other programs start.
_IN_ITS_TURN = {"cmake": {"ninja", "c++", "pkg-config"}, "cpack": {"dpkg-shlibdeps", "file"}, "gcovr": {"gcov"}}

#: Programs that CMakePresets.json names.
_OF_PRESETS = {"tests/Fuzz/run": {"clang", "clang++"}}

#: Looks like a program but is an argument that a program must refuse.
_NO_PROGRAMS = {"file.txt", "signing"}

#: Window managers that only this scenario uses.
_CHOSEN = {"i3", "i3-msg", "xfwm4"}
_CHOOSING = ROOT / "tests/Desktop/break_scenario.py"

#: Used only when Wayland desktops are requested.
_WAYLAND = {ROOT / "tests/Desktop/driver" / f"{name}.py" for name in (
    "gnome", "hosted_kwin", "kwin", "layer_shell", "wayland", "wayland_locker", "wlroots", "wlroots_desktops")}


def table():
    """Maps each group to its rows: the Debian package and its purpose, which may be empty."""
    groups = {}
    for line in (ROOT / "tools/packages").read_text("utf-8").splitlines():
        if line and not line.startswith("#"):
            columns, _, reason = line.partition("#")
            group, package, *others = columns.split()
            assert len(others) == (0 if package.startswith("@") else 3), line
            groups.setdefault(group, {})[package] = reason.strip()
    return groups


def packages_in(groups):
    found = set()
    for group in groups:
        for package in table()[group]:
            found |= packages_in([package[1:]]) if package.startswith("@") else {package}
    return found


def name_of(script):
    return str(script.relative_to(ROOT))


def installed_by(script):
    """The groups that a script installs itself."""
    text = "" if script.suffix else script.read_text("utf-8")
    calls = re.findall(r"""(?:install-packages"|\bgroups\+?=\(|\*\(\[)((?:[\s",]*\b[a-z-]+\b"?)+)""", text)
    return {word for call in calls for word in re.findall("[a-z-]+", call)} & table().keys()


def closure(script, without=()):
    """The script and everything that it starts or imports, except what installs packages."""
    seen, unseen = set(), {script}
    if name_of(script) in ("test", "tools/measure-coverage"):
        unseen |= {path for path in scripts() if path.is_relative_to(ROOT / "tests") and name_of(path) != "tests/Fuzz/run"}
        unseen |= {path for path in scripts() if path.is_relative_to(ROOT / "packaging")}
        unseen |= {ROOT / "tools/check-format", ROOT / "tools/check-cppcheck"}
    while unseen:
        seen |= unseen
        unseen = {file for path in unseen for file in uses_of(path).files} - seen - set(without)
        unseen = {file for file in unseen if not installed_by(file) and name_of(file) != "tools/install-packages"}
    return seen - set(without)


def programs_of(files):
    found = set().union(*(uses_of(file).programs for file in files)) - _NO_PROGRAMS
    if _CHOOSING not in files:
        found -= _CHOSEN
    for program in list(found):
        found |= _IN_ITS_TURN.get(program, set())
    return found


def of_cmake(is_for_tests):
    """The programs and libraries that CMake looks for; optional ones only for the tests."""
    programs, libraries = set(), set()
    for path in [*ROOT.glob("*/**/CMakeLists.txt"), *ROOT.glob("cmake/*.cmake"), ROOT / "CMakeLists.txt"]:
        if path.relative_to(ROOT).parts[0].startswith("build"):
            continue
        text = re.sub(r"(?m)#.*$", "", path.read_text("utf-8"))
        found = re.findall(r"find_program\(\w+ ([\w+-]+)", text)
        programs |= set(found if is_for_tests or "ORVANE_CLANG_TIDY" not in text and "tests" not in path.parts else ())
        for call in re.findall(r"(?:find_package|pkg_check_modules|pkg_get_variable)\(([^)]*)\)", text):
            if is_for_tests or "REQUIRED" in call or "pkgdatadir" in call:
                libraries |= _libraries(call.split())
    return programs, libraries


def _libraries(words):
    if "IMPORTED_TARGET" in words:
        return {word.partition(">=")[0] for word in words[words.index("IMPORTED_TARGET") + 1:]}
    if "COMPONENTS" in words:
        return {words[0] + component for component in words[words.index("COMPONENTS") + 1:]}
    return {words[1] if "pkgdatadir" in words else words[0]}


def of_sources():
    """The programs that the C++ tests start."""
    return {program for path in (ROOT / "tests").rglob("*") if path.suffix in (".cpp", ".h")
            for program in re.findall(r'(?:start|execute)\(u"([\w.-]+)"_s', path.read_text("utf-8"))}


def needs_of(name, groups, may=False):
    """The packages that a script needs, each with its uses. With `may` also optional ones."""
    is_test = "test" in groups
    without = () if "desktops" in groups else _WAYLAND
    files = closure(ROOT / name, without)
    programs, libraries = programs_of(files) | _OF_PRESETS.get(name, set()), set()
    if "cmake" in programs:
        programs_of_cmake, libraries = of_cmake(is_test or may)
        programs |= programs_of_cmake
    if name in ("test", "tools/measure-coverage"):
        programs |= of_sources()
    needs = {}
    for kind, used in ((packages.OF_PROGRAM, programs - _EVERYWHERE - _OPTIONAL), (packages.OF_LIBRARY, libraries),
                       (packages.OF_MODULE, set().union(*(uses_of(file).modules for file in files)))):
        for one in sorted(used):
            for package in kind.get(one, f"unknown:{one}").split():
                needs.setdefault(package, set()).add(one)
    return needs


def entries():
    yield from _GROUPS.items()
    yield "test", ["build", "test"]


class Groups(unittest.TestCase):
    def test_used_packages_are_in_the_groups(self):
        for name, groups in entries():
            there = packages_in(groups)
            for package, used in needs_of(name, groups).items():
                with self.subTest(script=name, groups=groups, package=package, used=used):
                    self.assertFalse(package.startswith("unknown:"), "driver/packages.py has no package for it")
                    self.assertIn(package, there)

    def test_packages_in_the_groups_are_used(self):
        used = {}
        for name, groups in entries():
            for group in groups:
                used.setdefault(group, set()).update(needs_of(name, groups, may=True))
        for group, rows in table().items():
            for package, reason in rows.items():
                with self.subTest(group=group, package=package):
                    self.assertTrue(package.startswith("@") or reason or package in used.get(group, ()))

    def test_every_script_has_groups(self):
        starts = {name_of(path) for path in scripts() if not path.suffix and path.parent in (
            ROOT, ROOT / "tools", ROOT / "bench")}
        self.assertEqual(starts - set(_GROUPS), set())

    def test_scripts_install_these_groups(self):
        for path in scripts():
            installed = installed_by(path)
            if installed:
                with self.subTest(script=name_of(path)):
                    self.assertEqual(installed, set(_GROUPS[name_of(path)]))


if __name__ == "__main__":
    unittest.main()

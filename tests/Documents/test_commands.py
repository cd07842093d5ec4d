#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Everything that the documents tell readers to type exists: scripts, options, presets, labels, files.

usage: test_commands.py ORVANEBREAK MAKERS-SERVER [CASE...]"""

import json
import os
import pathlib
import re
import shlex
import socket
import subprocess
import sys
import tempfile
import unittest

from documents import ROOT, Document, documents, name

ORVANEBREAK = MAKERS_SERVER = None

# Not commands: the bytes that are signed or sent, the last line of the feed.
_NO_COMMANDS = ("v2|", "<!-- ", "POST ", "Host: ", "Accept: ", "Content-", "{")

# System programs, whose options are not checked.
_SYSTEM = {"openssl", "tar", "sha256sum", "git", "apt", "sudo", "dpkg", "lintian", "flatpak", "flatpak-builder",
           "appstreamcli", "gpg", "cd", "rm", "mkdir"}

# The project's commands in the documents, and the file through which every test run executes them.
_RUN_BY = {
    "./run": "tests/Documents/test_pictures.py",
    "./test": ".ci/run",
    "tools/install-packages": "test",
    "tools/tour": "run",
    "tools/portraits": "tests/Documents/test_pictures.py",
    "tools/side-by-side": "tests/Documents/test_pictures.py",
    "tools/package-debian": "tests/Packaging/test_debian_package.py",
    "tools/release": "tests/Release/test_publishing.py",
    "tools/where-it-crashed": "tests/Crash/test_program.py",
    "install": "tests/Release/test_installation.py",
    "makers-server": "tests/Documents/test_commands.py",
    "cmake": "tests/Documents/test_commands.py",
    "ctest": "test",
}

# These take many minutes: the tests only run their --help.
_ON_DEMAND = ("bench/run", "bench/measure-crash-scan", "tests/Fuzz/run", "tools/measure-coverage",
              "tools/try-on")

# Inline code with these prefixes names a file in the source tree, or a command that begins with one.
_FOLDERS = ("./", "tools/", "tests/", "bench/", "cmake/", "docs/", "packaging/", "assets/")


def presets():
    return json.loads((ROOT / "CMakePresets.json").read_text("utf-8"))


def help_of(program):
    return subprocess.run([program, "--help"], capture_output=True, text=True, timeout=60, check=False).stdout


def commands_of(line):
    """The simple commands in a line of shell."""
    words = shlex.split(line.rstrip("& "))
    while "&&" in words:
        at = words.index("&&")
        yield words[:at]
        words = words[at + 1:]
    yield words


class Commands(unittest.TestCase):
    def test_every_command_is_run_somewhere(self):
        seen = set()
        for path in documents():
            for line in Document(path).code_lines():
                if not line.startswith(_NO_COMMANDS):
                    seen.update(words[0] for words in commands_of(line))
        for command in seen - _SYSTEM - set(_ON_DEMAND):
            with self.subTest(command=command):
                where = _RUN_BY[re.sub(r"^OrvaneBreak-\S+/", "", command)]
                self.assertIn(pathlib.PurePath(command).name, (ROOT / where).read_text("utf-8"), where)

    def test_blocks(self):
        for path in documents():
            for line in Document(path).code_lines():
                if line.startswith(_NO_COMMANDS):
                    continue
                with self.subTest(document=name(path), line=line):
                    for words in commands_of(line):
                        self._check(words)

    def test_code_in_the_prose(self):
        for path in documents():
            for code in Document(path).inline_code():
                with self.subTest(document=name(path), code=code):
                    if code.startswith(("orvanebreak ", "cmake ", "ctest ")):
                        self._check(shlex.split(code))
                    elif code.startswith(_FOLDERS) and " " in code:
                        self._check(shlex.split(code))
                    elif code.startswith(_FOLDERS):
                        self.assertTrue(list(ROOT.glob(code.removeprefix("./").rstrip("/"))), "no such file")

    def _check(self, words):
        command, arguments = words[0], words[1:]
        options = [re.split("[= ]", word)[0] for word in arguments if word.startswith("--")]
        checks = {"cmake": self._cmake, "ctest": self._ctest, "orvanebreak": self._orvanebreak,
                  "makers-server": self._makers_server}
        if command in checks:
            checks[command](arguments, options)
        elif re.fullmatch(r"OrvaneBreak-\S+/(install|uninstall)", command):
            self.assertTrue((ROOT / "packaging" / "archive" / command.rpartition("/")[2]).is_file())
        elif command not in _SYSTEM:
            self._script(command, arguments, options)

    def _script(self, command, arguments, options):
        script = ROOT / command
        self.assertTrue(script.is_file() and script.stat().st_mode & 0o111, f"{command} is not a script")
        sources = [script, *(ROOT / "tools").rglob("*.py")]
        text = "".join(path.read_text("utf-8") for path in sources)
        for option in options:
            self._assert_names(text, option)
        self._check_definitions(arguments)
        # The subcommand of a tool.
        if arguments and re.fullmatch("[a-z]+", arguments[0]) and "add_parser" in text and command == "tools/release":
            self.assertTrue(re.search(rf"""["']{arguments[0]}["']""", text), arguments[0])

    def _check_definitions(self, arguments):
        known = (ROOT / "cmake" / "Configuration.cmake").read_text("utf-8")
        for definition in re.findall(r"-D(\w+)=", " ".join(arguments)):
            self.assertTrue(definition.startswith("CMAKE_") or definition in known, definition)

    def _cmake(self, arguments, _options):
        kind = "buildPresets" if "--build" in arguments else "configurePresets"
        self.assertIn(arguments[arguments.index("--preset") + 1], [preset["name"] for preset in presets()[kind]])
        self._check_definitions(arguments)

    def _ctest(self, arguments, options):
        if "--preset" in arguments:
            self.assertIn(arguments[arguments.index("--preset") + 1],
                          [preset["name"] for preset in presets()["testPresets"]])
        else:
            folders = [preset.get("binaryDir") for preset in presets()["configurePresets"]]
            self.assertIn("${sourceDir}/" + arguments[arguments.index("--test-dir") + 1], folders)
        labels = {label for path in (ROOT / "tests").rglob("CMakeLists.txt")
                  for found in re.findall(r'LABELS "?([\w;]+)', path.read_text("utf-8")) for label in found.split(";")}
        for option in {"--label-exclude", "--label-regex"} & set(options):
            self.assertIn(arguments[arguments.index(option) + 1], labels)

    def _orvanebreak(self, _arguments, options):
        for option in options:
            self._assert_names(help_of(ORVANEBREAK), option)

    def _makers_server(self, arguments, options):
        text = help_of(MAKERS_SERVER)
        for option in options:
            self._assert_names(text, option)
        for word in arguments[:1] + (arguments[1:2] if arguments[0] == "misbehave" else []):
            if not word.startswith("-"):
                self._assert_names(text, word)

    def _assert_names(self, text, word):
        """The text contains the word or option, not just as a part of a longer one."""
        self.assertTrue(re.search(rf"(?<![\w-]){re.escape(word)}(?![\w-])", text), word)


class Presets(unittest.TestCase):
    def test_contributing_names_them_all(self):
        text = (ROOT / "CONTRIBUTING.md").read_text("utf-8")
        for preset in presets()["configurePresets"]:
            if not preset.get("hidden"):
                with self.subTest(preset=preset["name"]):
                    self.assertIn(f"`{preset['name']}`", text)


class Running(unittest.TestCase):
    """Runs the commands that are quick and harmless."""

    def test_certificates(self):
        lines = [line for line in Document(ROOT / "docs" / "protocol.md").code_lines() if line.startswith("openssl")]
        self.assertTrue(lines)
        for line in lines:
            with self.subTest(line=line), tempfile.TemporaryDirectory() as folder:
                done = subprocess.run(shlex.split(line), cwd=folder, capture_output=True, text=True, check=False)
                self.assertEqual(done.returncode, 0, done.stderr)

    def test_help(self):
        for program in (ROOT / "test", ORVANEBREAK, MAKERS_SERVER, *(ROOT / command for command in _ON_DEMAND)):
            with self.subTest(program=str(program)):
                self.assertTrue(help_of(program))

    def test_configuring(self):
        with tempfile.TemporaryDirectory() as folder:
            done = subprocess.run(["cmake", "--preset", "dev", "-B", folder], cwd=ROOT, capture_output=True, text=True,
                                  timeout=110, check=False)
            self.assertEqual(done.returncode, 0, done.stderr)

    def test_makers_server(self):
        start, *others = [line for line in Document(ROOT / "docs" / "protocol.md").code_lines()
                          if line.startswith("makers-server")]
        self.assertTrue(others)
        with socket.create_server(("127.0.0.1", 0)) as free:
            port = free.getsockname()[1]
        with tempfile.TemporaryDirectory() as folder:
            environment = {**os.environ, "XDG_STATE_HOME": folder}
            words = shlex.split(start.removesuffix("&"))
            words[words.index("--port") + 1] = str(port)
            with subprocess.Popen([MAKERS_SERVER, *words[1:]], env=environment, stdout=subprocess.PIPE, text=True) as server:
                try:
                    self.assertTrue(any(line.startswith("listening on ") for line in server.stdout))
                    for line in others:
                        with self.subTest(line=line):
                            done = subprocess.run([MAKERS_SERVER, *shlex.split(line)[1:]], env=environment,
                                                  capture_output=True, text=True, timeout=60, check=False)
                            self.assertEqual(done.returncode, 0, done.stderr)
                finally:
                    server.terminate()


if __name__ == "__main__":
    ORVANEBREAK, MAKERS_SERVER = sys.argv[1:3]
    unittest.main(argv=[sys.argv[0], *sys.argv[3:]])

# SPDX-License-Identifier: GPL-3.0-or-later
"""The version in the source tree, and whether it may be released."""

import pathlib
import re
import subprocess

from . import Refusal, notes


class Source:
    """A checked-out source tree."""

    def __init__(self, folder):
        self.folder = pathlib.Path(folder)

    def commit(self):
        """The identifier of the checked-out commit."""
        return self._git("rev-parse", "HEAD").strip()

    def export(self, folder):
        """A clean copy of the checked-out commit, without ignored files and local changes, in `folder`."""
        if not (folder / ".git").exists():
            self._git("clone", "--quiet", "--shared", "--no-checkout", str(self.folder), str(folder))
        copy = Source(folder)
        copy._git("checkout", "--quiet", "--force", "--detach", self.commit())
        return copy

    def version(self):
        """The version in CMakeLists.txt."""
        text = self._read("CMakeLists.txt")
        match = re.search(r"^project\([^)]*\bVERSION\s+([0-9.]+)", text, re.MULTILINE)
        if not match:
            raise Refusal("CMakeLists.txt has no version: project(... VERSION ...)")
        return match[1]

    def refuse_without_changes(self):
        """Refuses a version that CHANGELOG.md says nothing about."""
        self._section("CHANGELOG.md")

    def news(self):
        """What users read about the version: its section of docs/nouveautes.fr.md, in plain text."""
        return notes.plain(self._section("docs/nouveautes.fr.md"))

    def _section(self, file):
        version = self.version()
        sections = re.split(r"^## +", self._read(file), flags=re.MULTILINE)
        for section in sections[1:]:
            heading, _, body = section.partition("\n")
            if re.match(rf"\[?{re.escape(version)}\]?(?![0-9.])", heading) and body.strip():
                return body.strip()
        raise Refusal(f"{file} has no section about {version}: add \"## [{version}] - <date>\" with the changes")

    def commit_time(self):
        """The commit time in seconds since 1970; without a repository the modification time of CHANGELOG.md."""
        try:
            return int(self._git("log", "-1", "--format=%ct"))
        except Refusal:
            return int((self.folder / "CHANGELOG.md").stat().st_mtime)

    def refuse_changes(self):
        """Refuses uncommitted changes."""
        changes = self._git("status", "--porcelain").rstrip()
        if changes:
            raise Refusal(f"there are uncommitted changes:\n{changes}")

    def refuse_failing_tests(self, command):
        """Runs the tests and refuses unless they pass."""
        if subprocess.run(command, cwd=self.folder, shell=True, stdin=subprocess.DEVNULL).returncode != 0:
            raise Refusal(f"the tests fail: {command}")

    def _read(self, path):
        try:
            return (self.folder / path).read_text("utf-8")
        except OSError as error:
            raise Refusal(f"{path}: {error.strerror}") from error

    def _git(self, *arguments):
        # In containers the tree may belong to another user.
        result = subprocess.run(["git", "-c", "safe.directory=*", *arguments], cwd=self.folder, capture_output=True,
                                text=True)
        if result.returncode != 0:
            raise Refusal("git: " + result.stderr.strip())
        return result.stdout


def version_numbers(version):
    """The sort key of a version; missing numbers are 0."""
    numbers = [int(number) for number in re.findall(r"[0-9]+", version.partition("-")[0])]
    while numbers and numbers[-1] == 0:
        numbers.pop()
    return numbers

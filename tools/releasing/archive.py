# SPDX-License-Identifier: GPL-3.0-or-later
"""Builds the archive that users install, reproducibly for the same commit on the same system."""

import dataclasses
import os
import pathlib
import re
import stat
import subprocess
import tarfile
import tempfile

from . import building

#: The strongest level that does not need more memory for unpacking.
STRONGEST = 19
_PROGRAM = "bin/orvanebreak-program"
_MODULES = "lib/orvanebreak/modules/*.so"


@dataclasses.dataclass(frozen=True)
class Archive:
    """A finished archive."""
    path: pathlib.Path
    architecture: str
    #: The content of its share/OrvaneBreak/Info.json.
    information: bytes
    #: The oldest version of the C library that it runs with.
    c_library: str


def build(source, output, definitions=(), build_folder=None, compression=STRONGEST):
    """Builds `source` with CMake definitions as for -D, and packs the result into the folder `output`. With a build folder it
    builds nothing and packs that existing build."""
    environment = building.environment_for(source)
    if build_folder is None:
        build_folder = building.build_anew(source, "build-archive", "orvanebreak-program", definitions, environment)
    output = pathlib.Path(output)
    output.mkdir(parents=True, exist_ok=True)
    architecture = os.uname().machine
    name = f"OrvaneBreak-{source.version()}"
    path = output / f"{name}-linux-{architecture}.tar.zst"
    unfinished = path.with_name(path.name + ".new")
    with tempfile.TemporaryDirectory() as scratch:
        folder = pathlib.Path(scratch) / name
        tar = pathlib.Path(scratch) / "archive.tar"
        building.run(["cmake", "--install", build_folder, "--component", "data", "--prefix", folder], environment)
        building.run(["cmake", "--install", build_folder, "--component", "archive", "--prefix", folder], environment)
        _split_symbols(folder / _PROGRAM, output / f"{name}-linux-{architecture}.debug", environment)
        for module in folder.glob(_MODULES):
            _split_symbols(module, output / f"{name}-linux-{architecture}.{module.name}.debug", environment)
        pack(folder, tar, source.commit_time())
        # One thread, because the number of threads changes the compressed output.
        building.run(["zstd", f"-{compression}", "--threads=1", "--quiet", "--force", tar, "-o", unfinished], environment)
        information = (folder / "share/OrvaneBreak/Info.json").read_bytes()
        c_library = _needed_c_library(folder)
    unfinished.replace(path)
    return Archive(path, architecture, information, c_library)


def _needed_c_library(folder):
    """The newest version of the C library whose symbols the programs and libraries in `folder` need."""
    found = {(2, 0)}
    for path in folder.rglob("*"):
        if path.is_symlink() or not path.is_file() or path.read_bytes()[:4] != b"\x7fELF":
            continue
        symbols = subprocess.run(["objdump", "-T", path], stdout=subprocess.PIPE, check=True, text=True).stdout
        found |= {(int(major), int(minor)) for major, minor in re.findall(r"\bGLIBC_([0-9]+)\.([0-9]+)", symbols)}
    return "{}.{}".format(*max(found))


def _split_symbols(program, debug_path, environment):
    """Moves the debug information, which crash reports need too, out of a program or a module; both keep the same build id."""
    building.run(["objcopy", "--only-keep-debug", "--compress-debug-sections", program, debug_path], environment)
    debug_path.chmod(0o644)
    # Keeps the symbol table, which crash reports take function names from.
    building.run(["strip", "--strip-debug", program], environment)


def pack(folder, tar, time):
    """Packs a folder in a fixed order, with root as owner and `time` as the date of every entry."""
    def plain(entry):
        entry.uid = entry.gid = 0
        entry.uname = entry.gname = ""
        entry.mtime = time
        is_for_all = entry.isdir() or entry.mode & stat.S_IXUSR
        entry.mode = 0o755 if is_for_all else 0o644
        return entry

    with tarfile.open(tar, "w", format=tarfile.PAX_FORMAT) as writer:
        writer.add(folder, folder.name, recursive=False, filter=plain)
        for entry in sorted(folder.rglob("*"), key=lambda entry: entry.relative_to(folder).as_posix()):
            writer.add(entry, f"{folder.name}/{entry.relative_to(folder).as_posix()}", recursive=False, filter=plain)

# SPDX-License-Identifier: GPL-3.0-or-later
"""Finds the programs, Python modules and other scripts that a script uses, by reading its source."""

import ast
import collections
import dataclasses
import functools
import pathlib
import re
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
_SHEBANG = re.compile(r"#!(?:\S*/env )?(?:\S*/)?(sh|bash|python3)\b")
_PROGRAM = re.compile(r"[A-Za-z][\w.+-]*")
# A program outside the PATH.
_PLACE = re.compile(r"/usr/(?:s?bin|libexec|lib[^/]*)/(?:.*/)?([A-Za-z][\w+-]*)")

# Functions whose first argument is a command or the name of a program.
_STARTING = {"run", "Popen", "call", "check_call", "check_output", "which", "output_of", "complaints", "run_in_home",
             "_call", "_run_server", "_run_compositor"}
_REQUIRING = {"require", "_required_programs", "required_programs"}

_BUILTINS = set("""[ [[ : . alias break case cd command continue declare do done echo elif else esac eval exec exit export
    fi for function if in kill let local mapfile printf pwd read readonly return set shift source test then time trap true
    false type umask unset until wait while ! { }""".split())
_BEFORE_A_COMMAND = {"if", "elif", "while", "until", "then", "else", "do", "!", "exec", "{", "time", "command", "env"}


@dataclasses.dataclass
class Uses:
    """System programs, Python modules, and files of the source tree that a script uses by name."""
    programs: set = dataclasses.field(default_factory=set)
    modules: set = dataclasses.field(default_factory=set)
    files: set = dataclasses.field(default_factory=set)


@functools.cache
def scripts():
    """Maps each script and Python module of the source tree to its language."""
    found = {}
    for folder in ("", "tools", "tests", "bench", "packaging"):
        for path in (ROOT / folder).rglob("*") if folder else ROOT.iterdir():
            if path.suffix == ".py":
                found[path] = "python3"
            elif path.name.endswith((".sh", ".sh.in")):
                found[path] = "sh"
            elif path.is_file() and not path.suffix:
                with path.open("rb") as file:
                    shebang = _SHEBANG.match(file.readline(80).decode("utf-8", "replace"))
                if shebang:
                    found[path] = shebang[1]
    return found


@functools.cache
def uses_of(path):
    return _python(path) if scripts()[path] == "python3" else _shell(path)


def _file_of_the_tree(path, name):
    """The script that `name` refers to in the script at `path`; None if it is not a file name."""
    if "/" in name or name.endswith(".py"):
        for folder in (ROOT, path.parent, path.parent.parent):
            candidate = (folder / name.removeprefix("./")).resolve()
            if candidate in scripts():
                return candidate
    return None


# -- Python

def _python(path):
    tree, uses = ast.parse(path.read_text("utf-8")), Uses(programs={"python3"})
    values = collections.defaultdict(list)
    for node in ast.walk(tree):
        for name, value in _assigned(node):
            values[name].append(value)
    for node in ast.walk(tree):
        if isinstance(node, ast.Import):
            for alias in node.names:
                _import(path, alias.name, 0, uses)
        elif isinstance(node, ast.ImportFrom):
            for alias in node.names:
                _import(path, ".".join(filter(None, (node.module, alias.name))), node.level, uses)
        elif isinstance(node, ast.Call) and node.args and _name(node.func) in _STARTING:
            for word in _first_words(node.args[0], values):
                uses.programs.update(_programs_of(word))
        elif isinstance(node, ast.Call) and _name(node.func) in _REQUIRING:
            uses.programs.update(word for argument in node.args for word in _programs_of(_joined(argument)))
        elif isinstance(node, (ast.FunctionDef, ast.Assign)) and _REQUIRING & set(_names_of(node)):
            uses.programs.update(word for word in _texts(node) if _PROGRAM.fullmatch(word))
        if isinstance(node, (ast.Constant, ast.BinOp)):
            text = _joined(node)
            uses.files.update(filter(None, [_file_of_the_tree(path, text)]))
            uses.programs.update(_PLACE.fullmatch(text).groups() if _PLACE.fullmatch(text) else ())
        elif isinstance(node, ast.List):
            words = [_joined(element) for element in node.elts]
            if "-m" in words and words[0].endswith("python3"):
                uses.modules.add(words[words.index("-m") + 1])
    return uses


def _import(path, name, level, uses):
    parts = name.split(".")
    if level:
        folders = [path.parents[level - 1]]
    else:
        folders = [path.parent]
        if parts[0] not in sys.stdlib_module_names:
            folders += sorted({script.parent for script in scripts()} | {script.parent.parent for script in scripts()})
    for folder in folders:
        found = [file for length in range(1, len(parts) + 1) for end in (".py", "/__init__.py")
                 if (file := folder / ("/".join(parts[:length]) + end)) in scripts()]
        if found:
            uses.files.update(found)
            return
    if not level and parts[0] not in sys.stdlib_module_names:
        uses.modules.add(name if name.startswith("gi.repository.") else parts[0])


def _name(node):
    return getattr(node, "attr", None) or getattr(node, "id", None)


def _names_of(node):
    return [node.name] if isinstance(node, ast.FunctionDef) else [_name(target) for target in node.targets]


def _assigned(node):
    """The names that a statement assigns, with their values."""
    if isinstance(node, ast.Assign):
        yield from ((target.id, node.value) for target in node.targets if isinstance(target, ast.Name))
    elif isinstance(node, ast.For) and isinstance(node.target, ast.Name) and isinstance(node.iter, (ast.Tuple, ast.List)):
        yield from ((node.target.id, value) for value in node.iter.elts)


def _first_words(node, values, depth=3):
    """The possible first words of a command."""
    if isinstance(node, (ast.List, ast.Tuple)):
        for element in node.elts:
            is_several = isinstance(element, ast.Starred)
            yield from _first_words(element.value if is_several else element, values, depth)
            if not is_several:
                return
    elif isinstance(node, ast.Starred):
        yield from _first_words(node.value, values, depth)
    elif isinstance(node, ast.IfExp):
        yield from _first_words(node.body, values, depth)
        yield from _first_words(node.orelse, values, depth)
    elif isinstance(node, ast.Name) and depth:
        for value in values[node.id]:
            yield from _first_words(value, values, depth - 1)
    elif isinstance(node, ast.Constant):
        yield _joined(node)


def _programs_of(word):
    place = _PLACE.fullmatch(word)
    return {place[1]} if place else {word} if _PROGRAM.fullmatch(word) else set()


def _texts(node):
    return [child.value for child in ast.walk(node) if isinstance(child, ast.Constant) and isinstance(child.value, str)]


def _joined(node):
    """The text of a constant, or of the constants at the end of a path joined with slashes."""
    if isinstance(node, ast.Constant):
        return node.value if isinstance(node.value, str) else ""
    if isinstance(node, ast.BinOp) and isinstance(node.op, ast.Div):
        return "/".join(filter(None, (_joined(node.left), _joined(node.right))))
    return ""


# -- shell

def _shell(path):
    text = path.read_text("utf-8")
    uses = Uses(programs={scripts()[path]})
    text = re.sub(r"<<-?['\"]?(\w+).*?\n.*?\n\1\n", "\n", text, flags=re.DOTALL)
    text = re.sub(r"(?m)(^|\s)#.*$", "", text).replace("\\\n", " ")
    for name in re.findall(r"[\w.-]+(?:/[\w.-]+)+", text):
        uses.files.update(filter(None, [_file_of_the_tree(path, name) or _file_of_the_tree(path, name.partition("/")[2])]))
    # Functions may be defined in a file beside it that it sources.
    texts = [script.read_text("utf-8") for script in scripts() if script.parent == path.parent]
    functions = set(re.findall(r"(?m)^(\w+)\(\)", "\n".join(texts)))
    for command in _commands(text):
        words = [word for word in command.split() if not re.match(r"\w+\+?=", word)]
        while words and words[0] in _BEFORE_A_COMMAND:
            words = words[1:]
            while words and words[0].startswith("-"):
                words = words[1:]
        if words and _PROGRAM.fullmatch(words[0]) and words[0] not in _BUILTINS | functions:
            uses.programs.add(words[0])
    return uses


def _commands(text):
    """The simple commands, with "$" instead of each quoted text."""
    inner = []
    text = re.sub(r"\$\(\(.*?\)\)", "$", text)

    def take_out(match):
        inner.extend(re.findall(r"\$\(((?:[^()]|\([^()]*\))*)\)", match[0]) if match[0][0] == '"' else [])
        return "$"
    text = re.sub(r'"(?:\\.|\$\((?:[^()]|\([^()]*\))*\)|[^"\\])*"|' r"'[^']*'", take_out, text)
    text = re.sub(r"\w+\+?=\([^()]*\)", "", text)
    text = re.sub(r"(?m)^\s*\(?[^\s()]+(?:\s*\|\s*[^\s()]+)*\)", "", text)
    text = re.sub(r"\d*(?:<|>)+&?-?\s*(?!\()[\w/$.{}-]*", " ", text)
    yield from (command for command in re.split(r"\n|;|&&|\|\|?|&|\$?\(|\)", text) if command.strip())
    for part in inner:
        yield from _commands(part)

#!/usr/bin/env python3
# ctest: once release-only timeout=180
"""What the documents tell people to type is there and works.

README.md, CONTRIBUTING.md, CHANGELOG.md and docs/ mark up what they hold, and nothing else is looked at:

    ```sh         commands, one a line; " # " begins a remark
    ```console    a session with the engine: "> " marks what is typed, "..." stands for any lines
    ```ini        settings; below [Engine] they are options of the engine
    ```text       drawings and layouts; ```html, ```js: pieces of pages, which the tests of web/ run
    ```bash       pieces for other programs, which clients_test.py runs; so are ```yaml, ```python and ```conf
    `code`        in a sentence: a command when it begins with a program, a path when it has a slash

Each command has to name programs, options, stages, presets, targets and paths that exist; what is the reader's own
to choose is a number, a quoted text or in capitals. Sessions are played, ./run and tools/analyse.py run.
"""
import fnmatch
import functools
import html
import json
import os
import re
import shlex
import subprocess
import tempfile
import unittest
from itertools import zip_longest
from pathlib import Path

from engine_process import ENGINE, ROOT, VARYING, EngineTestCase, main, seconds, without_status

README, CONTRIBUTING = ROOT / "README.md", ROOT / "CONTRIBUTING.md"
DOCUMENTS = [README, CONTRIBUTING, ROOT / "CHANGELOG.md", *sorted((ROOT / "docs").glob("*.md"))]
KINDS = {"sh", "console", "ini", "text", "html", "js", "bash", "yaml", "python", "conf", "code", "link"}
PIECE = re.compile(r"^```(.*)\n((?:.*\n)*?)```$|`([^`]+)`|\]\(([^)]+)\)", re.MULTILINE)
VARIABLES = r"(?:[A-Z_]+=\S+ )*"
COMMAND = re.compile(VARIABLES + r"(?:\./(?:run|test|package)\b|"
                     r"(?:(?:tools|bench|web|build)/\S+|cmake|ctest|make|xboard|printf|polyglot|apt|podman) )")
OPTION = re.compile(r"option name (?P<name>.+?) type (?P<type>\w+)(?: default (?P<default>.*?))?"
                    r"(?: min (?P<min>-?\d+) max (?P<max>-?\d+))?(?P<vars>(?: var \w+)*)$")
# The options of other people's programs that have been tried.
TRIED = {"xboard": "-fUCI -fcp -fd -sUCI -scp -matchGames -tc -inc -variant -xponder -firstOptions",
         "cmake": "--preset --build --target --install --prefix", "ctest": "--preset -R",
         "podman": "--tag --rm --interactive", "printf": "", "polyglot": "", "apt": ""}


class Wrong(Exception):
    """What a command or a path names is not there."""


def require(condition, message):
    if not condition:
        raise Wrong(message)


# ---- what a document holds

def pieces(document):
    """Line number, kind and text of all that is marked."""
    text = document.read_text(encoding="utf-8")
    for match in PIECE.finditer(text):
        kind = "code" if match[3] else "link" if match[4] else match[1]
        yield text.count("\n", 0, match.start()) + 1, kind, match[2] or match[3] or match[4]


def commands_in_blocks():
    """Document, line number and text of every command."""
    for document in DOCUMENTS:
        for number, kind, text in pieces(document):
            if kind == "sh":
                for offset, line in enumerate(text.splitlines(), 1):
                    if line := re.sub(r"(^| +)# .*", "", line):
                        yield document, number + offset, line


def commands_in_sentences():
    for document in DOCUMENTS:
        for number, kind, text in pieces(document):
            if kind == "code" and COMMAND.match(text := " ".join(text.split())):
                yield document, number, text


# ---- what there is

def read(*patterns):
    return "\n".join(file.read_text(errors="replace") for pattern in patterns for file in ROOT.glob(pattern))


def stems(pattern, prefix=""):
    return {prefix + file.stem for file in ROOT.glob(pattern)}


def printed_by(*words, lines=""):
    with tempfile.TemporaryDirectory(prefix="brenquil-") as folder:
        done = subprocess.run(words, input=lines, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True,
                              cwd=folder, timeout=seconds(60), check=False)
    require(done.returncode == 0 and done.stdout.strip(), f"{words} fails: {done.stdout[-500:]}")
    return done.stdout


@functools.cache
def presets(kind):
    entries = json.loads((ROOT / "CMakePresets.json").read_text())[kind]
    return {entry["name"] for entry in entries if not entry.get("hidden")}


@functools.cache
def cmake_text():
    return read("CMakeLists.txt", "cmake/*.cmake", *(f"{top}/**/CMakeLists.txt" for top in ("src", "tests", "bench")))


@functools.cache
def targets():
    return set(re.findall(r"add_(?:executable|custom_target)\(([\w-]+)", cmake_text())) | stems("tests/fuzz/*_fuzz.cpp")


@functools.cache
def rooms():
    return set(re.findall(r"brenquil_room\((\w+)", cmake_text()))


@functools.cache
def built_programs():
    """Below build/<preset>/."""
    return (targets() | {f"tests/unit/unit_{room}" for room in rooms()} | stems("bench/*.cpp", "bench/")
            | stems("tests/fuzz/*_fuzz.cpp", "tests/fuzz/"))


@functools.cache
def option_lines():
    return [match for line in printed_by(ENGINE, lines="uci\nquit\n").splitlines() if (match := OPTION.match(line))]


def option_names():
    return {match["name"] for match in option_lines()}


@functools.cache
def engine_commands():
    listed = re.findall(r"^(\w+) ", printed_by(ENGINE, lines="help\nquit\n"), re.MULTILINE)
    return {*listed, "quit", "isready", "ucinewgame", "setoption", "position", "go", "stop"}


@functools.cache
def vocabulary(program):
    """The options that a program has, the variables that it reads and the commands that it knows."""
    if program == "make":
        return {"-j4", *re.findall(r"(?m)(?<=\$\()\w+(?=\))|^[\w-]+(?=:| \?=)", read("Makefile"))}
    if program in TRIED:
        return set(TRIED[program].split())
    if program.startswith("build/"):
        place = Path(program).name
        if not place.startswith("brenquil"):
            return {"--gtest_filter"} if place.startswith("unit_") else set()
        text = printed_by(Path(ENGINE).with_name(place), "--help")
    else:
        script = ROOT / program
        require(script.is_file() and os.access(script, os.X_OK), f"there is no {program}")
        text = script.read_text()
        text = printed_by(script, "--help") if "--help" in text or "argparse" in text else text
    return set(re.findall(r"(?<![\w-])[\w-]+", text))


# What stands after one of these words has to be one of these names.
NAMED = [
    (r"cmake --preset (\S+)", lambda: presets("configurePresets")),
    (r"cmake --build --preset (\S+)", lambda: presets("buildPresets")),
    (r"ctest --preset (\S+)", lambda: presets("testPresets")),
    (r"cmake .*--target (\S+)", targets),
    (r"ctest .*-R (\S+)", lambda: rooms() | stems("tests/system/*_test.py")),
    (r"(?:printf '|\\n)(\w+)", engine_commands),
    (r'(?:-firstOptions "|,)([^=",]+)=', option_names),
]


def check_built(path):
    """build/<preset>/<program>"""
    folder, _, program = path.removeprefix("build/").rstrip("/").partition("/")
    require(folder in presets("configurePresets") | {"pgo", "test", "tools", "<preset>"}, f"no build/{folder}")
    pattern = re.sub(r"<\w+>", "*", program)
    require(not program or fnmatch.filter(built_programs(), pattern), f"nothing builds {path}")


def check_command(_, line):
    require(COMMAND.match(line + " "), f"no rule for {line}")
    for expression, names in NAMED:
        for name in re.findall(expression, line):
            require(name in names(), f"there is no {name}")
    for command in re.split(r" (?:&&|\|) ", line):
        words = shlex.split(command)
        variables = [word.split("=")[0] for word in words if re.match(r"[A-Z_]+=", word)]
        program, *rest = [word for word in words if not re.match(r"[A-Z_]+=", word)]
        if program.startswith("build/"):
            check_built(program)
        known = vocabulary(program)
        rest = [word for word in rest if word not in ("help", "--help")]
        wanted = [word.split("=")[0] for word in rest if word.startswith("-")]
        if program in ("./test", "make"):
            wanted += rest
        elif Path(program).name.startswith("brenquil"):
            wanted += rest[:1]
        for word in wanted + variables:
            require(word in known, f"{program} says nothing of {word}")
        for word in rest:
            if word.startswith("build/"):
                check_built(word)


def check_path(document, path):
    """A path is that of a file or folder; <word> and * stand for anything."""
    if path.startswith("build/"):
        check_built(path)
    elif not re.match(r"(?:dist|bin|web/(?:package|page)/dist)(?:/|$)", path):  # what is made or unpacked
        pattern = re.sub(r"<\w+>", "*", path).rstrip("/")
        tops = (ROOT, ROOT / "src", ROOT / "tests", document.parent)
        require(any(next(top.glob(pattern + end), None) for top in tops for end in ("", ".*")), f"there is no {path}")


# ---- the tests

class Documents(unittest.TestCase):
    def for_all(self, least, check, items):
        """Runs a check on (document, line number, text) and reports all faults together."""
        wrong, count = [], 0
        for document, number, text in items:
            count += 1
            try:
                check(document, text)
            except Wrong as error:
                wrong.append(f"{document.relative_to(ROOT)}:{number}: {error}")
        self.assertEqual(wrong, [])
        self.assertGreater(count, least)

    def of_kind(self, kind, pattern=".*", documents=tuple(DOCUMENTS)):
        for document in documents:
            for number, found, text in pieces(document):
                if found == kind and re.fullmatch(pattern, text, re.DOTALL):
                    yield document, number, text

    def test_kinds(self):
        for document in DOCUMENTS:
            self.assertEqual({kind for _, kind, _ in pieces(document)} - KINDS, set(), document)
            self.assertEqual(re.findall(r"^ {4,}(?:\./|tools/|cmake ).*", document.read_text(), re.MULTILINE), [])

    def test_commands(self):
        self.for_all(25, check_command, commands_in_blocks())
        self.for_all(10, check_command, commands_in_sentences())

    def test_paths(self):
        self.for_all(100, check_path, self.of_kind("code", r"[\w.*<>-]+(?:/[\w.*<>-]*)+"))

    def test_links(self):
        def check(document, target):
            require(re.match(r"[a-z]+://", target) or (document.parent / target.split("#")[0]).exists(),
                    f"there is no {target}")
        self.for_all(10, check, self.of_kind("link"))

    def test_names_of_classes_and_functions(self):
        words = set(re.findall(r"\w+", read("src/**/*.[hc]*", "tests/**/*.[hc]*"))) | option_names()
        architecture = [ROOT / "docs" / "architecture.md"]

        def check(_, text):
            for name in re.findall(r"\b(?:[CI][A-Z][a-z]|[A-Z][a-z]+[A-Z])\w+", text):
                require(name in words, f"nothing is called {name}")
        drawings = [(file, 1, file.read_text()) for file in (ROOT / "docs" / "drawings").glob("*.svg")]
        self.assertEqual(len(drawings), 3)
        self.for_all(30, check, [*self.of_kind("code", r"[CI]?[A-Z]\w+(?:::\w+)?", architecture), *drawings])

    def test_settings_in_ini_blocks(self):
        def check(_, text):
            for name in re.findall(r"^(.+?) *=", text.partition("[Engine]\n")[2], re.MULTILINE):
                require(name in option_names(), f"the engine has no option {name}")
        self.for_all(0, check, self.of_kind("ini"))

    def test_presets_are_told(self):
        rows = re.findall(r"^\| (`.*?) \|", CONTRIBUTING.read_text(), re.MULTILINE)
        self.assertLessEqual(presets("configurePresets"), set(re.findall(r"`([\w-]+)`", " ".join(rows))))

    def test_version_and_signature(self):
        version = re.search(r"project\(brenquil VERSION (\S+)", cmake_text())[1]
        for document in DOCUMENTS:
            text = document.read_text(encoding="utf-8")
            self.assertEqual(set(re.findall(r"[Bb]renquil[ _-]?(\d+\.\d+)", text)) - {version}, set(), document)
        signature = read("tests/system/bench_signature.txt").split()[-1]
        for document in (README, ROOT / "docs" / "testing.md"):
            self.assertIn(signature, document.read_text(encoding="utf-8"))
        named = set(re.findall(r"`(brenquil[-_][\d.]+[-_][\w-]+(?:\.\w+)+)`", README.read_text(encoding="utf-8")))
        made = set(re.findall(r"brenquil[-_]VERSION\S+", printed_by(ROOT / "package", "--help")))
        self.assertEqual({name.replace(version, "VERSION") for name in named}, made)


class Options(EngineTestCase):
    """The tables in README.md against the engine."""

    def test_tables_are_what_the_engine_prints(self):
        rows = re.findall(r"^\| `.*?` \| (?:check|spin|combo|string|button) \|.*", README.read_text(), re.MULTILINE)
        self.assertGreater(len(rows), 30)
        for row, match in zip_longest(rows, option_lines()):
            # The number of processors bounds what is printed for the threads.
            highest = "32" if match["name"] == "Threads" else match["max"]
            extent = f"{match['min']} to {highest}" if match["min"] else ", ".join(match["vars"].split(" var ")[1:])
            cells = [f"`{match['name']}`", match["type"], html.escape(match["default"]), extent]
            self.assertRegex(row, "^" + re.escape(f"| {' | '.join(cells)} | ".replace("|  |", "| |")) + r".+ \|$")

    def test_groups_and_names_of_the_ini_file(self):
        engine = self.start_console()
        engine.send("ini")
        engine.until(lambda line: line == "created")
        self.assert_quits(engine)
        written = (Path(self.directory) / "Brenquil3.00.ini").read_text()
        readme = README.read_text(encoding="utf-8")
        self.assertEqual(re.findall(r"^### (.*)\n\n\| option \|", readme, re.MULTILINE),
                         re.findall(r"^# (\w.*)", written, re.MULTILINE))

        table = readme.partition("| in the ini file |\n|---|---|\n")[2]
        others = dict(re.findall(r"^\| `?([^|`]+?)`? \| `?([^|`]+?)`? \|$", table, re.MULTILINE))
        names = {others.get(match["name"], match["name"]) for match in option_lines()} - {"-"} | {others["-"]}
        self.assertEqual(names, set(re.findall(r"^([^#\n].*?)=", written, re.MULTILINE)))


class Sessions(EngineTestCase):
    """The examples in the documents, typed line by line."""

    def play(self, lines):
        def masked(line):
            return VARYING.sub("", line).rstrip()

        engine = self.start_console()
        skips = False
        for line in lines:
            if line.startswith("> "):
                engine.send(line[2:])
            elif line == "...":
                skips = True
            elif skips:
                engine.until(lambda printed, wanted=masked(line): masked(printed) == wanted)
                skips = False
            else:
                # A slow machine reports once a second what a fast one has no time for.
                while not without_status([printed := engine.line()]) and masked(printed) != masked(line):
                    pass
                self.assertEqual(masked(printed), masked(line))
        self.assertEqual(lines[-1], "> quit")
        self.assertEqual(engine.wait(), 0)
        self.assertIsNone(engine.lines.get(timeout=seconds(10)))  # nothing that the document does not show

    def test_sessions(self):
        sessions = [(document, number, text) for document in DOCUMENTS for number, kind, text in pieces(document)
                    if kind == "console"]
        self.assertGreaterEqual(len(sessions), 2)
        for document, number, text in sessions:
            with self.subTest(f"{document.name}:{number}"):
                self.play(text.splitlines())


class Commands(unittest.TestCase):
    """Commands that are quick are run, with the engine under test in place of the one they name."""

    def run_all(self, program, least, **variables):
        lines = [line for _, _, line in commands_in_blocks() if re.match(rf"{VARIABLES}{program}(?: |$)", line)]
        self.assertGreaterEqual(len(lines), least)
        for line in lines:
            words = shlex.split(re.sub(f"^{VARIABLES}", "", line))
            done = subprocess.run([ENGINE if word.startswith("build/") else word for word in words], cwd=ROOT,
                                  stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True,
                                  timeout=seconds(60), check=False, env={**os.environ, **variables})
            self.assertEqual(done.returncode, 0, f"{line}: {done.stdout}")
            yield done.stdout

    def test_run(self):
        for printed in self.run_all(r"\./run", 2, ENGINE=ENGINE, SECONDS_TO_THINK="1"):
            self.assertRegex(printed, r"(?m)^info depth 1 .*(?:\n.*)*\nbestmove [a-h][1-8][a-h][1-8]")
            self.assertIn(str(Path(ENGINE).resolve()), printed)

    def test_analyse(self):
        for printed in self.run_all("tools/analyse.py", 1):
            self.assertRegex(printed, r"^[a-h][1-8][a-h][1-8]  depth \d+  score ")


if __name__ == "__main__":
    main()

#!/usr/bin/env python3
# ctest: once release-only timeout=180
"""What the documents tell people to type is there and works.

Each command of README.md, CONTRIBUTING.md, CHANGELOG.md and docs/ is run, or, where it would take
long, looked at word by word: scripts, options, stages, presets, targets and paths have to exist. A
command that no rule here knows fails, and so does a block of code of an unknown kind:

    ```sh         commands, one a line; "#" or two blanks begin a remark (also blocks by indentation)
    ```console    a session with the engine: "> " marks what is typed, "..." stands for any lines
    ```ini        settings; below [Engine] they are options of the engine
    ```text       drawings; not looked at
    ```html, js   pieces of pages; the tests of web/ run those that can be run

The tables of options in README.md are compared with what the engine prints.
"""
import functools
import json
import os
import re
import shlex
import subprocess
import tempfile
import unittest
from pathlib import Path

from engine_process import ENGINE, ROOT, VARYING, EngineTestCase, main, seconds, without_status

DOCUMENTS = [ROOT / "README.md", ROOT / "CONTRIBUTING.md", ROOT / "CHANGELOG.md",
             *sorted((ROOT / "docs").glob("*.md"))]
README = ROOT / "README.md"
OPTION_LINE = re.compile(r"option name (?P<name>.+?) type (?P<type>\w+)"
                         r"(?: default (?P<default>.*?))?(?: min (?P<min>-?\d+) max (?P<max>-?\d+))?"
                         r"(?P<vars>(?: var \w+)*)$")
# What people put in place of these words is theirs.
PLACEHOLDER = re.compile(r"<\w+>|[A-Z][A-Z-]*(?:=[A-Z]+)?|NAME=VALUE|/(?:tables|books)\b.*")
# Paths in the documents that are not files of the repository: what is built or unpacked.
MADE_PATHS = re.compile(r"(?:build|dist|bin|web/(?:package|page)/dist)(?:/|$)|(?:/|[A-Z]:).*")


class Wrong(Exception):
    """What a command or a path names is not there."""


def require(condition, message):
    if not condition:
        raise Wrong(message)


# ---- the parts of a document

class Block:
    """A block of code: its kind, its lines, and where it stands."""

    def __init__(self, kind, number):
        self.kind, self.number, self.lines = kind, number, []


def blocks_and_prose(path):
    """The blocks of code of a document, and its other lines with their numbers."""
    blocks, prose, fence, before = [], [], None, ""
    for number, line in enumerate(path.read_text(encoding="utf-8").splitlines(), 1):
        if line.lstrip().startswith("```"):
            if fence:
                fence = None
            else:
                fence = Block(line.strip()[3:], number)
                blocks.append(fence)
        elif fence:
            fence.lines.append(line)
        elif line.startswith("    ") and not before.strip():
            # Text that is set in below a point of a list is no code; points begin at the margin.
            blocks.append(Block("sh", number))
            blocks[-1].lines.append(line)
            continue
        elif line.startswith("    ") and blocks and before == "code":
            blocks[-1].lines.append(line)
            continue
        else:
            prose.append((number, line))
        before = line
    return blocks, prose


def remark_cut(line):
    """The command of a line, without a remark behind two blanks or a hash."""
    return re.sub(r"(?<=\S)(?:  .*| #.*)$", "", line.strip())


def spans(prose):
    """The pieces in backticks, also those that run over the end of a line."""
    text = "\n".join(line for _, line in prose)
    for match in re.finditer(r"`([^`]+)`", text):
        yield prose[text.count("\n", 0, match.start())][0], " ".join(match[1].split())


# ---- what there is

@functools.lru_cache(maxsize=None)
def presets(kind):
    data = json.loads((ROOT / "CMakePresets.json").read_text())
    return {entry["name"]: entry for entry in data[kind] if not entry.get("hidden")}


@functools.lru_cache(maxsize=None)
def build_folders():
    """The names below build/ that the presets use."""
    folders = set()
    for name, entry in presets("configurePresets").items():
        folders.add(Path(entry.get("binaryDir", f"build/{name}")).name)
    return folders | {"pgo"}


@functools.lru_cache(maxsize=None)
def cmake_text():
    files = [ROOT / "CMakeLists.txt", *ROOT.glob("cmake/*.cmake"),
             *(file for top in ("src", "tests", "bench") for file in (ROOT / top).rglob("CMakeLists.txt"))]
    return "\n".join(file.read_text() for file in files)


@functools.lru_cache(maxsize=None)
def test_names():
    names = [f"system.{file.stem}" for file in (ROOT / "tests" / "system").glob("*_test.py")]
    for room in re.findall(r"brenquil_room\((\w+)", cmake_text()):
        names.append(f"{room}.unit")
    return names


@functools.lru_cache(maxsize=None)
def help_of(script):
    """What a script says of itself: the answer to --help, or its text if it has no such option."""
    path = ROOT / script
    require(path.is_file() and os.access(path, os.X_OK), f"there is no script {script}")
    text = path.read_text()
    if "--help" not in text and "argparse" not in text:
        return text
    done = subprocess.run([path, "--help"], stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                          stdin=subprocess.DEVNULL, text=True, timeout=seconds(60), check=False)
    require(done.returncode == 0 and done.stdout.strip(), f"{script} --help fails: {done.stdout[-500:]}")
    return done.stdout


def room_folder(room):
    return next((ROOT / "tests" / "unit").rglob(room), None)


# ---- the rules for commands

def split_variables(words):
    """NAME=value in front of a command, and the rest."""
    count = 0
    while count < len(words) and re.match(r"[A-Z][A-Z_]*=", words[count]):
        count += 1
    return [word.split("=", 1)[0] for word in words[:count]], words[count:]


def check_script(variables, words):
    script, *arguments = words
    text = help_of(script)
    for name in variables:
        require(name in text, f"{script} says nothing of the variable {name}")
    for option in {word.split("=", 1)[0] for word in arguments if word.startswith("-")} - {"--help"}:
        require(re.search(rf"(?<![\w-]){re.escape(option)}(?![\w-])", text),
                f"{script} says nothing of {option}")
    if script == "./test":
        for stage in arguments:
            require(PLACEHOLDER.fullmatch(stage) or stage.startswith("-")
                    or re.search(rf"^ +(?:\./test )?{stage}\b", text, re.MULTILINE),
                    f"./test has no stage {stage}")
    for path in (word for word in arguments if word.startswith("build/")):
        check_built(path)


def check_built(path):
    """build/<preset>/<program>"""
    _, folder, *rest = path.split("/", 2)
    require(PLACEHOLDER.fullmatch(folder) or folder in build_folders() | {"test", "tools"},
            f"no preset builds in build/{folder}")
    program = rest[0].removesuffix(".exe") if rest else ""
    if program in ("", "brenquil"):
        return
    place, _, name = program.rpartition("/")
    name = re.sub(r"<\w+>", "*", name)
    known = (place == "bench" and list((ROOT / "bench").glob(name + ".cpp"))
             or place == "tests/fuzz" and list((ROOT / "tests" / "fuzz").glob(name + ".cpp"))
             or place == "tests/unit" and name.startswith("unit_") and room_folder(name[len("unit_"):])
             or f"add_executable({name} " in cmake_text())
    require(known, f"nothing builds {path}")


def check_program(variables, words):
    check_built(words[0])
    for name in variables:
        sources = (ROOT / top for top in ("src", "tests", "bench"))
        require(any(name in file.read_text(errors="replace") for source in sources
                    for file in source.rglob("*.cpp")), f"nobody reads the variable {name}")
    if words[0].endswith("/brenquil"):
        require(len(words) == 1 or words[1] == "bench", f"the engine has no argument {words[1:]}")


def check_cmake(_, words):
    arguments = words[1:]
    kind = "configurePresets"
    while arguments:
        word = arguments.pop(0)
        if word == "--build":
            kind = "buildPresets"
        elif word == "--preset":
            name = arguments.pop(0)
            require(name in presets(kind), f"CMakePresets.json has no {name} in {kind}")
        elif word == "--target":
            target = arguments.pop(0)
            require(re.search(rf"\b{target}\b", cmake_text()) or
                    list((ROOT / "tests" / "fuzz").glob(target + ".cpp")), f"no target {target}")
        elif word == "--install":
            check_built(arguments.pop(0))
        elif word == "--prefix":
            arguments.pop(0)
        elif word.startswith("-DBRENQUIL_"):
            require(re.search(rf"\b{word[2:].split('=')[0]}\b", cmake_text()), f"no option {word}")
        else:
            raise Wrong(f"no rule for cmake {word}")


def check_make(_, words):
    """Variables and targets that the Makefile knows."""
    text = (ROOT / "Makefile").read_text()
    for word in words[1:]:
        name, _, value = word.partition("=")
        known = rf"(?m)^\s*{name} \?= |\$\({name}\)" if value else rf"(?m)^{name}:"
        require(re.fullmatch(r"-j\d*", word) or re.search(known, text), f"the Makefile has no {name}")


def check_ctest(_, words):
    arguments = words[1:]
    while arguments:
        word, value = arguments[:2]
        del arguments[:2]
        if word == "--preset":
            require(value in presets("testPresets"), f"CMakePresets.json has no test preset {value}")
        elif word == "-R":
            require(any(re.search(value, name) for name in test_names()), f"no test is called {value}")
        elif word == "-L":
            require(value in ("slow", "release-only", "unit", "system"), f"no label {value}")
        else:
            raise Wrong(f"no rule for ctest {word}")


def check_xboard(_, words):
    """Other people's program: these of its options have been tried."""
    tried = {"-fUCI", "-fcp", "-fd", "-sUCI", "-scp", "-matchGames", "-tc", "-inc", "-variant",
             "-xponder", "-firstOptions"}
    for word in words[1:]:
        require(not word.startswith("-") or word in tried, f"nobody has tried xboard {word}")
    if "-firstOptions" in words:
        for setting in words[words.index("-firstOptions") + 1].split(","):
            require(setting.split("=")[0] in option_names(), f"the engine has no option in {setting}")


def check_engine_input(_, words):
    """printf of lines for the engine: each begins with a command."""
    known = set(re.findall(r"^(\w+) ", engine_help(), re.MULTILINE)) | {
        "quit", "isready", "ucinewgame", "setoption", "position", "go", "stop"}
    for line in words[1].replace("\\n", "\n").split("\n"):
        require(not line or line.split()[0] in known, f"the engine has no command {line}")


def check_nothing(_, words):
    """Commands of the system."""


RULES = {"cmake": check_cmake, "make": check_make, "ctest": check_ctest, "xboard": check_xboard, "printf": check_engine_input,
         "polyglot": check_nothing, "apt": check_nothing, "podman": check_nothing}


def rule_for(program):
    if program in ("./run", "./test", "./package") or program.startswith(("tools/", "bench/", "web/")):
        return check_script
    return check_program if program.startswith("build/") else RULES.get(program)


def commands_of(line):
    """The commands of a line that are joined by && or |."""
    words = shlex.split(line)
    commands = [[]]
    for word in words:
        if word in ("&&", "|", ";"):
            commands.append([])
        else:
            commands[-1].append(word)
    return [split_variables(command) for command in commands]


def check_line(line):
    for variables, words in commands_of(line):
        require(words, f"no command in {line}")
        rule = rule_for(words[0])
        require(rule, f"no rule for {words[0]}")
        rule(variables, words)


def check_path(path, document):
    """A path in backticks is that of a file or folder; <word> and * stand for anything."""
    if MADE_PATHS.match(path):
        if path.startswith("build/"):
            check_built(path.rstrip("/"))
        return
    pattern = re.sub(r"<\w+>", "*", path).rstrip("/")
    for top in (ROOT, ROOT / "src", ROOT / "tests", document.parent):
        if next(top.glob(pattern), None) or next(top.glob(pattern + ".*"), None):
            return
    raise Wrong(f"there is no {path}")


@functools.lru_cache(maxsize=None)
def answers(*lines):
    """What the engine prints on these lines, in a folder without an ini file."""
    with tempfile.TemporaryDirectory(prefix="brenquil-") as folder:
        done = subprocess.run([ENGINE], input="\n".join((*lines, "quit\n")), stdout=subprocess.PIPE, text=True,
                              cwd=folder, timeout=seconds(60), check=False)
    return done.stdout


def engine_help():
    return answers("help")


def option_lines():
    return [match for line in answers("uci").splitlines() if (match := OPTION_LINE.match(line))]


def option_names():
    return {match["name"] for match in option_lines()}


# ---- the tests

class Documents(unittest.TestCase):
    def for_all(self, check, items):
        """Runs a check on (document, line number, what) and tells all that is wrong."""
        wrong, count = [], 0
        for document, number, what in items:
            count += 1
            try:
                check(document, what)
            except Wrong as error:
                wrong.append(f"{document.relative_to(ROOT)}:{number}: {error}")
        self.assertEqual(wrong, [])
        return count

    def test_commands_in_blocks(self):
        def lines():
            for document in DOCUMENTS:
                for block in blocks_and_prose(document)[0]:
                    if block.kind == "sh":
                        for offset, line in enumerate(block.lines):
                            if remark_cut(line) and not line.strip().startswith("#"):
                                yield document, block.number + offset, remark_cut(line)
                    elif block.kind not in ("console", "ini", "text", "html", "js"):
                        yield document, block.number, None

        def check(_, line):
            require(line, "a block of code of an unknown kind")
            check_line(line)
        self.assertGreater(self.for_all(check, lines()), 25)

    def test_commands_and_paths_in_sentences(self):
        def pieces():
            for document in DOCUMENTS:
                for number, piece in spans(blocks_and_prose(document)[1]):
                    yield document, number, piece

        def check(document, piece):
            first = split_variables(piece.split(" "))[1][:1]
            if first and rule_for(first[0]) and (" " in piece or piece.startswith("./")):
                check_line(piece)
            elif re.fullmatch(r"[\w.*<>-]+(?:/[\w.*<>-]*)+", piece):
                check_path(piece, document)
        self.assertGreater(self.for_all(check, pieces()), 100)

    def test_links(self):
        def links():
            for document in DOCUMENTS:
                for number, line in blocks_and_prose(document)[1]:
                    for target in re.findall(r"\]\(([^)]+)\)", line):
                        yield document, number, target

        def check(document, target):
            if not re.match(r"[a-z]+://", target):
                require((document.parent / target.split("#")[0]).exists(), f"there is no {target}")
        self.assertGreater(self.for_all(check, links()), 10)

    def test_names_of_classes_and_functions(self):
        source = "\n".join(file.read_text() for file in (ROOT / "src").rglob("*.[hc]*"))
        words = set(re.findall(r"\w+", source + "".join(
            file.read_text() for file in (ROOT / "tests").rglob("*.[hc]*"))))

        def names():
            document = ROOT / "docs" / "architecture.md"
            blocks, prose = blocks_and_prose(document)
            for number, piece in spans(prose):
                if re.fullmatch(r"[CI][A-Z]\w+(?:::\w+)?|[A-Z][a-z]+[A-Z]\w*", piece):
                    yield document, number, piece
            for block in blocks:
                for offset, line in enumerate(block.lines, 1):
                    for name in re.findall(r"\b(?:C[A-Z]|[A-Z][a-z]+[A-Z])\w+", line):
                        yield document, block.number + offset, name

        def check(_, name):
            for part in name.split("::"):
                require(part in words or part in option_names(), f"nothing is called {part}")
        self.assertGreater(self.for_all(check, names()), 30)

    def test_settings_in_ini_blocks(self):
        def settings():
            for document in DOCUMENTS:
                for block in blocks_and_prose(document)[0]:
                    section = ""
                    for offset, line in enumerate(block.lines if block.kind == "ini" else [], 1):
                        section = line if line.startswith("[") else section
                        if section == "[Engine]" and "=" in line:
                            yield document, block.number + offset, line.split("=")[0].strip()

        def check(_, name):
            require(name in option_names(), f"the engine has no option {name}")
        self.assertGreater(self.for_all(check, settings()), 0)

    def test_presets_are_told(self):
        told = set()
        for _, line in blocks_and_prose(ROOT / "CONTRIBUTING.md")[1]:
            if line.startswith("| `"):
                told.update(re.findall(r"`([\w-]+)`", line.split("|")[1]))
        self.assertEqual(set(presets("configurePresets")) - told, set())

    def test_version_and_signature(self):
        version = re.search(r"project\(brenquil VERSION (\S+)", cmake_text())[1]
        for document in DOCUMENTS:
            text = document.read_text(encoding="utf-8")
            self.assertEqual(set(re.findall(r"[Bb]renquil[ _-]?(\d+\.\d+)", text)) - {version}, set(), document)
        signature = (ROOT / "tests" / "system" / "bench_signature.txt").read_text().split()[-1]
        for document in (README, ROOT / "docs" / "testing.md"):
            self.assertIn(signature, document.read_text(encoding="utf-8"))

    def test_packages(self):
        version = re.search(r"project\(brenquil VERSION (\S+)", cmake_text())[1]
        named = set(re.findall(r"`(brenquil[-_][\d.]+[-_][\w-]+(?:\.\w+)+)`", README.read_text(encoding="utf-8")))
        made = set(re.findall(r"brenquil[-_]VERSION\S+", help_of("./package")))
        self.assertEqual({name.replace(version, "VERSION") for name in named}, made)


class Options(unittest.TestCase):
    """The tables in README.md against the engine."""

    def groups(self):
        """The rows of each table of options, under the name of its group."""
        groups, group, inside = {}, "", False
        for _, line in blocks_and_prose(README)[1]:
            if line.startswith("#"):
                group, inside = line.lstrip("# "), False
            elif line.startswith("| option | type | default | range |"):
                groups[group], inside = [], True
            elif inside and line.startswith("| `"):
                groups[group].append([cell.strip().strip("`") for cell in line.strip("|").split("|")])
            else:
                inside = inside and line.startswith("|--")
        return groups

    def test_table_is_what_the_engine_prints(self):
        printed = option_lines()
        self.assertGreater(len(printed), 30)
        rows = [row for group in self.groups().values() for row in group]
        self.assertEqual([row[0] for row in rows], [match["name"] for match in printed])
        for (name, kind, default, extent, sentence), match in zip(rows, printed):
            self.assertEqual(kind, match["type"], name)
            self.assertEqual(default.replace("&lt;", "<").replace("&gt;", ">"), match["default"], name)
            self.assertTrue(sentence, name)
            if kind == "spin":
                # The number of processors bounds what is printed for the threads.
                highest = "32" if name == "Threads" else match["max"]
                self.assertLessEqual(int(match["max"]), int(highest))
                self.assertEqual(extent, f"{match['min']} to {highest}", name)
            elif kind == "combo":
                self.assertEqual(extent, ", ".join(match["vars"].split(" var ")[1:]), name)
            else:
                self.assertEqual(extent, "", name)


class IniNames(EngineTestCase):
    def test_groups_and_names_of_the_ini_file(self):
        engine = self.start_console()
        engine.send("ini")
        engine.until(lambda line: line == "created")
        self.assert_quits(engine)
        written = (Path(self.directory) / "Brenquil3.00.ini").read_text().splitlines()
        groups = [line[2:] for line in written if re.match(r"# \w", line)]
        self.assertEqual(list(Options().groups()), groups)

        others = dict(re.findall(r"^\| (`.*?`|-) \| (`.*?`|-) \|$", README.read_text(encoding="utf-8"),
                                 re.MULTILINE))
        others = {uci.strip("`"): ini.strip("`") for uci, ini in others.items()}
        names = {line.split("=")[0] for line in written if "=" in line}
        expected = {others.get(match["name"], match["name"]) for match in option_lines()} - {"-"}
        self.assertEqual(expected | {others["-"]}, names)


class Sessions(EngineTestCase):
    """The examples in the documents, typed line by line."""

    def masked(self, line):
        return VARYING.sub("", line).rstrip()

    def play(self, lines):
        engine = self.start_console()
        for at, line in enumerate(lines):
            if line.startswith("> "):
                engine.send(line[2:])
                if line == "> quit":
                    # Nothing may have been printed that the document does not show.
                    self.assertEqual(engine.wait(), 0)
                    self.assertIsNone(engine.lines.get(timeout=seconds(10)))
                    return
            elif line == "...":
                following = self.masked(lines[at + 1])
                engine.until(lambda text: self.masked(text) == following)
            elif at and lines[at - 1] == "...":
                pass
            else:
                printed = engine.line()
                # A slow machine reports once a second what a fast one has no time for.
                while self.masked(printed) != self.masked(line) and not without_status([printed]):
                    printed = engine.line()
                self.assertEqual(self.masked(printed), self.masked(line))
        self.fail("a session ends with quit")

    def test_sessions(self):
        count = 0
        for document in DOCUMENTS:
            for block in blocks_and_prose(document)[0]:
                if block.kind == "console":
                    with self.subTest(f"{document.name}:{block.number}"):
                        self.play(block.lines)
                    count += 1
        self.assertGreaterEqual(count, 2)


class Commands(unittest.TestCase):
    """Commands that are quick are run, with the engine under test in place of the one they name."""

    def run_command(self, words, **variables):
        done = subprocess.run(words, cwd=ROOT, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                              stderr=subprocess.STDOUT, text=True, timeout=seconds(60), check=False,
                              env={**os.environ, **variables})
        self.assertEqual(done.returncode, 0, f"{words}: {done.stdout}")
        return done.stdout

    def commands(self, script):
        for document in DOCUMENTS:
            for block in blocks_and_prose(document)[0]:
                for line in block.lines if block.kind == "sh" else []:
                    for variables, words in commands_of(remark_cut(line)):
                        if words and words[0] == script:
                            yield variables, words

    def test_run(self):
        commands = list(self.commands("./run"))
        self.assertGreaterEqual(len(commands), 2)
        for _, words in commands:
            printed = self.run_command(words, ENGINE=ENGINE, SECONDS_TO_THINK="1")
            self.assertRegex(printed, r"(?m)^info depth 1 .*(?:\n.*)*\nbestmove [a-h][1-8][a-h][1-8]")
            self.assertIn(str(Path(ENGINE).resolve()), printed)

    def test_analyse(self):
        commands = list(self.commands("tools/analyse.py"))
        self.assertGreaterEqual(len(commands), 1)
        for _, words in commands:
            words[words.index("--engine") + 1] = ENGINE
            self.assertRegex(self.run_command(words), r"^[a-h][1-8][a-h][1-8]  depth \d+  score ")


if __name__ == "__main__":
    main()

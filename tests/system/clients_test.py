#!/usr/bin/env python3
# ctest: slow once timeout=600
"""What docs/clients.md gives people to copy, run as it stands there, where the client is installed.

Only the paths of the program and the length of play are replaced.
"""
import configparser
import os
import re
import shutil
import signal
import subprocess
import sys
import time
import unittest
from pathlib import Path

from engine_process import ENGINE, ROOT, SYSTEM, EngineTestCase, main, seconds

DOCUMENT = ROOT / "docs" / "clients.md"
TOOLS = ROOT.parent / "shared" / "tools"
GAMES = ":/usr/games"
OPENINGS = ("rnbqkbnr/pppp1ppp/8/4p3/4P3/8/PPPP1PPP/RNBQKBNR w KQkq - 0 2\n"
            "rnbqkb1r/pppppp1p/5np1/8/2PP4/8/PP2PPPP/RNBQKBNR w KQkq - 0 3\n")
# By nodes, so that no game is lost because the machine is busy.
SHORTER = (("tc=10+0.1", "tc=inf nodes=2000"), ("-rounds 50", "-rounds 1"), ("-concurrency 2", "-concurrency 1"))


def piece(heading, number=0):
    """The text of a block below a heading."""
    section = DOCUMENT.read_text(encoding="utf-8").split(f"\n## {heading}\n")[1].split("\n## ")[0]
    return re.findall(r"^```\w+\n(.*?)^```$", section, re.MULTILINE | re.DOTALL)[number]


def option_line(lines, name):
    return next((line for line in lines if line.startswith(f"option name {name} type ")), None)


@unittest.skipUnless(SYSTEM == "Linux", "the pieces are those for Linux")
class Clients(EngineTestCase):
    arguments = ("--strict-uci",)

    def setUp(self):
        super().setUp()
        self.folder = Path(self.directory)
        (self.folder / "bin").mkdir()
        # By scripts, as the engine itself may be a script that starts an emulator; then its name is not a switch.
        self.write("bin/brenquil", f'#!/bin/sh\nexec "{ENGINE}" "$@"\n').chmod(0o755)
        self.write("bin/brenquil-strict", f'#!/bin/sh\nexec "{ENGINE}" --strict-uci "$@"\n').chmod(0o755)
        self.path = f"{self.folder / 'bin'}:{os.environ['PATH']}{GAMES}"

    def write(self, name, text):
        path = self.folder / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(text, encoding="utf-8")
        return path

    def need(self, *programs):
        for program in programs:
            if shutil.which(program, path=self.path) is None:
                self.skipTest(f"{program} is not installed")

    def here(self, text):
        """The piece with the program under test in place of the installed one."""
        return text.replace("/usr/games/brenquil", f"{self.folder}/bin/brenquil").replace(
            "/usr/games", f"{self.folder}/bin")

    def begin(self, command, **more):
        environment = {**os.environ, "PATH": self.path, "HOME": str(self.folder), **more}
        process = subprocess.Popen(command, cwd=self.folder, env=environment, stdin=subprocess.PIPE, text=True,
                                   stdout=subprocess.PIPE, stderr=subprocess.STDOUT, start_new_session=True)
        self.addCleanup(self.end, process)
        return process

    @staticmethod
    def end(process):
        """Clients start programs of their own, which go with them."""
        try:
            os.killpg(process.pid, signal.SIGKILL)
        except ProcessLookupError:
            pass
        process.communicate()

    def run_to_its_end(self, command, **more):
        return self.begin(command, **more).communicate(timeout=seconds(240))[0]

    def write_down_what_is_told(self):
        """In the file `in`. Such a program does not end by itself, and some clients wait for its end."""
        self.write("bin/brenquil-strict", f'#!/bin/sh\ntee -a "{self.folder}/in" | "{ENGINE}" --strict-uci "$@"\n')

    def match(self, heading):
        command = self.here(piece(heading))
        for old, new in SHORTER:
            self.assertIn(old, command)
            command = command.replace(old, new)
        self.write("openings.epd", OPENINGS)
        printed = self.run_to_its_end(["bash", "-c", command])
        self.assertIn("Finished game 2", printed)
        for word in ("Warning", "illegal", "disconnect", "stall"):
            self.assertNotIn(word, printed)
        self.assertEqual((self.folder / "games.pgn").read_text().count("[Result "), 2)

    def test_fastchess(self):
        if not (TOOLS / "fastchess").is_file():
            self.need("fastchess")
        else:
            (self.folder / "bin" / "fastchess").symlink_to(TOOLS / "fastchess")
        self.match("fastchess")
        # Its other piece is the check that match_tool_test.py runs often.
        self.assertEqual(piece("fastchess", 1), "fastchess --compliance /usr/games/brenquil-strict\n")

    def test_cutechess_cli(self):
        self.need("cutechess-cli")
        self.match("cutechess-cli")

    def test_lichess_bot(self):
        # Lines "name: value" below the section; no reader of YAML is needed for that.
        rows = [re.fullmatch(r'( *)([^:]+):(?: "?([^"]*)"?)?', line).groups() for line in piece("lichess-bot").splitlines()]
        values = {name: value for _, name, value in rows}
        self.assertEqual([(len(indent), name) for indent, name, value in rows if value is None],
                         [(0, "engine"), (2, "uci_options")])
        self.assertEqual((values["dir"], values["name"], values["protocol"]), ("/usr/games/", "brenquil-strict", "uci"))
        try:
            import yaml
            parsed = yaml.safe_load(piece("lichess-bot"))["engine"]
            self.assertEqual(set(parsed["uci_options"]), {name for indent, name, _ in rows if len(indent) == 4})
        except ImportError:
            pass
        engine = self.start_console()
        lines = engine.uci()
        for indent, name, value in rows:
            if len(indent) == 4:
                self.assertTrue(option_line(lines, name), name)
                engine.send(f"setoption name {name} value {value}")
        # The bot gives up where an option is not known; here nothing is said against one.
        self.assertEqual([line for line in engine.ready() if "tablebases" not in line and "Threads is" not in line], [])
        self.assert_quits(engine)

    def test_python_chess(self):
        if not (TOOLS / "python-chess").is_dir():
            try:
                import chess.engine  # noqa: F401
            except ImportError:
                self.skipTest("python-chess is not installed")
        script = self.write("script.py", self.here(piece("python-chess")))
        printed = self.run_to_its_end([sys.executable, "-B", str(script)], PYTHONPATH=str(TOOLS / "python-chess"))
        self.assertNotIn("Traceback", printed)
        self.assertEqual(len(re.findall(r"^PovScore\(.*PovWdl\(.* 1\. ", printed, re.MULTILINE)), 3, printed)
        self.assertRegex(printed.splitlines()[-1], r"^\S+ [wb] \S+ \S+ \d+ \d+$")

    def test_gnome_chess(self):
        self.need("gnome-chess", "xvfb-run", "dbus-run-session")
        self.write_down_what_is_told()
        self.write("config/gnome-chess/engines.conf", piece("gnome-chess"))
        # The person plays Black, so the engine moves at once.
        self.write("config/glib-2.0/settings/keyfile", "[org/gnome/Chess]\nplay-as='black'\n")
        self.begin(["xvfb-run", "-a", "dbus-run-session", "gnome-chess"], GSETTINGS_BACKEND="keyfile",
                   GSK_RENDERER="cairo", XDG_CONFIG_HOME=str(self.folder / "config"))
        told = self.wait_for_input(r"(?m)^go .*depth 1$")
        self.assertRegex(told, r"(?m)^uci\n(.*\n)*position startpos")

    def wait_for_input(self, pattern):
        """What the client has told the engine, when it has told what is wanted."""
        end = time.monotonic() + seconds(60)
        told = ""
        while time.monotonic() < end:
            told = (self.folder / "in").read_text() if (self.folder / "in").exists() else ""
            if re.search(pattern, told):
                return told
            time.sleep(0.2)
        self.fail(f"the engine was told: {told}")

    def test_polyglot(self):
        self.need("polyglot")
        self.write_down_what_is_told()
        self.write("brenquil.ini", self.here(piece("Polyglot")))
        process = self.begin(["polyglot", "brenquil.ini"])
        process.stdin.write("xboard\nprotover 2\nnew\nst 1\nhard\nusermove e2e4\n")
        process.stdin.flush()
        lines = []
        for line in process.stdout:
            lines.append(line)
            if line.startswith("move "):
                break
        self.assertRegex(lines[-1], r"^move [a-h][1-8][a-h][1-8]$", "".join(lines))
        told = (self.folder / "in").read_text()
        self.assertIn("setoption name Move Overhead value 50", told)
        self.assertIn("setoption name Hash value 128", told)


class Document(unittest.TestCase):
    def test_pieces_of_settings_can_be_read(self):
        polyglot = configparser.ConfigParser()
        polyglot.read_string(piece("Polyglot"))
        self.assertEqual(polyglot["PolyGlot"]["EngineCommand"], "brenquil-strict")
        gnome = configparser.ConfigParser()
        gnome.read_string(piece("gnome-chess"))
        self.assertEqual(gnome["Brenquil"]["protocol"], "uci")

    def test_every_client_of_the_table_but_two_has_a_section(self):
        text = DOCUMENT.read_text(encoding="utf-8")
        clients = [row.split("|")[1].split(",")[0].strip() for row in text.splitlines() if row.startswith("| ")][1:]
        self.assertGreater(len(clients), 6)
        self.assertEqual({name for name in clients if f"\n## {name}\n" not in text}, {"OpenBench", "PyChess"})


if __name__ == "__main__":
    main()

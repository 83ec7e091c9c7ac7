#!/usr/bin/env python3
# ctest: timeout=240
"""One thread answers the same each time, and the bench has its signature."""
import subprocess
from pathlib import Path

from engine_process import ENGINE, EngineTestCase, is_end, main, seconds, without_status

POSITIONS = (
    "r3k2r/p1ppqpb1/bn2pnp1/3PN3/1p2P3/2N2Q1p/PPPBBPPP/R3K2R w KQkq - 0 1",
    "8/8/1p1r1k2/p1pPN1p1/P3KnP1/1P6/8/3R4 b - - 0 1",
    "bbqnnrkr/pp1ppppp/8/2p5/8/3P4/PPP1PPPP/BBQNNRKR w HFhf - 0 2",
)


def signatures():
    """Nodes by depth, from the golden file."""
    text = (Path(__file__).parent / "bench_signature.txt").read_text(encoding="ascii")
    rows = [line.split() for line in text.splitlines() if line and not line.startswith("#")]
    return {int(depth): int(nodes) for depth, nodes in rows}


def bench(depth=None):
    """The lines of the bench."""
    command = [ENGINE, "bench"] + ([str(depth)] if depth else [])
    done = subprocess.run(command, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                          stderr=subprocess.STDOUT, timeout=seconds(200), check=True)
    return done.stdout.decode("ascii").splitlines()


class Determinism(EngineTestCase):
    def session(self, lines):
        """The answers of a fresh program to searches sent one after the other."""
        engine = self.start_uci()
        answers = []
        for line in lines:
            engine.send(line)
            if line.startswith("go"):
                answers += without_status(engine.until(is_end))
        self.assert_quits(engine)
        return answers

    def test_same_commands_have_the_same_answers(self):
        lines = ["setoption name Hash value 2"]
        for fen in POSITIONS:
            lines += [f"position fen {fen}", "go depth 6", "go depth 7", "go nodes 20000"]
        lines += ["setoption name MultiPV value 4", "go depth 5", "ucinewgame", "go depth 7"]
        first = self.session(lines)
        self.assertGreater(len(first), 60)
        self.assertEqual(self.session(lines), first)

    def test_twenty_growing_node_budgets(self):
        lines = []
        for i in range(20):
            lines += [f"position fen {POSITIONS[i % 3]}", f"go nodes {int(500 * 1.35 ** i)}"]
        self.assertEqual(self.session(lines), self.session(lines))

    def test_ucinewgame_forgets_the_searches_before(self):
        line = "go depth 7"
        fresh = self.session([f"position fen {POSITIONS[0]}", line])
        both = self.session(["go depth 8", "ucinewgame", f"position fen {POSITIONS[0]}", line])
        self.assertEqual(both[-len(fresh):], fresh)


class Bench(EngineTestCase):
    def test_signature_at_depth_4(self):
        lines = bench(4)
        self.assertRegex(lines[-1], rf"^{signatures()[4]} nodes \d+ nps$")

    def test_lines_add_up(self):
        lines = bench(2)
        total = sum(int(line.split()[0]) for line in lines[:-3])
        self.assertGreaterEqual(len(lines), 43)
        self.assertRegex(lines[-1], rf"^{total} nodes \d+ nps$")
        self.assertEqual(lines[-3], f"nodes: {total}")


if __name__ == "__main__":
    main()

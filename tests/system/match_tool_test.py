#!/usr/bin/env python3
# ctest: slow serial timeout=900
"""What a match tool says of the strict dialect: its compliance check, and the warnings of a short match.

Skipped where the tool is not beside the repository.
"""
import os
import subprocess
import unittest

from engine_process import ENGINE, ROOT, SYSTEM, EngineTestCase, main, seconds

TOOL = ROOT.parent / "shared" / "tools" / "fastchess"
OPENINGS = (
    "rnbqkbnr/pppp1ppp/8/4p3/4P3/8/PPPP1PPP/RNBQKBNR w KQkq -",
    "rnbqkbnr/pp1ppppp/8/2p5/4P3/8/PPPP1PPP/RNBQKBNR w KQkq -",
    "rnbqkb1r/pppppp1p/5np1/8/2PP4/8/PP2PPPP/RNBQKBNR w KQkq -",
    "8/5k2/8/3N4/8/8/PPP5/2K4r w - -",
    "r3k2r/pppq1ppp/2npbn2/2b1p3/2B1P3/2NPBN2/PPPQ1PPP/R3K2R w KQkq -",
)


@unittest.skipUnless(TOOL.is_file() and SYSTEM == "Linux", "the match tool is not there")
class MatchTool(EngineTestCase):
    CHECKS = 2
    ROUNDS = 2

    def setUp(self):
        super().setUp()
        # The tool passes no arguments in its check, so the program is called by its other name.
        self.program = os.path.join(self.directory, "brenquil-strict")
        with open(self.program, "w", encoding="utf-8") as script:
            script.write(f'#!/bin/sh\nexec "{ENGINE}" --strict-uci "$@"\n')
        os.chmod(self.program, 0o755)

    def run_tool(self, *arguments):
        done = subprocess.run([str(TOOL), *arguments], cwd=self.directory, capture_output=True, text=True,
                              timeout=seconds(600), check=False)
        return done.stdout + done.stderr

    def test_compliance_check_passes_all_its_steps(self):
        for number in range(self.CHECKS):
            report = self.run_tool("--compliance", self.program)
            with self.subTest(number=number):
                self.assertIn("Engine passed all compliance checks.", report)
                self.assertNotIn("Failed", report)

    def test_match_has_no_warning(self):
        with open(os.path.join(self.directory, "openings.epd"), "w", encoding="utf-8") as openings:
            openings.write("\n".join(OPENINGS) + "\n")
        report = self.run_tool(
            "-engine", f"cmd={self.program}", "name=one", "-engine", f"cmd={self.program}", "name=two",
            "-each", "proto=uci", "tc=1+0.02", "option.Hash=4", "-rounds", str(self.ROUNDS), "-games", "2",
            "-concurrency", "1", "-openings", "file=openings.epd", "format=epd", "order=sequential")
        self.assertIn(f"Finished game {2 * self.ROUNDS}", report)
        for word in ("Warning", "illegal", "loses on time", "disconnect", "stall"):
            self.assertNotIn(word, report)


if __name__ == "__main__":
    main()

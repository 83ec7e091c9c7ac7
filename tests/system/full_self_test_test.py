# ctest: proof timeout=900
"""The whole `test` on the normal rows: five complete runs, with the published node counts."""

import re
import unittest

import console_session

COUNTS = [(6, 119060324), (5, 193690690), (2, 279), (6, 38633283), (5, 11139762), (7, 178633661)]


class FullSelfTest(console_session.EngineTest):
    def test_prints_test_complete_five_times(self):
        console_session.SECONDS = 500
        printed = self.run_lines("test")
        self.assertEqual(printed.count("test complete!\n"), 5)
        self.assertEqual(printed.count("test ok!\n"), 3 * 6 + 2 * 9)
        self.assertNotIn("failed", printed)
        generation = printed[:printed.index("test complete!")].split("test fen: ")
        self.assertEqual(generation[0], "-" * 20 + "\ntest move-generation\n" + "-" * 20 + "\n")
        for row, (depth, nodes) in zip(generation[1:], COUNTS, strict=True):
            lines = row.split("\n")
            self.assertEqual(len(lines), depth + 4)
            self.assertRegex(lines[depth], rf"^depth {depth} nodes {nodes} nps \d+ $")
            self.assertEqual(lines[depth + 1:], ["test ok!", "", ""])
        self.assertEqual(len(re.findall(r"^time:  [\d.e+]+$", printed, re.MULTILINE)), 1)


if __name__ == "__main__":
    unittest.main()

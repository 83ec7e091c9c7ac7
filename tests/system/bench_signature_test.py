#!/usr/bin/env python3
# ctest: slow timeout=240
"""The bench at its own depth: the number that identifies the behaviour of the whole engine."""
from determinism_test import bench, signatures
from engine_process import EngineTestCase, main


class BenchSignature(EngineTestCase):
    def test_signature(self):
        lines = bench()
        self.assertRegex(lines[-1], rf"^{signatures()[10]} nodes \d+ nps$")


if __name__ == "__main__":
    main()

#!/usr/bin/env python3
"""Counts the results of a run of ctest, for ./test: prints how many passed, failed and were skipped.

A program of unit tests is one test for ctest and writes a report of its own; its cases are counted instead of it.
"""
import argparse
import xml.etree.ElementTree as ElementTree
from pathlib import Path


def count_cases(report):
    """Passed, failed and skipped cases of a report of GoogleTest."""
    passed = failed = skipped = 0
    for case in ElementTree.parse(report).iter("testcase"):
        if case.find("failure") is not None:
            failed += 1
        elif case.find("skipped") is not None or case.get("status") == "notrun":
            skipped += 1
        else:
            passed += 1
    return passed, failed, skipped


def count_tests(report, folder):
    """The same of a report of ctest. A program that ended badly counts as failed even if each case had passed, or if
    it left no report at all."""
    total = [0, 0, 0]
    for test in ElementTree.parse(report).iter("testcase"):
        status = test.get("status")
        if status in ("notrun", "disabled"):
            total[2] += 1
            continue
        cases = Path(folder) / f"{test.get('name')}.xml"
        counts = count_cases(cases) if cases.is_file() else (0, 0, 0)
        if status == "run" and counts == (0, 0, 0):
            counts = (1, 0, 0)
        elif status != "run" and counts[1] == 0:
            counts = (counts[0], 1, counts[2])
        total = [sum(pair) for pair in zip(total, counts)]
    return total


if __name__ == "__main__":
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("report", type=argparse.FileType("rb"), help="what ctest --output-junit has written")
    parser.add_argument("cases", help="the folder of the reports of the programs, each named <test>.xml")
    arguments = parser.parse_args()
    print(*count_tests(arguments.report, arguments.cases))

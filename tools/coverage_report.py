#!/usr/bin/env python3
"""Adds up the counts that gcov finds in a build folder, by rooms of src/.

    tools/coverage_report.py [--gcov gcov-12] [--limit 95 --exempt platform] build/coverage

A line counts as executed if any program executed it. tools/coverage makes the build and runs it.
"""
import argparse
import collections
import json
import subprocess
import sys
from pathlib import Path

ROOT = Path(__file__).resolve().parents[1]
SOURCES = ROOT / "src"


def room_of(path):
    """The room of a file below src/; the formats of tables are rooms of their own."""
    return str(path.relative_to(SOURCES).parent)


def read_counts(gcov, data_files):
    """For each file of src/ its lines with code, and how often each was executed."""
    counts = collections.defaultdict(collections.Counter)
    for data in data_files:
        done = subprocess.run([gcov, "--json-format", "--stdout", str(data)], cwd=data.parent,
                              stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, check=True)
        for text in done.stdout.splitlines():
            for record in json.loads(text)["files"]:
                path = Path(record["file"])
                if path.is_absolute() and SOURCES in path.parents:
                    for line in record["lines"]:
                        counts[path][line["line_number"]] += line["count"]
    return counts


def ranges(numbers):
    """Line numbers as text: 3, 7-9."""
    texts = []
    first = last = None
    for number in [*numbers, None]:
        if first is not None and number != last + 1:
            texts.append(str(first) if first == last else f"{first}-{last}")
            first = None
        if first is None:
            first = number
        last = number
    return ", ".join(texts)


def main(arguments=None):
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("folder", type=Path)
    parser.add_argument("--gcov", default="gcov")
    parser.add_argument("--limit", type=float, default=0, help="per cent that each room must reach")
    parser.add_argument("--exempt", action="append", default=[], help="room without that limit")
    parsed = parser.parse_args(arguments)

    counts = read_counts(parsed.gcov, sorted(parsed.folder.resolve().rglob("*.gcda")))
    if not counts:
        parser.error(f"{parsed.folder} holds no counts of src/")
    rooms = collections.defaultdict(list)
    print("not executed:")
    for path in sorted(counts):
        lines = counts[path]
        missed = sorted(number for number, count in lines.items() if count == 0)
        rooms[room_of(path)].append((len(lines), len(missed)))
        if missed:
            print(f"  {path.relative_to(ROOT)}: {ranges(missed)}")

    print(f"\n{'room':16} lines  executed")
    is_low = False
    for room, files in sorted(rooms.items()):
        total = sum(lines for lines, _ in files)
        share = 100 * (total - sum(missed for _, missed in files)) / total
        low = share < parsed.limit and room not in parsed.exempt
        is_low = is_low or low
        print(f"{room:16} {total:5}  {share:6.2f} %{'  too few' if low else ''}")
    return 1 if is_low else 0


if __name__ == "__main__":
    sys.exit(main())

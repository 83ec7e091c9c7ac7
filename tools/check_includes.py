#!/usr/bin/env python3
"""Checks the includes of src/ against the architecture.

    tools/check_includes.py [ROOT]      ROOT is the repository; default: the one that this file is in

The arrows are read from the calls brenquil_room(<room> <lower room>... [PARTS <folder>...]) in the CMakeLists.txt of each room. Reported:

- an include of a room that is not below the file's own;
- an include that names no file of src/;
- a circle of includes;
- a system header, an intrinsic header or a question for the system (_WIN32, __linux__) outside src/platform.

Prints one line for each fault and ends with 1 if there is any.
"""

import argparse
import pathlib
import re
import sys

ROOM = re.compile(r"^\s*brenquil_room\(([^)]*)\)", re.MULTILINE)
INCLUDE = re.compile(r'^\s*#\s*include\s*([<"])([^>"]+)[>"]', re.MULTILINE)
SYSTEM_HEADER = re.compile(r"^(windows|unistd|fcntl|pthread|sched|signal|dirent|dlfcn|poll|termios|cpuid|\w+intrin)\.h$|^sys/")
SYSTEM_MACRO = re.compile(r"^\s*#.*\b(_WIN32|_WIN64|__linux__|__unix__|__APPLE__|__MINGW\w+|_MSC_VER|__x86_64__)\b",
                          re.MULTILINE)


def read_rooms(source):
    """The folder of each room, and the set of all rooms that it may include (itself, below, and below these)."""
    folders, direct = {}, {}
    for listing in source.rglob("CMakeLists.txt"):
        for call in ROOM.findall(listing.read_text(encoding="utf-8")):
            room, *lower = call.split(" PARTS ")[0].split()
            folders[room] = listing.parent
            direct[room] = lower

    def closure(room):
        return {room}.union(*(closure(lower) for lower in direct[room]))

    return folders, {room: closure(room) for room in direct}


def room_of(path, folders):
    """The room in whose folder the file lies; the innermost one where rooms are nested."""
    rooms = [room for room, folder in folders.items() if folder in path.parents]
    return max(rooms, key=lambda room: len(folders[room].parts), default=None)


def find_circles(includes):
    """One line for each include that closes a circle."""
    faults, finished, path = [], set(), []

    def visit(file):
        if file in path:
            faults.append("circle of includes: " + " -> ".join(path[path.index(file):] + [file]))
        elif file not in finished:
            path.append(file)
            for target in includes.get(file, ()):
                visit(target)
            path.pop()
            finished.add(file)

    for file in sorted(includes):
        visit(file)
    return faults


def check(root):
    """All faults of the tree, as lines."""
    source = root / "src"
    folders, allowed = read_rooms(source)
    faults, includes = [], {}
    for file in sorted([*source.rglob("*.h"), *source.rglob("*.cpp")]):
        name = file.relative_to(source).as_posix()
        text = file.read_text(encoding="utf-8")
        own = room_of(file, folders)
        if own is None:
            faults.append(f"src/{name}: lies in no room")
            continue
        includes[name] = []
        for bracket, target in INCLUDE.findall(text):
            if bracket == "<":
                if own != "platform" and SYSTEM_HEADER.search(target):
                    faults.append(f"src/{name}: <{target}> belongs to src/platform")
            elif not (source / target).is_file():
                faults.append(f'src/{name}: "{target}" is no file of src/')
            else:
                includes[name].append(target)
                other = room_of(source / target, folders)
                if other not in allowed[own]:
                    faults.append(f'src/{name}: the room {own} does not know the room {other} ("{target}")')
        if own != "platform" and (macro := SYSTEM_MACRO.search(text)):
            faults.append(f"src/{name}: {macro.group(1)} belongs to src/platform")
    return faults + find_circles(includes)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("root", nargs="?", type=pathlib.Path, default=pathlib.Path(__file__).parent.parent)
    root = parser.parse_args().root
    if not (root / "src").is_dir():
        parser.error(f"{root} has no folder src")
    faults = check(root.resolve())
    print("\n".join(faults) if faults else "The includes follow the arrows.")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())

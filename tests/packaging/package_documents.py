"""What is wrong with the documents of an unpacked package, for ./package --check and a test of the build.

People who have a package have neither the sources nor their tools: a document must not link to a file that is not
there, nor tell them to start a script of the repository.
"""
import re

LINK = re.compile(r"\]\(<?([^)>\s]+)>?\)|^\[[^]]+\]:\s*(\S+)", re.MULTILINE)
ELSEWHERE = re.compile(r"[a-z][a-z0-9+.-]*:")
SOURCES = re.compile(r"(?<![\w/])(?:\./(?:run|test|package)\b|(?:tools|tests|src|build|dist|cmake)/|CONTRIBUTING|cmake --)"
                     r"|sources only")
TEXTS = {".md", ".txt", ".6", ""}


def anchor_of(heading):
    """What a link to a heading calls it."""
    return re.sub(r"[^\w -]", "", heading.strip().lower()).replace(" ", "-")


def document_faults(folder):
    """A line for each fault in the texts below a folder; and how many links were followed."""
    faults, followed = [], 0
    for path in sorted(folder.rglob("*")):
        if not path.is_file() or path.suffix not in TEXTS or b"\0" in path.read_bytes():
            continue
        name, text = path.relative_to(folder), path.read_text(encoding="utf-8")
        faults += [f"{name}: names {found[0]}" for found in SOURCES.finditer(text)]
        for found in LINK.finditer(text):
            target = found[1] or found[2]
            if ELSEWHERE.match(target):
                continue
            followed += 1
            file, _, anchor = target.partition("#")
            place = path.parent / file if file else path
            if not place.is_file():
                faults.append(f"{name}: links to {target}, which is not there")
            elif anchor and anchor not in map(anchor_of, re.findall(r"^#+ (.*)$", place.read_text(), re.MULTILINE)):
                faults.append(f"{name}: links to {target}, and there is no such heading")
    return faults, followed

#!/usr/bin/env python3
"""checksamples.py ROOT: fails if a C++ or CMake sample of a page isn't part of a file that is built, or if a page or a source
names a file of the project that isn't there.

A sample is a fenced block marked cpp or cmake. Blank lines and indentation don't count, and a line "..." stands for any lines.
The first page's CMake sample is in no file: tests/guide/checkfirst.py does what that page says, with the page's own text.
Samples in headers are excerpts for the eye and aren't checked.
"""
import pathlib
import re
import sys

root = pathlib.Path(sys.argv[1])


def lines_of(text):
    return [line.strip() for line in text.splitlines() if line.strip()]


def holds(lines, sample):
    """Whether the lines hold the sample's pieces, in order, each without a gap."""
    pieces, piece = [], []
    for line in sample:
        if line in ("...", "// ...", "# ..."):
            pieces.append(piece)
            piece = []
        else:
            piece.append(line)
    pieces.append(piece)
    start = 0
    for piece in filter(None, pieces):
        for at in range(start, len(lines) - len(piece) + 1):
            if lines[at:at + len(piece)] == piece:
                start = at + len(piece)
                break
        else:
            return False
    return True


files = [path for folder in ("examples", "programs", "tests", "bench", "fuzz", "src") for path in (root / folder).rglob("*")
         if path.suffix in (".h", ".cpp", ".imp")]
sources = {"cpp": [lines_of(path.read_text()) for path in files],
           "cmake": [lines_of(path.read_text()) for path in (root / "tests").rglob("CMakeLists.txt")]}
pages = [*root.glob("*.md"), *(root / "docs").rglob("*.md")]
checked, wrong = 0, 0
for page in pages:
    for language, sample in re.findall(r"^```(cpp|cmake)\n(.*?)^```", page.read_text(), re.M | re.S):
        if language == "cmake" and page.name == "first-program.md":
            continue
        checked += 1
        if not any(holds(lines, lines_of(sample)) for lines in sources[language]):
            wrong += 1
            print(f"{page.relative_to(root)}: this sample is in no file that is built:\n{sample}")
named = re.compile(r"\b(?:bench|docs|examples|fuzz|src|tests|tools)/[\w/.-]*\w\.(?:cpp|h|imp|inc|md|py|sh|svg)\b")
for path in pages + files:
    for name in sorted(set(named.findall(path.read_text()))):
        if not (root / name).exists():
            wrong += 1
            print(f"{path.relative_to(root)}: there is no {name}")
print(checked, "samples")
sys.exit(1 if wrong else 0)

#!/usr/bin/env python3
"""coverage.py EXPORT ROOT [EXCEPTIONS]: branch coverage from llvm-cov's export, checked against the list of exceptions.

Prints the figure, and every branch that wasn't taken and isn't listed. Exit code 1 if there is one, or if an entry of the list is wrong:
a branch out of reach that was taken after all, or one that the source doesn't have any more.

An entry names the file, the side that is never taken, and the condition as the source writes it, never a line's number:

    src/base/framepacer.cpp
      never true: size < 0
        in: if (size < 0 || isClosed)
        The kernel returns no size below zero.

`in:`, the whole line without its indentation, is there if the file has the same condition in lines that are covered. An entry stands
for all places that it matches. Lines that begin with `#` are comments. There are three kinds:

    never     no input reaches it; the reason is required
    rarely    it depends on how threads or processes meet, and may be taken or not; the reason is required
    open      nobody has written its test yet; an entry whose branches were all taken is told, to be removed
"""
import dataclasses
import json
import os.path
import pathlib
import re
import sys

FOLDERS = ("src/base/", "src/threadlog/")


@dataclasses.dataclass(frozen=True)
class Place:
    """One side of one condition."""
    file: str
    line: int
    column: int
    side: str
    condition: str
    text: str  # of the line

    def __str__(self):
        return f"  {self.file}:{self.line}:{self.column} never {self.side}: {self.condition}\n    in: {self.text}"


@dataclasses.dataclass
class Entry:
    file: str
    line: int  # of the list
    often: str
    side: str
    condition: str
    text: str = ""
    reason: str = ""

    def matches(self, place):
        return (self.file, self.side, self.condition) == (place.file, place.side, place.condition) and \
            self.text in ("", place.text)


def condition_of(source, line, column, end_line, end_column):
    """The text of the condition with single blanks. Columns count bytes from one."""
    if line == end_line:
        parts = [source[line - 1][column - 1:end_column - 1]]
    else:
        parts = [source[line - 1][column - 1:], *source[line:end_line - 1], source[end_line - 1][:end_column - 1]]
    return b" ".join(b" ".join(parts).split()).decode()


def read_places(export, root):
    """Each place with the number of times that it was taken."""
    places = {}
    for file in json.loads(pathlib.Path(export).read_text())["data"][0]["files"]:
        name = os.path.relpath(os.path.normpath(file["filename"]), root)
        if not name.startswith(FOLDERS):
            continue  # a compiler cache may have changed how a path is written, and then the export is of all files
        source = pathlib.Path(root, name).read_bytes().split(b"\n")
        # A branch of a template or an inline function comes once for each instance: it is taken if any instance takes it.
        for line, column, end_line, end_column, taken, missed, *_ in file["branches"]:
            text = source[line - 1].decode().strip()
            if "if constexpr" in text:
                continue  # decided by the compiler
            condition = condition_of(source, line, column, end_line, end_column)
            for side, times in (("true", taken), ("false", missed)):
                place = Place(name, line, column, side, condition, text)
                # The counts are differences of counters. Where an exception leaves a function they may come out below zero, which is
                # written as a number of 64 bits.
                places[place] = places.get(place, 0) + (times if times < 1 << 63 else 0)
    return places


def read_exceptions(path):
    """The entries, and what is wrong with the list's form."""
    entries, wrong, file = [], [], None
    for number, line in enumerate(pathlib.Path(path).read_text().splitlines(), 1):
        if not line.strip() or line.startswith("#"):
            continue
        head = re.fullmatch(r"  (never|rarely|open) (true|false): (.+)", line)
        if not line.startswith(" "):
            file = line
        elif head and file:
            entries.append(Entry(file, number, *head.groups()))
        elif line.startswith("    in: ") and entries and not entries[-1].reason:
            entries[-1].text = line.removeprefix("    in: ")
        elif line.startswith("    ") and entries:
            entries[-1].reason += line.strip() + " "
        else:
            wrong.append(f"  line {number} is neither a file nor an entry nor a reason: {line}")
    wrong += [f"  line {entry.line}: no reason" for entry in entries if not entry.reason and entry.often != "open"]
    return entries, wrong


def check(places, entries):
    """The branches that weren't taken and aren't listed, and what is wrong with the entries."""
    missed = [place for place, times in places.items() if times == 0 and not any(entry.matches(place) for entry in entries)]
    wrong = []
    for entry in entries:
        matching = [place for place in places if entry.matches(place)]
        if not matching:
            wrong.append(f"  line {entry.line}: {entry.file} has no such place: {entry.condition}")
        for place in matching:
            if places[place] and entry.often == "never":
                wrong.append(f"  line {entry.line}: {entry.file}:{place.line}:{place.column} was {entry.side}: {entry.condition}")
    return missed, wrong


def count_listed(places, entries, often):
    return sum(times == 0 and any(entry.often == often and entry.matches(place) for entry in entries)
               for place, times in places.items())


def main(export, root, exceptions=None):
    places = read_places(export, root)
    entries, wrong = read_exceptions(exceptions) if exceptions else ([], [])
    missed, wrong_entries = check(places, entries)
    wrong += wrong_entries
    taken = sum(times > 0 for times in places.values())
    print(f"branch coverage of {' and '.join(folder.rstrip('/') for folder in FOLDERS)}: {taken} of {len(places)} "
          f"({100 * taken / max(len(places), 1):.2f} %); listed are {count_listed(places, entries, 'never')} out of reach, "
          f"{count_listed(places, entries, 'rarely')} of chance, {count_listed(places, entries, 'open')} without a test")
    for entry in entries:
        matching = [times for place, times in places.items() if entry.matches(place)]
        if entry.often == "open" and matching and all(matching):
            print(f"taken now, remove it from the list, line {entry.line}: {entry.file} {entry.side}: {entry.condition}")
    for title, lines in (("not covered and not listed:", sorted(missed, key=lambda place: (place.file, place.line, place.column))),
                         (f"wrong in {exceptions}:", wrong)):
        if lines:
            print(title)
            print("\n".join(map(str, lines)))
    if not places:
        print("no branch has been measured")
    return 1 if missed or wrong or not places else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))

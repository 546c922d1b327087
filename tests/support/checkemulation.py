#!/usr/bin/env python3
"""Fails if the list of tests that can't run in an emulator is wrong, or the README tells another number of them.

checkemulation.py ROOT BUILD TREE

ROOT/tests/emulation.txt has the list. Each of its lines for this tree matches a test that exists here, and has a reason. The row of
the tree in the README's table of targets ends with the number of the tests that are left out.
"""
import pathlib
import re
import sys

root, build, tree = pathlib.Path(sys.argv[1]), pathlib.Path(sys.argv[2]), sys.argv[3]


def tests_of_programs():
    """Their names by the lists that the programs gave to ctest, with the prefix of their program."""
    for listed in build.glob("tests/**/*.tests"):
        prefix = re.search(r'^set\(prefix "(.*)"\)', listed.with_name(f"{listed.stem}_suites.cmake").read_text(), re.M)[1]
        suite = ""
        for line in listed.read_text().splitlines():
            line = line.split("  #")[0].rstrip()
            if line.startswith("  "):
                yield prefix + suite + line.strip()
            elif line.endswith("."):
                suite = line


def other_tests():
    for file in build.glob("tests/**/CTestTestfile.cmake"):
        yield from re.findall(r"^add_test\(\[=\[(.*?)\]=\]", file.read_text(), re.M)


names = {*tests_of_programs(), *other_tests()}
left_out, wrong = set(), []
for number, line in enumerate((root / "tests" / "emulation.txt").read_text().splitlines(), 1):
    if not line or line.startswith("#"):
        continue
    rule = re.fullmatch(r"(\*|[a-z0-9]+) +(out|alone) +(\S+) +(\S.*)", line)
    if not rule:
        wrong.append(f"tests/emulation.txt:{number}: this isn't TREE out|alone TEST REASON")
    elif rule[1] in ("*", tree):
        matches = {name for name in names if re.fullmatch(rule[3], name)}
        if not matches:
            wrong.append(f"tests/emulation.txt:{number}: no test is called {rule[3]}")
        if rule[2] == "out":
            left_out |= matches
row = re.search(rf"^\| [^|\n]*\b{tree}\b.*\| *(\d+) \|$", (root / "README.md").read_text(), re.M)
if not row or int(row[1]) != len(left_out):
    wrong.append(f"README.md: {len(left_out)} tests are left out in the tree {tree}, and the table of targets tells "
                 f"{row[1] if row else 'nothing'}")
print(len(names), "tests,", len(left_out), "left out")
print("\n".join(wrong))
sys.exit(1 if wrong or not names else 0)

#!/usr/bin/env python3
"""checkclasses.py ROOT: fails if docs/which-class.md forgets a public class, names one that isn't there, or gives it another
header than its own; or if a page's list of references names something that its header doesn't have.
"""
import pathlib
import re
import sys

from headers import all_classes

ROW = re.compile(r"^\| [^|]+ \| ((?:`\w+`(?:, )?)+) \| \[`([\w.]+)`\]\(\.\./([\w/.]+)\) \| \[[^]]+\]\([\w#.-]+\) \|$", re.M)
USED = re.compile(r"^\| ((?:`\w+`(?:, )?)+) \| [^|]+ \|$", re.M)
REFERENCE = re.compile(r"\[`([\w.]+)`\]\(\.\./([\w/.]+)\)(?:: ((?:`\w+`(?:, )?)+))?")
NAME = re.compile(r"`(\w+)`")

root = pathlib.Path(sys.argv[1])
classes = all_classes(root)
page = (root / "docs" / "which-class.md").read_text()
tasks, _, others = page.partition("\n## Used through others\n")
wrong, listed = 0, []


def fail(text):
    global wrong
    wrong += 1
    print(text)


rows = [line for line in tasks.splitlines() if line.startswith("| ") and not line.startswith("| task ")]
for line in rows:
    row = ROW.fullmatch(line)
    if not row:
        fail(f"This row isn't task, class, header and page:\n{line}")
        continue
    for name in NAME.findall(row[1]):
        listed.append(name)
        if classes.get(name, row[3]) != row[3]:
            fail(f"{name} is in {classes[name]}, and not in {row[3]}")
for names in USED.findall(others):
    listed += NAME.findall(names)
for name in sorted(set(listed) - set(classes)):
    fail(f"There is no public class {name}")
for name in sorted(set(classes) - set(listed)):
    fail(f"{name} of {classes[name]} is in neither table")
for name in sorted({name for name in listed if listed.count(name) > 1}):
    fail(f"{name} stands there twice")

for path in sorted((root / "docs").glob("*.md")):
    for header, link, names in REFERENCE.findall(path.read_text()):
        target = root / link
        if target.name != header or not target.exists():
            fail(f"{path.name}: {header} leads to {link}")
            continue
        for name in NAME.findall(names):
            if not re.search(rf"\b{name}\b", target.read_text()):
                fail(f"{path.name}: {link} has no {name}")
print(len(classes), "classes,", len(rows), "tasks")
sys.exit(1 if wrong else 0)

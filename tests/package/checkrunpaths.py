#!/usr/bin/env python3
"""checkrunpaths.py [--installed] FOLDER NAME...: fails if a program or library in the folder looks for libraries in an empty
entry, which is the current folder, and with --installed if it looks anywhere but from its own folder on. NAMES have to be
among the files looked at.
"""
import pathlib
import re
import subprocess
import sys

words = sys.argv[1:]
installed = words[0] == "--installed"
folder, *names = words[1:] if installed else words

wrong, seen = 0, set()
for path in sorted(pathlib.Path(folder).rglob("*")):
    if path.is_symlink() or not path.is_file():
        continue
    # Other tests may put files there for a moment.
    try:
        with path.open("rb") as file:
            if file.read(4) != b"\x7fELF":
                continue
    except FileNotFoundError:
        continue
    run = subprocess.run(["readelf", "-dW", path], capture_output=True, text=True, check=False)
    if run.returncode != 0 and not path.exists():
        continue
    run.check_returncode()
    seen.add(path.name)
    text = run.stdout
    for entries in re.findall(r"\((?:RPATH|RUNPATH)\).*\[(.*)\]", text):
        for entry in entries.split(":"):
            if not entry or (installed and not entry.startswith("$ORIGIN")) or not entry.startswith(("/", "$ORIGIN")):
                wrong += 1
                print(f"{path}: looks for libraries in '{entry}', of '{entries}'")
missing = set(names) - seen
for name in sorted(missing):
    print(f"{folder}: there is no {name}")
print(len(seen), "files")
sys.exit(1 if wrong or missing else 0)

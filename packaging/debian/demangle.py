#!/usr/bin/env python3
"""demangle.py FILE: writes a list of dpkg-gensymbols with the C++ names as people read them.

Names that several symbols share, such as the forms of one constructor, stand once: the tag c++ means all of them.
"""
import subprocess
import sys

with open(sys.argv[1], encoding="utf-8") as file:
    mangled = file.read()
# The version behind the name is no part of it.
readable = subprocess.run(["c++filt"], input=mangled.replace("@Base", " @Base"), capture_output=True, text=True,
                          check=True).stdout.replace(" @Base", "@Base")


def write(header, names):
    """A library and what it exports, in the order of the readable forms, each once."""
    if header:
        print("\n".join([header, *sorted(set(names))]))


header, names = "", []
for before, after in zip(mangled.splitlines(), readable.splitlines()):
    if not after.startswith(" "):
        write(header, names)
        header, names = after, []
        continue
    if before != after:
        name, version = after.strip().rsplit(" ", 1)
        after = f' (c++)"{name}" {version}'
    names.append(after)
write(header, names)

#!/usr/bin/env python3
"""checkexports.py LIBRARY NM CLASS...: fails if the library shows anything but the class interface of the namespace Vn, or not
these classes."""
import re
import subprocess
import sys

library, nm, *classes = sys.argv[1:]
windows = library.endswith(".dll")
if windows:
    objdump = nm.replace("nm", "objdump")
    text = subprocess.run([objdump, "-p", library], capture_output=True, text=True, check=True).stdout
    table = text[text.index("[Ordinal/Name Pointer] Table"):]
    symbols = re.findall(r"^\s*\[\s*\d+\]\s+(?:\+base\[\s*\d+\]\s+[0-9a-f]+\s+)?(\S+)", table, re.M)
else:
    text = subprocess.run([nm, "-D", "--defined-only", library], capture_output=True, text=True, check=True).stdout
    symbols = [line.split()[-1] for line in text.splitlines()]

# Functions and data of Vn, its run-time types and virtual tables, and the thunks to its virtual functions.
ours = re.compile(r"^_Z(T[CISVT]|T[hv]\d*_?n?\d+_(n?\d+_)?|Tc\w*_|GV)?(N|NK)2Vn\w+$")
# MinGW's compiler exports the type information of a standard base together with the class that has it, whatever the
# linker is told.
tolerated = re.compile(r"^_ZTISt\d+\w+$" if windows else r"^$")
# The entry that every library of the family has.
entry = "getBuildInfo"
strange = [symbol for symbol in symbols if symbol != entry and not ours.match(symbol) and not tolerated.match(symbol)]
for symbol in strange:
    print("exported, but no part of the class interface:", symbol)
missing = [entry] if entry not in symbols else []
missing += [name for name in classes if not any(f"{len(name)}{name}" in symbol for symbol in symbols)]
for name in missing:
    print("not exported:", name)
print(len(symbols), "symbols")
sys.exit(1 if strange or missing or not symbols else 0)

#!/usr/bin/env python3
"""Whether a run of the tests leaves anything behind in its folder for temporary files.

leftovers.py before FOLDER LIST     writes what is there to LIST
leftovers.py after FOLDER LIST      prints what has come since, and ends with 1 if anything has

The default log files may stay: every start of a program writes them.
"""
import pathlib
import sys

when, folder, listing = sys.argv[1], pathlib.Path(sys.argv[2]), pathlib.Path(sys.argv[3])
found = {path.name for path in folder.iterdir()}
if when == 'before':
    listing.write_text('\n'.join(sorted(found)))
    sys.exit(0)
left = sorted(found - set(listing.read_text().split('\n')) - {'events.log', 'prof.log'})
for name in left:
    print(f'left behind: {folder / name}')
sys.exit(1 if left else 0)

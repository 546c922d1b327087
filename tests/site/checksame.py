#!/usr/bin/python3
"""Builds the site from a copy of its sources in another folder, and compares both: checksame.py ROOT SITE AGAIN DOXYGEN

Equal sources must give equal bytes, so no date, folder or machine may get into a page.
"""
import filecmp
import pathlib
import shutil
import subprocess
import sys

sys.dont_write_bytecode = True
from sources import copy_sources  # noqa: E402

ROOT, SITE, AGAIN = (pathlib.Path(argument).resolve() for argument in sys.argv[1:4])
DOXYGEN = sys.argv[4]


def differences(left, right):
    names = {path.relative_to(folder) for folder in (left, right) for path in folder.rglob('*') if path.is_file()}
    for name in sorted(names):
        one, other = left / name, right / name
        if not one.is_file() or not other.is_file():
            yield f'{name}: is only in {left if one.is_file() else right}'
        elif not filecmp.cmp(one, other, shallow=False):
            yield f'{name}: differs'


shutil.rmtree(AGAIN, ignore_errors=True)
copy = AGAIN / 'a copy of the sources'
copy_sources(ROOT, copy)
subprocess.run([sys.executable, copy / 'site/buildsite.py', copy, AGAIN / 'site', AGAIN / 'work', DOXYGEN], check=True)
found = list(differences(SITE, AGAIN / 'site'))
print('\n'.join(found[:50]) if found else 'the same bytes')
shutil.rmtree(AGAIN)
sys.exit(1 if found else 0)

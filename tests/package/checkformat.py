#!/usr/bin/env python3
"""Compares all sources with what clang-format makes of them.

checkformat.py ROOT CLANG-FORMAT     prints the files that differ, and ends with 1 if any does
"""
import pathlib
import subprocess
import sys

ROOT, FORMAT = pathlib.Path(sys.argv[1]), sys.argv[2]
FOLDERS = ('bench', 'examples', 'fuzz', 'programs', 'src', 'tests')

files = sorted(path for folder in FOLDERS for path in (ROOT / folder).rglob('*')
               if path.suffix in ('.cpp', '.h', '.imp'))
different = [path for path in files
             if subprocess.run([FORMAT, path], capture_output=True, check=True).stdout != path.read_bytes()]
for path in different:
    print(f'{path.relative_to(ROOT)}: not as clang-format leaves it')
print(f'{len(files)} files, {len(different)} differ')
sys.exit(1 if different or not files else 0)

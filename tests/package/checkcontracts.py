#!/usr/bin/env python3
"""Runs Doxygen over the public headers: whatever a user can name is documented.

checkcontracts.py ROOT DOXYGEN FOLDER    prints the warnings that Doxygen has, and ends with 1 if there are any
"""
import pathlib
import subprocess
import sys

root, doxygen, folder = pathlib.Path(sys.argv[1]), sys.argv[2], pathlib.Path(sys.argv[3])
folder.mkdir(parents=True, exist_ok=True)
settings = (root / 'docs' / 'Doxyfile').read_text() + f'''
INPUT = {root}/src/base {root}/src/threadlog
STRIP_FROM_PATH = {root}
INCLUDE_PATH = {root}/src
OUTPUT_DIRECTORY = {folder}
GENERATE_HTML = NO
GENERATE_XML = YES
QUIET = YES
'''
run = subprocess.run([doxygen, '-'], input=settings, capture_output=True, text=True)
warnings = [line for line in run.stderr.splitlines() if line.strip()]
print('\n'.join(warnings) if warnings else 'no warning')
sys.exit(1 if warnings or run.returncode else 0)

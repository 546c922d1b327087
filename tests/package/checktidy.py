#!/usr/bin/env python3
"""Runs clang-tidy over the library's sources as this tree builds them.

checktidy.py ROOT BUILD CLANG-TIDY     prints what it finds, each finding once, and ends with 1 if there is any

The checks, and why some are left out, stand in ROOT/.clang-tidy.
"""
import concurrent.futures
import json
import os
import pathlib
import re
import shlex
import subprocess
import sys

ROOT, BUILD, TIDY = pathlib.Path(sys.argv[1]), pathlib.Path(sys.argv[2]), sys.argv[3]
KEPT = re.compile(r'-(D|I|isystem|std=|include|m)')  # what decides which code there is; warnings are the compiler's own


def arguments_of(command):
    kept, words = [], iter(shlex.split(command))
    for word in words:
        if word in ('-I', '-isystem', '-include', '-D'):
            kept += [word, next(words)]
        elif KEPT.match(word):
            kept.append(word)
    return kept


def check(entry):
    run = subprocess.run([TIDY, '--quiet', entry['file'], '--', *arguments_of(entry['command'])], cwd=ROOT, text=True,
                         capture_output=True, check=False)
    findings = re.findall(r'^.*(?:warning|error): .*$', run.stdout, re.MULTILINE)
    if run.returncode != 0 and not findings:
        findings = [f"{entry['file']}: clang-tidy ended with {run.returncode}: {run.stderr.strip()[-500:]}"]
    return findings


def main():
    sources = str(ROOT / 'src')
    entries = [entry for entry in json.loads((BUILD / 'compile_commands.json').read_text())
               if entry['file'].startswith(sources)]
    if not entries:
        print('checktidy: the tree builds no source of the library')
        return 1
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        found = sorted({finding for findings in pool.map(check, entries) for finding in findings})
    print('\n'.join(found + [f'{len(entries)} sources, {len(found)} findings']))
    return 1 if found else 0


sys.exit(main())

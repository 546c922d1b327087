#!/usr/bin/env python3
"""Runs clang-tidy over the library's sources as this tree builds them.

checktidy.py ROOT BUILD CLANG-TIDY     prints what it finds, each finding once, and ends with 1 if there is any

The checks, and why some are left out, stand in ROOT/.clang-tidy. A source without findings isn't read again as long as it, what
it includes, its options, the checks and clang-tidy stay: ~/.cache/vnbase/tidy has a file for each.
"""
import concurrent.futures
import hashlib
import json
import os
import pathlib
import re
import shlex
import subprocess
import sys
import time

ROOT, BUILD, TIDY = pathlib.Path(sys.argv[1]), pathlib.Path(sys.argv[2]), sys.argv[3]
KIND = subprocess.run([TIDY, '--version'], text=True, capture_output=True, check=True).stdout
COMPILER = 'clang++-' + re.search(r'version (\d+)', KIND).group(1)
CACHE = pathlib.Path(os.environ.get('XDG_CACHE_HOME') or pathlib.Path.home() / '.cache') / 'vnbase' / 'tidy'
KEPT = re.compile(r'-(D|I|isystem|std=|include|m)')  # what decides which code there is; warnings are the compiler's own


def arguments_of(command):
    kept, words = [], iter(shlex.split(command))
    for word in words:
        if word in ('-I', '-isystem', '-include', '-D'):
            kept += [word, next(words)]
        elif KEPT.match(word):
            kept.append(word)
    return kept


def output_of(*command):
    return subprocess.run(command, cwd=ROOT, text=True, capture_output=True, check=True).stdout


def place_of_proof(entry, arguments):
    """Where it is kept that the source has no findings. None without a compiler of clang-tidy's version."""
    try:
        text = output_of(COMPILER, '-E', '-frewrite-includes', entry['file'], *arguments)
    except (OSError, subprocess.CalledProcessError):
        return None
    parts = [KIND, (ROOT / '.clang-tidy').read_text(), *arguments, text]
    return CACHE / hashlib.sha256('\0'.join(parts).replace(str(ROOT), '').encode()).hexdigest()


def check(entry):
    arguments = arguments_of(entry['command'])
    proof = place_of_proof(entry, arguments)
    if proof is not None and proof.exists():
        proof.touch()
        return []
    run = subprocess.run([TIDY, '--quiet', entry['file'], '--', *arguments], cwd=ROOT, text=True, capture_output=True,
                         check=False)
    findings = re.findall(r'^.*(?:warning|error): .*$', run.stdout, re.MULTILINE)
    if run.returncode != 0 and not findings:
        findings = [f"{entry['file']}: clang-tidy ended with {run.returncode}: {run.stderr.strip()[-500:]}"]
    if not findings and proof is not None:
        CACHE.mkdir(parents=True, exist_ok=True)
        proof.touch()
    return findings


def forget_old():
    """Proofs that nobody has asked for in a month."""
    for proof in CACHE.glob('*'):
        if proof.stat().st_mtime < time.time() - 30 * 86400:
            proof.unlink(missing_ok=True)


def main():
    sources = str(ROOT / 'src')
    entries = [entry for entry in json.loads((BUILD / 'compile_commands.json').read_text())
               if entry['file'].startswith(sources)]
    if not entries:
        print('checktidy: the tree builds no source of the library')
        return 1
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        found = sorted({finding for findings in pool.map(check, entries) for finding in findings})
    forget_old()
    print('\n'.join(found + [f'{len(entries)} sources, {len(found)} findings']))
    return 1 if found else 0


sys.exit(main())

#!/usr/bin/env python3
"""abi.py write LIBRARY HEADERS RESULT     writes the binary interface of LIBRARY, which has debug information, as RESULT.abi.xz
abi.py compare LIBRARY HEADERS ABI      compares it with the last release of the same SONAME that is kept in the folder ABI

HEADERS is the folder of the public headers: what only private ones (x_p.h) or sources define is no interface. The exit code
of "compare" is 1 if programs linked against that release can't run with LIBRARY any more; what was added is told only.
"""
import lzma
import os
import re
import shutil
import subprocess
import sys
import tempfile

# Places and folders would differ from build to build, and say nothing of the interface.
OPTIONS = ['--no-show-locs', '--no-corpus-path', '--no-comp-dir-path', '--no-parameter-names', '--no-elf-needed',
           '--no-write-default-sizes', '--type-id-style', 'hash', '--drop-private-types']


def describe(library, headers, work):
    """The interface as abidw writes it."""
    public = os.path.join(work, 'headers')
    os.mkdir(public)
    for name in os.listdir(headers):
        if name.endswith('.h') and not name.endswith('_p.h'):
            shutil.copy(os.path.join(headers, name), public)
    result = os.path.join(work, 'library.abi')
    subprocess.run(['abidw', *OPTIONS, '--headers-dir', public, '--out-file', result, library], check=True)
    # Without debug information abidw writes the symbols alone.
    if '<class-decl' not in open(result, encoding='utf-8').read():
        sys.exit(f'{library} has no debug information')
    return result


def soname_of(path):
    with open(path, encoding='utf-8') as file:
        return re.search(r"soname='([^']*)'", file.read(4096))[1]


def last_release(stem, soname, folder, work):
    """The newest version in the folder whose library has this SONAME, and its interface."""
    versions = [name for name in os.listdir(folder) if re.fullmatch(r'\d+\.\d+\.\d+', name)]
    for version in sorted(versions, key=lambda name: [int(part) for part in name.split('.')], reverse=True):
        packed = os.path.join(folder, version, stem + '.abi.xz')
        if not os.path.exists(packed):
            continue
        path = os.path.join(work, f'{version}.abi')
        with lzma.open(packed) as source, open(path, 'wb') as target:
            shutil.copyfileobj(source, target)
        if soname_of(path) == soname:
            return version, path
    return None, None


def compare(library, headers, folder):
    stem = os.path.basename(library).split('.so')[0]
    with tempfile.TemporaryDirectory() as work:
        now = describe(library, headers, work)
        soname = soname_of(now)
        version, before = last_release(stem, soname, folder, work)
        if version is None:
            sys.exit(f'no release of {soname} is kept in {folder}')
        # No file of suppressions: one that names functions by their symbols also takes all virtual functions without one.
        broken = subprocess.run(['abidiff', '--no-added-syms', before, now], stdout=subprocess.PIPE, text=True)
        if broken.returncode != 0:
            print(broken.stdout)
            print(f'{soname}: programs linked against {version} may not run with this library any more.')
            print('Take the change back, or raise VNBASE_ABI and say so in the changelog: docs/versions.md tells when.')
            return 1
        added = subprocess.run(['abidiff', before, now], stdout=subprocess.PIPE, text=True)
        if added.returncode & 3:
            print(added.stdout)
            return 1
        names = re.findall(r"^ +\[A\] '(.*?)'", added.stdout, re.M)
        print(f'{soname}: nothing of {version} was removed or changed, {len(names)} functions and variables were added')
        for name in names:
            print('   ', name)
        return 0


def write(library, headers, result):
    with tempfile.TemporaryDirectory() as work:
        path = describe(library, headers, work)
        with open(path, 'rb') as source:
            packed = lzma.compress(source.read(), preset=9 | lzma.PRESET_EXTREME)
    with open(result + '.abi.xz', 'wb') as target:
        target.write(packed)
    print(f'{result}.abi.xz: {len(packed)} bytes')
    return 0


if __name__ == '__main__':
    if len(sys.argv) != 5 or sys.argv[1] not in ('write', 'compare'):
        sys.exit(__doc__)
    sys.exit({'write': write, 'compare': compare}[sys.argv[1]](*sys.argv[2:]))

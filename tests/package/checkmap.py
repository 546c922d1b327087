#!/usr/bin/env python3
"""Compares the map of src/base (its README), the wings of its CMakeLists.txt, and what its files include.

checkmap.py ROOT            prints what differs, one line each, and ends with 1 if anything does
checkmap.py ROOT --dot      writes the layers, and which wing includes which, in Graphviz's language
checkmap.py ROOT --mend     writes the first lines of the private headers anew

What must hold: each file stands in one wing; the map names each wing with its layer, the header to enter by, its private
headers and its page; no file includes one of a higher layer; no public header includes a private one; the first line of a
private header says which files include it; a portable source includes no system's header; each platform source names the
form of the other platform; the picture of the layers in docs/ is drawn from the includes as they are now.
"""
import pathlib
import re
import sys

ROOT = pathlib.Path(sys.argv[1])
BASE = ROOT / 'src' / 'base'
KINDS = ('HEADERS', 'BODIES', 'PRIVATE', 'SOURCES', 'POSIX', 'POSIX_PRIVATE', 'WINDOWS', 'WINDOWS_HEADERS',
         'WINDOWS_PRIVATE', 'X86', 'NOT_X86')
PLATFORM = re.compile(r'(posix|linux|windows|winnt)\.cpp$')
SYSTEM = re.compile(r'#\s*include <(sys/|linux/|windows\.h|unistd\.h|fcntl\.h|dlfcn\.h|pthread\.h|dirent\.h|mmsystem)')
MANY = 5  # a header with more users than this names its wing instead

problems = []


def complain(text):
    problems.append(text)


def read_wings():
    """Wings in their order: name -> (layer, {kind: [files]})."""
    wings = {}
    text = re.sub(r'#.*', '', (BASE / 'CMakeLists.txt').read_text())
    for arguments in re.findall(r'vnbase_wing\(([^)]*)\)', text):
        words = re.findall(r'"[^"]*"|\S+', arguments)
        name, kind, files, layer = words[0].strip('"'), None, {}, None
        for word in words[1:]:
            if word in KINDS or word == 'LAYER':
                kind = word
            elif kind == 'LAYER':
                layer = int(word)
            else:
                files.setdefault(kind, []).append(word)
        wings[name] = (layer, files)
    return wings


def read_map():
    """Rows of the map's table: name -> (layer, header, private headers, page)."""
    rows = {}
    for line in (BASE / 'README.md').read_text().splitlines():
        cells = [cell.strip() for cell in line.strip().strip('|').split('|')]
        if len(cells) == 6 and cells[1].isdigit():
            rows[cells[0]] = (int(cells[1]), cells[3].strip('`'), set(re.findall(r'`([^`]+)`', cells[4])),
                              re.findall(r'\(([^)]+)\)', cells[5]))
    return rows


WINGS = read_wings()
WING_OF = {}
for wing, (_, kinds) in WINGS.items():
    for files in kinds.values():
        for file in files:
            if file in WING_OF:
                complain(f'{file}: stands in the wings {WING_OF[file]} and {wing}')
            WING_OF[file] = wing
FILES = sorted(path.name for path in BASE.iterdir() if path.suffix in ('.cpp', '.h', '.imp'))
TEXT = {file: (BASE / file).read_text() for file in FILES}
INCLUDES = {file: re.findall(r'#include <base/([^>]+)>', TEXT[file]) for file in FILES}
# Bodies of templates that the library alone compiles keep the name of their class.
PRIVATE_BODIES = [file for _, kinds in WINGS.values() for file in kinds.get('PRIVATE', []) if file.endswith('.imp')]
PRIVATE = [file for file in FILES if file.endswith('_p.h')] + PRIVATE_BODIES


def layer_of(file):
    return WINGS[WING_OF[file]][0]


def joined(names):
    return names[0] if len(names) == 1 else ', '.join(names[:-1]) + ' and ' + names[-1]


def first_line(header):
    """What a private header begins with."""
    users = sorted(file for file in FILES if header in INCLUDES[file])
    forms = [file for file in users if PLATFORM.search(file)]
    # A seam is used by portable sources and implemented by the platform's.
    portable = [file for file in users if file not in forms]
    wings = list(dict.fromkeys(WING_OF[file] for file in users))
    if len(users) > MANY:
        return f'// Private to the {wings[0]}.' if len(wings) == 1 else '// Private to the library.'
    if portable and forms:
        return f'// Private to {joined(portable)}; implemented in {joined(forms)}.'
    return f'// Private to {joined(users)}.'


def check_files():
    for file in FILES:
        if file not in WING_OF:
            complain(f'{file}: stands in no wing of CMakeLists.txt')
    for file in WING_OF:
        if file not in TEXT:
            complain(f'{file}: is in CMakeLists.txt and not in the folder')
    for wing, (_, kinds) in WINGS.items():
        for kind, files in kinds.items():
            for file in files:
                if ('PRIVATE' in kind) != (file in PRIVATE):
                    complain(f'{file}: {"is" if file in PRIVATE else "is not"} private by its name, and stands under {kind}')
            if files != sorted(files):
                complain(f'{wing}: {kind} is not in alphabetical order')


def check_includes():
    for file in FILES:
        for included in INCLUDES[file]:
            if included not in TEXT:
                complain(f'{file}: includes {included}, which is not there')
            elif layer_of(included) > layer_of(file):
                complain(f'{file} ({WING_OF[file]}) includes {included} of a higher layer ({WING_OF[included]})')
            elif included in PRIVATE and not file.endswith('.cpp') and file not in PRIVATE:
                complain(f'{file}: is public and includes the private {included}')
        is_platform = PLATFORM.search(file) or any(
            file in kinds.get(kind, ()) for _, kinds in WINGS.values()
            for kind in ('POSIX', 'POSIX_PRIVATE', 'WINDOWS', 'WINDOWS_HEADERS', 'WINDOWS_PRIVATE', 'X86',
                         'NOT_X86'))
        found = SYSTEM.search(TEXT[file])
        if found and not is_platform:
            complain(f'{file}: is portable and has {found.group(0)}...>')
    for header in PRIVATE:
        line = TEXT[header].split('\n', 1)[0]
        if line != first_line(header):
            complain(f'{header}: begins with "{line}", and not with "{first_line(header)}"')


def check_map():
    rows = read_map()
    if list(rows) != list(WINGS):
        complain(f'README.md: has the wings {list(rows)}, and CMakeLists.txt {list(WINGS)}')
    for wing, (layer, header, private, pages) in rows.items():
        if wing not in WINGS:
            continue
        kinds = WINGS[wing][1]
        rooms = set(kinds.get('PRIVATE', []) + kinds.get('POSIX_PRIVATE', []) + kinds.get('WINDOWS_PRIVATE', []))
        # Families of headers that belong to classes of the same name are told together.
        rooms = {room for room in rooms if not room.endswith('.imp')}
        if layer != WINGS[wing][0]:
            complain(f'README.md: {wing} has layer {layer}, and in CMakeLists.txt {WINGS[wing][0]}')
        if header not in kinds.get('HEADERS', []):
            complain(f'README.md: {wing} has no public header {header}')
        for room in rooms ^ private:
            complain(f'README.md: {wing}: {room} is {"not told of" if room in rooms else "no room of it"}')
        for page in pages:
            if not (BASE / page).is_file():
                complain(f'README.md: {wing}: there is no {page}')


def dot():
    """The layers, and which wing includes which, in Graphviz's language."""
    edges = sorted({(WING_OF[file], WING_OF[included]) for file in FILES for included in INCLUDES[file]
                    if WING_OF[file] != WING_OF[included]})
    lines = ['digraph layers {']
    lines.append('    rankdir=TB; node [shape=box, style=rounded, fontname="sans-serif"]; newrank=true;')
    layers = sorted({layer for layer, _ in WINGS.values()})
    for layer in layers:
        names = ' '.join(f'"{wing}";' for wing, (own, _) in WINGS.items() if own == layer)
        lines.append(f'    subgraph layer{layer} {{ rank=same; {names} }}')
    for user, used in edges:
        lines.append(f'    "{user}" -> "{used}";')
    lines.append('}')
    return '\n'.join(lines) + '\n'


def check_picture():
    """docs/layers.svg is drawn from docs/layers.dot by tools/drawlayers.sh."""
    drawn = ROOT / 'docs' / 'layers.dot'
    if not drawn.is_file() or drawn.read_text() != dot():
        complain('docs/layers.dot: is not what the includes give now; run tools/drawlayers.sh')


def mend():
    for header in PRIVATE:
        lines = TEXT[header].split('\n')
        if lines[0].startswith('// Private to'):
            lines[0] = first_line(header)
        else:
            lines.insert(0, first_line(header))
        (BASE / header).write_text('\n'.join(lines))


if '--dot' in sys.argv:
    print(dot(), end='')
elif '--mend' in sys.argv:
    mend()
else:
    check_files()
    if not problems:
        check_includes()
        check_map()
        check_picture()
    print('\n'.join(problems) if problems else f'{len(FILES)} files in {len(WINGS)} wings, as the map says')
    sys.exit(1 if problems else 0)

#!/usr/bin/env python3
"""What a log site costs before the program runs: bytes of code, time to compile, and the time of the header.

sitecost.py [ROOT] [COMPILER]    prints a table; ROOT is the source tree, the compiler g++ unless named

Each logger's sites are compiled in one function, so many of them and none; the difference is shown for one site. The
contestants take turns, and the best of several rounds counts.
"""
import pathlib
import re
import subprocess
import sys
import tempfile
import time

ROOT = pathlib.Path(sys.argv[1] if len(sys.argv) > 1 else pathlib.Path(__file__).resolve().parent.parent)
COMPILER = sys.argv[2] if len(sys.argv) > 2 else 'g++'
SITES = 200
ROUNDS = 5

TEXT = 'Bench a message of some forty characters in all'

# Name, headers, flags, what a function gets, a site with two numbers.
CONTESTANTS = [
    ('VN_LOG', ['base/lglog.h'], [f'-I{ROOT}/src'], 'Vn::LgMinorGroup const& group, int i, double d',
     f'VN_LOG(group, Vn::LgTypes::Warning, "{TEXT} " << i << " took " << d);'),
    ('std::cout', ['iostream'], [], 'int i, double d', f'std::cout << "{TEXT} " << i << " took " << d << \'\\n\';'),
    ('spdlog', ['spdlog/spdlog.h'], ['-DSPDLOG_COMPILED_LIB', '-DSPDLOG_FMT_EXTERNAL', '-DSPDLOG_SHARED_LIB'],
     'spdlog::logger& log, int i, double d', f'log.warn("{TEXT} {{}} took {{}}", i, d);'),
    ('glog', ['glog/logging.h'], [], 'int i, double d', f'LOG(WARNING) << "{TEXT} " << i << " took " << d;'),
]


def source(contestant, sites):
    name, headers, _, parameters, site = contestant
    includes = ''.join(f'#include <{header}>\n' for header in headers)
    if sites is None:
        return includes
    return f'{includes}void log({parameters});\nvoid log({parameters})\n{{\n' + f'    {site}\n' * sites + '}\n'


def compile_once(folder, contestant, sites):
    path = folder / 'site.cpp'
    path.write_text(source(contestant, sites))
    start = time.monotonic()
    subprocess.run([COMPILER, '-std=c++20', '-O2', '-fvisibility=hidden', '-w', *contestant[2], '-c', path, '-o',
                    folder / 'site.o'], check=True)
    return time.monotonic() - start


def text_size(folder):
    out = subprocess.run(['size', '-A', folder / 'site.o'], capture_output=True, text=True, check=True).stdout
    return sum(int(size) for section, size in re.findall(r'^(\.\S+)\s+(\d+)', out, re.M)
               if section.startswith(('.text', '.gcc_except_table', '.eh_frame')))


def main():
    times, sizes = {}, {}
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        for _ in range(ROUNDS):
            for contestant in CONTESTANTS:
                for sites in (None, 0, SITES):
                    key = (contestant[0], sites)
                    taken = compile_once(folder, contestant, sites)
                    times[key] = min(taken, times.get(key, taken))
                    sizes[key] = text_size(folder)
    iostream = times['std::cout', None]
    print(f'{"":12} {"header s":>9} {"/ <iostream>":>13} {"bytes a site":>13} {"ms to compile a site":>21}')
    for contestant in CONTESTANTS:
        who = contestant[0]
        size = (sizes[who, SITES] - sizes[who, 0]) / SITES
        milliseconds = (times[who, SITES] - times[who, 0]) / SITES * 1000
        print(f'{who:12} {times[who, None]:9.3f} {times[who, None] / iostream:13.2f} {size:13.0f} {milliseconds:21.2f}')


main()

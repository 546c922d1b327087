#!/usr/bin/env python3
"""Makes the page of measurements, and its picture, of the rows that the benches have kept.

benchpage.py ROWS DOCS     reads ROWS/*.jsonl, writes DOCS/performance.md and DOCS/performance.svg

Each line of a row file is {"what", "peer", "unit", "ours": [best, median], "theirs": [best, median]}.
"""
import datetime
import json
import os
import pathlib
import platform
import re
import subprocess
import sys

import matplotlib

matplotlib.use('svg')
matplotlib.rcParams['svg.hashsalt'] = 'performance'
matplotlib.rcParams['svg.fonttype'] = 'none'
import matplotlib.pyplot as plt  # noqa: E402  the backend comes first

ROWS, DOCS = pathlib.Path(sys.argv[1]), pathlib.Path(sys.argv[2])

GROUPS = [
    ('benchprocesses', 'Processes', 'Starting `true` and waiting for it, from a parent that holds that much memory.'),
    ('benchfiles', 'Files and directories', 'In a directory in memory where the name says so, else on disk.'),
    ('benchlogsites', 'Log sites, the reader, trace sites', 'What a message costs the thread that logs it, and the reader.'),
    ('benchthreadlog', 'The thread layer', 'The site of a message with `VN::threadlog`, whose reader writes meanwhile, beside the bare site.'),
    ('benchlogging', 'Logging beside other loggers', 'Bursts below the size of every queue; and lines flushed one by one.'),
    ('benchsettings', 'Settings', 'Reading one, and a whole process that makes and starts a thousand. A floor is no peer: it does the least that the stated structure takes.'),
    ('benchloading', 'Loading libraries', 'A library with ten packages that comes and goes.'),
    ('benchwholestart', 'Whole start', 'A process from its start to its end.'),
    ('benchgrowth', 'Growth of the start', 'A process with that many packages and settings.'),
    ('benchtimers', 'Stamps and timers', ''),
    ('benchexactnumbers', 'Exact numbers', ''),
    ('benchnumbers', 'Numbers, stream time and samplers, one by one',
     'A floor is no peer: it does by hand the least that the stated results take.'),
    ('benchsamplers', 'Samplers in bulk', ''),
    ('benchfloatutil', 'Rounding', ''),
    ('benchfloatutilv2', 'Rounding with SSE4.1', 'In a program that is built with `-march=x86-64-v2`.'),
    ('benchheadercost', 'Header cost', 'Compiling a source that includes nothing else.'),
]

PEERS = ['libabsl-dev', 'libboost-dev', 'libgflags-dev', 'libgoogle-glog-dev', 'libgsl-dev', 'libpoco-dev', 'libspdlog-dev',
         'libbenchmark-dev', 'coreutils', 'libc6', 'libstdc++6']

# What the picture shows: program, beginning of the row's name, beginning of the peer's, or any.
PICTURE = [
    ('benchprocesses', 'start a program', ''),
    ('benchfiles', 'list 100,000 names by suffix', ''),
    ('benchfiles', 'copy 1 ', ''),
    ('benchfiles', 'inventory', ''),
    ('benchfiles', 'read 100,000 lines', ''),
    ('benchthreadlog', 'thread layer: text, int', ''),
    ('benchlogging', 'a message: ', 'spdlog'),
    ('benchlogging', 'write and flush', 'spdlog'),
    ('benchsettings', 'read ', ''),
    ('benchwholestart', 'whole start', 'POCO'),
    ('benchtimers', 'stamp', ''),
    ('benchexactnumbers', 'normalise rates', ''),
    ('benchnumbers', 'Interval', ''),
    ('benchnumbers', 'interval', ''),
    ('benchnumbers', 'draw', ''),
    ('benchnumbers', 'Gaussian', ''),
    ('benchsamplers', 'L\'Ecuyer, double', ''),
    ('benchsamplers', 'Halton 3-D, double', ''),
    ('benchheadercost', '', ''),
]


def read_rows(program):
    path = ROWS / f'{program}.jsonl'
    return [json.loads(line) for line in path.read_text().splitlines()] if path.exists() else []


def output_of(*command):
    return subprocess.run(command, capture_output=True, text=True, check=False).stdout.strip()


def machine():
    model = re.search(r'model name\s*: (.*)', pathlib.Path('/proc/cpuinfo').read_text())
    compiler = output_of('g++', '--version').splitlines()[0]
    return (f'{model.group(1) if model else platform.machine()}, {os.cpu_count()} processors, Linux {platform.release()}, '
            f'{compiler}, Release')


def number(value):
    return f'{value:.3g}' if value < 1000 else f'{value:,.0f}'


def ratio_of(row):
    return row['ours'][0] / row['theirs'][0]


def spread(times):
    return f'{(times[1] / times[0] - 1) * 100:.0f} %' if times[0] > 0 else ''


def table(rows):
    lines = ['| what | beside | ours | peer | ratio | spread |', '|---|---|---|---|---|---|']
    for row in rows:
        lines.append(f"| {row['what'].strip()} | {row['peer']} | {number(row['ours'][0])} {row['unit']} "
                     f"| {number(row['theirs'][0])} {row['unit']} | **{ratio_of(row):.2f}** "
                     f"| {spread(row['ours'])}, {spread(row['theirs'])} |")
    return lines


def write_page():
    versions = [line.split('\t') for line in output_of('dpkg-query', '-W', *PEERS).splitlines()]
    lines = ['# How fast is it?', '',
             'Each row measures both sides in one run, in turn, in many short rounds. Shown is the best round of each: what else',
             'the machine does only ever adds to a time. The ratio is our time over the peer\'s, so below 1 the library is the',
             'faster one. The spread is how far the median round lies above the best, ours first.', '',
             '![Ratios of a choice of rows](performance.svg)', '',
             f'Machine: {machine()}. Measured on {datetime.date.today():%Y-%m-%d}.', '',
             'Repeat it with `tools/bench.sh`, which installs the peers and writes this page anew.', '']
    for program, title, text in GROUPS:
        rows = read_rows(program)
        if rows:
            lines += [f'## {title}', '', *([text, ''] if text else []), *table(rows), '']
    lines += ['## Versions', '', '| package | version |', '|---|---|',
              *[f'| {name} | {version} |' for name, version in sorted(pair for pair in versions if len(pair) == 2)], '']
    (DOCS / 'performance.md').write_text('\n'.join(lines))


def chosen():
    for program, what, peer in PICTURE:
        for row in read_rows(program):
            if row['what'].startswith(what) and row['peer'].startswith(peer):
                yield row


def draw():
    rows = list(chosen())
    if not rows:
        return
    names = [f"{row['what'].strip()}  ·  {row['peer']}" for row in rows]
    ratios = [ratio_of(row) for row in rows]
    figure, axes = plt.subplots(figsize=(10, 0.26 * len(rows) + 1.2))
    places = range(len(rows))
    axes.barh(places, [ratio - 1 for ratio in ratios], left=1, height=0.68,
              color=['#2b7a78' if ratio <= 1 else '#c8793a' for ratio in ratios])
    axes.set_xscale('log', base=2)
    low, high = min(ratios + [0.5]) / 1.7, max(ratios + [2]) * 1.5
    axes.set_xlim(low, high)
    ticks = [value for value in (1 / 64, 1 / 32, 1 / 16, 1 / 8, 1 / 4, 1 / 2, 1, 2, 4, 8, 16, 32) if low <= value <= high]
    axes.set_xticks(ticks, [f'{value:g}' if value >= 1 else f'1/{1 / value:g}' for value in ticks])
    axes.axvline(1, color='#333333', linewidth=1)
    for place, ratio in zip(places, ratios):
        axes.text(ratio * (0.96 if ratio <= 1 else 1.04), place, f'{ratio:.2f}', va='center', fontsize=8,
                  ha='right' if ratio <= 1 else 'left')
    axes.set_yticks(places, names, fontsize=8)
    axes.invert_yaxis()
    axes.set_xlabel('our time over the peer\'s: the library is faster to the left of 1')
    axes.spines[['top', 'right', 'left']].set_visible(False)
    axes.tick_params(axis='y', length=0)
    axes.grid(axis='x', color='#dddddd', linewidth=0.6)
    axes.set_axisbelow(True)
    figure.savefig(DOCS / 'performance.svg', metadata={'Date': None}, bbox_inches='tight', facecolor='white')


write_page()
draw()

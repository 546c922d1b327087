#!/usr/bin/env python3
"""Draws timed runs (PROGRAM -perf LIST) as a picture: medians with their spread, beside earlier runs if there are some.

    for run in 1 2 3 4 5; do build/release/bin/groups -perf tests/groups/groups.perf; done > today.txt
    tools/perf2svg.py --before yesterday.txt today.txt > today.svg

A file may hold the tables of several runs, one behind the other, with whatever a program prints between. Rows of the same
name and arguments are measurements of the same thing: the dot is their median, the bar reaches from the least to the greatest.

A row is marked as slower or faster only if no measurement of one side reaches into those of the other and the medians lie more
than 5 % apart. Each side needs five measurements for that: among fewer, chance alone parts many rows.

Exit code 0; 1 if a file has no table or can't be read; 2 for wrong usage. Needs Debian's python3-matplotlib.
"""
import argparse
import statistics
import sys

sys.dont_write_bytecode = True
from perf2json import HEADING, benchmark_of, rows_of  # noqa: E402

MARGIN, ENOUGH = 1.05, 5
COLOURS = {'slower': '#c0392b', 'faster': '#2b7a78', 'same': '#35506b', 'before': '#a5adb5'}


def times_of(files):
    """{name: [seconds]} of all tables of the files, in the order of their first rows."""
    times = {}
    for name in files:
        with open(name, encoding='utf-8', errors='replace') as file:
            lines = file.read().splitlines()
        starts = [number for number, line in enumerate(lines) if line == HEADING] + [len(lines)]
        if len(starts) == 1:
            raise ValueError(f'{name}: there is no table')
        for start, end in zip(starts, starts[1:]):
            for row in rows_of(lines[start:end]):
                benchmark = benchmark_of(row, {})
                if benchmark['iterations'] > 0:
                    times.setdefault(benchmark['name'], []).append(benchmark['real_time'])
    if not times:
        raise ValueError('no row has a measurement')
    return times


def judge(before, now):
    """'slower' or 'faster' if that is beyond doubt, else 'same'."""
    if min(len(before), len(now)) < ENOUGH:
        return 'same'
    if min(now) > max(before) and statistics.median(now) > MARGIN * statistics.median(before):
        return 'slower'
    if max(now) < min(before) and MARGIN * statistics.median(now) < statistics.median(before):
        return 'faster'
    return 'same'


def shown(seconds):
    for unit, size in (('s', 1), ('ms', 1e-3)):
        if seconds >= size:
            return f'{seconds / size:.3g} {unit}'
    return f'{seconds * 1e6:.3g} µs'


def draw_times(axes, place, times, colour, size):
    axes.plot([min(times), max(times)], [place, place], color=colour, linewidth=size, solid_capstyle='butt', alpha=0.45)
    axes.plot([statistics.median(times)], [place], 'o', color=colour, markersize=size)


def draw(before, now, output):
    import matplotlib
    import matplotlib.ticker
    matplotlib.use('svg')
    matplotlib.rcParams['svg.hashsalt'] = 'perf'
    matplotlib.rcParams['svg.fonttype'] = 'none'
    import matplotlib.pyplot as plt

    figure, axes = plt.subplots(figsize=(9, 0.42 * len(now) + 1.3))
    for place, (name, times) in enumerate(now.items()):
        # Relative to the median before: rows of seconds and of microseconds share the axis.
        earlier = before.get(name, [])
        unit = statistics.median(earlier) if earlier and before else 1
        verdict = judge(earlier, times)
        if unit > 0 and earlier:
            draw_times(axes, place - 0.17, [time / unit for time in earlier], COLOURS['before'], 5)
        if unit > 0 and (earlier or not before):
            draw_times(axes, place + 0.17 * bool(before), [time / unit for time in times], COLOURS[verdict], 6)
        text = shown(statistics.median(times))
        if before and not earlier:
            text += ', new'
        elif verdict != 'same':
            text += f', {verdict}: {statistics.median(times) / unit:.3g} times as long'
        axes.text(1.02, place, text, transform=axes.get_yaxis_transform(), va='center', fontsize=9, color=COLOURS[verdict],
                  fontweight='normal' if verdict == 'same' else 'bold')
    axes.set_yticks(range(len(now)), [name.replace('/', ' ') for name in now], fontsize=9)
    axes.set_ylim(len(now) - 0.4, -0.6)
    if before:
        axes.axvline(1, color='#333333', linewidth=1)
        axes.set_xlabel('time over the median before (grey: before)')
        axes.set_xscale('log', base=2)
        low, high = axes.get_xlim()
        axes.set_xlim(min(low, 0.7), max(high, 1.4))
        axes.xaxis.set_major_formatter(lambda value, _: f'{value:g}')
        axes.xaxis.set_minor_locator(matplotlib.ticker.NullLocator())
        if axes.get_xlim()[1] < 4 * axes.get_xlim()[0]:
            axes.set_xticks([value for value in (0.6, 0.7, 0.8, 0.9, 1, 1.1, 1.2, 1.4, 1.6, 1.8, 2)
                             if axes.get_xlim()[0] <= value <= axes.get_xlim()[1]])
    else:
        axes.set_xscale('log')
        axes.set_xlabel('seconds')
    axes.spines[['top', 'right', 'left']].set_visible(False)
    axes.tick_params(axis='y', length=0)
    axes.grid(axis='x', color='#dddddd', linewidth=0.6)
    axes.set_axisbelow(True)
    figure.savefig(output, format='svg', metadata={'Date': None}, bbox_inches='tight', facecolor='white')


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument('--before', metavar='FILE', action='append', default=[], help='tables of earlier runs; may be repeated')
    parser.add_argument('files', metavar='FILE', nargs='+', help='tables of this run')
    arguments = parser.parse_args()
    try:
        before = times_of(arguments.before) if arguments.before else {}
        now = times_of(arguments.files)
        draw(before, now, sys.stdout.buffer)
    except (OSError, ValueError) as failure:
        sys.exit(f'perf2svg.py: {failure}')
    for name, times in now.items():
        if judge(before.get(name, []), times) == 'slower':
            print(f'slower: {name}', file=sys.stderr)


if __name__ == '__main__':
    main()
